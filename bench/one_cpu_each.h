// Where the programs of the fan-out's measurement run, so that those that receive take no time from
// the one that sends.
#pragma once

#include <sched.h>
#include <unistd.h>

namespace bench {

// Moves the calling thread. On a machine with one CPU all stay where they are.
inline void runOn(long cpu) {
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<size_t>(cpu), &one);
    sched_setaffinity(0, sizeof(one), &one);
}

inline void runAsSender() {
    runOn(sysconf(_SC_NPROCESSORS_ONLN) - 1);
}

inline void runAsReceiver() {
    runOn(0);
}

}  // namespace bench
