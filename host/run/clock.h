// The clock of a running board's records: CLOCK_MONOTONIC, in ms.
#pragma once

#include <stdint.h>

#include <string>

namespace tarq::host {

int64_t nowMs();

// "01-02 03:04:05.006": that moment as the log tells it, so that the two can be laid side by side.
std::string logTime(int64_t ms);

}  // namespace tarq::host
