#include "host/run/clock.h"

#include <stdio.h>
#include <time.h>

namespace tarq::host {

static int64_t msOf(clockid_t clock) {
    timespec time = {};
    clock_gettime(clock, &time);
    return int64_t{time.tv_sec} * 1000 + time.tv_nsec / 1'000'000;
}

int64_t nowMs() {
    return msOf(CLOCK_MONOTONIC);
}

// What the two clocks differ by is taken once: it wavers.
std::string logTime(int64_t ms) {
    static const int64_t kOffset = msOf(CLOCK_REALTIME) - msOf(CLOCK_MONOTONIC);
    const int64_t wall = kOffset + ms;
    const time_t second = wall / 1000;
    tm local = {};
    localtime_r(&second, &local);
    char text[32];
    const size_t size = strftime(text, sizeof(text), "%m-%d %H:%M:%S", &local);
    snprintf(text + size, sizeof(text) - size, ".%03d", static_cast<int>(wall % 1000));
    return text;
}

}  // namespace tarq::host
