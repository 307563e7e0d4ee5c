#include "tools/tarqctl/timer.h"

namespace tarq::tools {

using std::chrono::steady_clock;

Timer::Timer(std::chrono::duration<double> delay, std::function<void()> expired)
    : mExpired(std::move(expired)),
      mThread(&Timer::wait, this,
              steady_clock::now() + std::chrono::duration_cast<steady_clock::duration>(delay)) {}

Timer::~Timer() {
    {
        const std::lock_guard<std::mutex> lock(mLock);
        mStopped = true;
    }
    mChanged.notify_one();
    mThread.join();
}

void Timer::wait(steady_clock::time_point deadline) {
    // The lock is held while it runs: the destructor waits, and its stop comes too late.
    std::unique_lock<std::mutex> lock(mLock);
    const auto stopped = [this] { return mStopped; };
    if (mChanged.wait_until(lock, deadline, stopped)) return;
    mExpired();
    // Stays until it is joined: the process may end before, and would leave an ended thread behind.
    mChanged.wait(lock, stopped);
}

}  // namespace tarq::tools
