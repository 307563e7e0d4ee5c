// The build time of the update package that is about to be installed, as its updater told it.
#pragma once

#include <stdint.h>

#include <atomic>

// 0 until an updater sets it. One value for all callers, kept until the next one is set; access it
// with relaxed order. The unit is the updater's business.
extern std::atomic<int64_t> otaTimestamp;

// Takes any value, 0 included. May be called from any thread.
void _setOtaTimestamp(int64_t timestamp);
