// The signals of `up`: those that it takes, one at a time and at one place, blocked and read from a
// descriptor, so that nothing is ever interrupted in the middle; and what ends the parts when it
// was sent the one that nobody can take.
#pragma once

#include <signal.h>
#include <sys/types.h>

#include <chrono>

namespace tarq::tools {

// From its construction to the program's end SIGINT, SIGTERM and SIGHUP, unless the program was
// started with them ignored, and SIGCHLD do nothing but end a wait. One a process, which has no
// other thread.
class Signals {
  public:
    Signals();
    ~Signals();
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

    // Waits for a signal, a child that changes its state, something to read from the descriptor, or
    // the time. The signal, or 0 for all else. One signal a call: another one that has come as well
    // ends the next wait at once.
    int wait(std::chrono::milliseconds time, int readable = -1) const;

    // In a child, before it becomes another program.
    void restore() const;

  private:
    sigset_t mBefore = {};
    int mFd = -1;
};

// A process beside this one that waits for its end, and then ends the groups of processes that were
// handed to it. To be made before anything is opened that others should see closed at the end.
class Guard {
  public:
    Guard();
    ~Guard();  // lets go of the groups, which have to be gone
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

    // Called by a new process, the first of its group, before it becomes another program.
    void watchOwnGroup() const;

    pid_t pid() const { return mPid; }

  private:
    pid_t mPid = -1;
    int mPipe = -1;
};

}  // namespace tarq::tools
