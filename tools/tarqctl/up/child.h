// The programs that `up` starts, and how they end.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tools/tarqctl/up/signals.h"

namespace tarq::tools {

// The first word is looked up on PATH like that of a shell; the environment is added to that of
// this process.
struct Program {
    std::string name;  // for people: "the daemon"
    std::vector<std::string> words;
    // With all that it starts in a session of its own, which Ctrl-C does not reach, and which is
    // ended as a whole. Else it is ended when `up` is killed, and what it started is its own.
    bool isPart = false;
    int in = -1;   // -1: there is nothing to read
    int out = -1;  // -1: to standard error
    std::vector<std::pair<std::string, std::string>> environment = {};
};

// To be told to end before it is destroyed, see endAll(). Its status is kept by the kernel until
// isGone() has taken it, so its number belongs to nobody else meanwhile.
class Child {
  public:
    // Throws a Failure when this system has no process left.
    Child(Program program, const Signals& signals, const Guard& guard);
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    const std::string& name() const { return mProgram.name; }
    pid_t pid() const { return mPid; }

    // Of the program itself. Never waits.
    bool hasEnded();
    // As a shell has it: its exit code, or 128 and the signal that ended it. Only once it has
    // ended.
    int status() const;
    // "ended: signal 9 (Killed)", "ended with status 1".
    std::string howItEnded() const;

    // Whether it is stopped, or a debugger holds it.
    bool isStopped() const;
    // To the program, or to the whole group of a part, of which processes may be left when the
    // program has ended.
    void signal(int signal);
    // Of the program and its group nothing is left.
    bool isGone();

  private:
    [[noreturn]] void become(const Signals& signals, const Guard& guard, pid_t parent) const;

    const Program mProgram;
    pid_t mPid = -1;
    bool mEnded = false;
    int mExitCode = 0;
    int mSignal = 0;  // that ended it, or 0
    bool mIsGone = false;
};

// How long each may take to end.
constexpr std::chrono::seconds kPatience{5};
// Whoever ends a process may tell it and its group, so that two signals come as one wish.
constexpr std::chrono::milliseconds kOneWish{300};

// Ends them one after the other, the last one first: tells each to, and kills it when the time is
// over, which say() is told in a sentence. isUrgent, or a SIGINT or SIGTERM meanwhile: kills all of
// them at once. True when they were.
bool endAll(const std::vector<std::unique_ptr<Child>>& children, const Signals& signals,
            bool isUrgent, const std::function<void(const std::string&)>& say);

// Kills what else this process has for children, but for that one: what its commands have started
// is handed to it when they end.
void killOrphans(pid_t except);

}  // namespace tarq::tools
