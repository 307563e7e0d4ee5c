// What ends a command from outside of it: the time that it has, and the user, or whoever started
// the tool, who has had enough. A signal handler could do next to nothing; a thread that waits for
// the signals may do anything.
#pragma once

#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "tools/tarqctl/session.h"

namespace tarq::tools {

// Runs something on a thread of its own if it still exists after the delay, whatever its owner is
// blocked in. Once the destructor has returned nothing runs any more. The delay begins when it is
// made. The owner must not hold a lock that what runs needs when it destroys this, as it waits for
// that.
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
// daemon cannot be interrupted, and nothing else is left to do. Not to be held while printing. What
// was printed until then stays; the exit code is that of the failure.
class TimeLimit {
  public:
    // failure is called when the time is up, on another thread.
    TimeLimit(const Session& session, std::function<Failure()> failure);

  private:
    Timer mTimer;
};

// What is known of a call before it is made. It only makes the message better: nothing depends on
// it.
struct Asked {
    bool isHardware = false;   // so that a node which is held or slow may be what it waits for
    std::string goesOn = {};   // "the transfer goes on", if it does when nobody waits any more
    std::string command = {};  // to try next then: "trace -f"
};

// What it means when --timeout is over: "no answer after 10 s: LIKELY CAUSE", and the same command
// with more time to try next. A process that is stopped is the cause, and so is a node where
// hardware is asked; what lets it go on comes next.
Failure noAnswer(const Session& session, const std::string& likelyCause, const Asked& asked = {});

// "10 s"
std::string seconds(std::chrono::duration<double> time);

// Runs something on a thread of its own when SIGINT, SIGTERM or SIGHUP comes, whatever the rest of
// the program is blocked in, as long as the object exists. To be made before any other thread,
// which then leaves the signals to this one.
class Interrupt {
  public:
    // interrupted may end the process, and is called once at most. The signals are blocked in the
    // thread that makes it, and so in all that are started from there.
    explicit Interrupt(std::function<void()> interrupted);
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

  private:
    void wait();

    const std::function<void()> mInterrupted;
    sigset_t mSignals = {};
    sigset_t mBefore = {};
    std::atomic<bool> mStopped{false};
    std::thread mThread;
};

}  // namespace tarq::tools
