#include "host/board/endings.h"

#include <time.h>

#include <initializer_list>

namespace tarq::board {

Endings::Endings() {
    sigemptyset(&mSignals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&mSignals, signal);
    sigprocmask(SIG_BLOCK, &mSignals, nullptr);
}

void Endings::wait() const {
    int received = 0;
    sigwait(&mSignals, &received);
}

bool Endings::comeWithin(std::chrono::milliseconds time) const {
    const timespec timeout = {time.count() / 1000, time.count() % 1000 * 1'000'000};
    return sigtimedwait(&mSignals, nullptr, &timeout) > 0;
}

}  // namespace tarq::board
