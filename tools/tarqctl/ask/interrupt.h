// Something to do when the user, or whoever started the tool, has had enough.
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
