// Something to do when another thing takes too long.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

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

}  // namespace tarq::tools
