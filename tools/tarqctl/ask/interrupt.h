// Something to do when the user, or whoever started the tool, has had enough. A signal handler
// could do next to nothing; a thread that waits for the signals may do anything.
#pragma once

#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <functional>
#include <thread>

namespace tarq::tools {

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
