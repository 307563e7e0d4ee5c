// The frames of a serial line as people and programs read them.
#pragma once

#include <stdint.h>

#include <optional>
#include <string>

#include "host/board/coprocessor/ash_frame.h"
#include "tools/tarqctl/session.h"

namespace tarq::tools {

// When and from whom a frame came, as far as that is known.
struct FrameOrigin {
    std::string sender;              // "host" or "coprocessor"
    std::optional<int64_t> ms = {};  // CLOCK_MONOTONIC
    std::string time = {};           // the same moment as the log tells it, or ""
};

// Without its newline: "DATA frame 0 ack 0  EZSP 00 version, wants 7", or of a damaged one
// "skipped 4 bytes, cancelled: 00 ff 55 aa".
std::string textOf(const board::ash::Frame& frame);

// A line: "01-02 08:14:03.120 host         RST", without an origin, which is not known of pasted
// bytes, the frame alone; or with --json an object.
void printFrame(const Session& session, const board::ash::Frame& frame,
                const std::optional<FrameOrigin>& origin);

}  // namespace tarq::tools
