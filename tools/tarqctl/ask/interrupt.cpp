#include "tools/tarqctl/ask/interrupt.h"

namespace tarq::tools {

Interrupt::Interrupt(std::function<void()> interrupted) : mInterrupted(std::move(interrupted)) {
    sigemptyset(&mSignals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&mSignals, signal);
    pthread_sigmask(SIG_BLOCK, &mSignals, &mBefore);
    mThread = std::thread(&Interrupt::wait, this);
}

Interrupt::~Interrupt() {
    mStopped = true;
    pthread_kill(mThread.native_handle(), SIGINT);
    mThread.join();
    pthread_sigmask(SIG_SETMASK, &mBefore, nullptr);
}

void Interrupt::wait() {
    int signal = 0;
    sigwait(&mSignals, &signal);
    if (!mStopped) mInterrupted();
    // May have been run: it stays until it is joined, and takes the signal that tells it to.
    while (!mStopped) sigwait(&mSignals, &signal);
}

}  // namespace tarq::tools
