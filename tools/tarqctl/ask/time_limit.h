// Something to do when another thing takes too long, and the time that a command has.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "tools/tarqctl/session.h"

namespace tarq::tools {

// Runs something on a thread of its own if it still exists after the delay, whatever its owner is
// blocked in. Once the destructor has returned nothing runs any more.
class Timer {
  public:
    Timer(std::chrono::duration<double> delay, std::function<void()> expired);
    ~Timer();
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

  private:
    void wait(std::chrono::steady_clock::time_point deadline);

    const std::function<void()> mExpired;
    std::mutex mLock;
    std::condition_variable mChanged;
    bool mStopped = false;  // under mLock
    std::thread mThread;
};

// Prints the failure and ends the process when it exists for longer than --timeout. A call to the
// daemon cannot be interrupted, and nothing else is left to do. Not to be held while printing.
class TimeLimit {
  public:
    // failure is called when the time is up, on another thread.
    TimeLimit(const Session& session, std::function<Failure()> failure);

  private:
    Timer mTimer;
};

// What it means when --timeout is over: "no answer after 10 s: LIKELY CAUSE", and the same command
// with more time to try next; unless something goes on that is not to be begun once more. A process
// that is stopped is the cause, and what lets it go on comes next.
struct Unfinished {
    std::string what;     // "the transfer goes on"
    std::string command;  // to try next: "trace -f"
};
Failure noAnswer(const Session& session, const std::string& likelyCause,
                 const Unfinished& unfinished = {});

// "10 s"
std::string seconds(std::chrono::duration<double> time);

}  // namespace tarq::tools
