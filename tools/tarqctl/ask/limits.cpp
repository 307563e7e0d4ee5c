// A call that waits cannot be called back, so a limit is a thread beside it that waits as well: for
// the end of the call or of the time, whichever comes first. When the time is up first, the failure
// is printed and the process ends in the middle of the call.
// Ctrl-C is waited for in the same way, by a thread that the signals are left to.
#include "tools/tarqctl/ask/limits.h"

#include <unistd.h>

#include <algorithm>
#include <sstream>

#include "tools/tarqctl/ask/why_silent.h"

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

// _exit: the main thread is in the middle of a call, and nothing it uses may be destroyed.
static void endWith(const Session& session, const Failure& failure) {
    printFailure(failure, session.json, session.out, session.err);
    _exit(failure.exitCode);
}

TimeLimit::TimeLimit(const Session& session, std::function<Failure()> failure)
    : mTimer(session.timeout,
             [&session, failure = std::move(failure)] { endWith(session, failure()); }) {}

// What is said of a cause is a guess unless somebody knows it, so who knows it is asked first.
Failure noAnswer(const Session& session, const std::string& likelyCause, const Asked& asked) {
    const bool goesOn = !asked.goesOn.empty();
    std::ostringstream longer;
    longer << "--timeout " << std::clamp(session.timeout.count() * 6, 60.0, kMaxTimeout) << " "
           << session.line;
    const std::string next = session.next(goesOn ? asked.command : longer.str());
    const Cause cause = whyNobodyAnswers(session, asked.isHardware, {likelyCause, next});
    return session.failure("timeout",
                           "no answer after " + seconds(session.timeout) + ": " + cause.why +
                                   (goesOn ? "; " + asked.goesOn : ""),
                           cause.hint);
}

std::string seconds(std::chrono::duration<double> time) {
    std::ostringstream text;
    text << time.count() << " s";
    return text.str();
}

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
