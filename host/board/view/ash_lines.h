// The frames of one or both directions of a serial line, printed one a line.
#pragma once

#include <stdint.h>

#include <optional>
#include <string>

#include "host/board/ash/ash_frame.h"

namespace tarq::board {

// When and from whom a frame came.
struct FrameOrigin {
    int64_t ms = 0;  // CLOCK_MONOTONIC
    bool isFromHost = false;
};

// "08:14:03.120 host         RST", without the newline; without an origin, which is not known of
// pasted bytes, the frame alone. The time is that of the day here.
std::string lineOf(const ash::Frame& frame, const std::optional<FrameOrigin>& origin);
// The same for programs: an object of JSON.
std::string jsonOf(const ash::Frame& frame, const std::optional<FrameOrigin>& origin);

// What was good and what was not.
struct FrameCounts {
    size_t good = 0;
    size_t damaged = 0;
    size_t skippedBytes = 0;  // of the damaged ones

    void add(const ash::Frame& frame);
};

// "3 frames, 1 damaged, 4 bytes skipped"
std::string textOf(const FrameCounts& counts);

}  // namespace tarq::board
