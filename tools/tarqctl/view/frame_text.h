// The frames of one or both directions of a serial line as people read and write them.
#pragma once

#include <stdint.h>

#include <optional>
#include <string>

#include "host/board/coprocessor/ash_frame.h"
#include "tools/tarqctl/session.h"

namespace tarq::tools {

// When and from whom a frame came.
struct FrameOrigin {
    int64_t ms = 0;  // CLOCK_MONOTONIC
    bool isFromHost = false;
};

// Without its newline: "DATA frame 0 ack 0  EZSP 00 version, wants 7", or of a damaged one
// "skipped 4 bytes, cancelled: 00 ff 55 aa".
std::string textOf(const board::ash::Frame& frame);

// A line: "01-02 08:14:03.120 host         RST", without an origin, which is not known of pasted
// bytes, the frame alone; or with --json an object.
void printFrame(const Session& session, const board::ash::Frame& frame,
                const std::optional<FrameOrigin>& origin);

// What was good and what was not.
struct FrameCounts {
    size_t good = 0;
    size_t damaged = 0;
    size_t skippedBytes = 0;  // of the damaged ones

    void add(const board::ash::Frame& frame);
};

// "3 frames, 1 damaged, 4 bytes skipped"
std::string textOf(const FrameCounts& counts);

// "1a c0", "0x1A, 0xC0" and "1ac0" are the same; line breaks mean nothing. Two digits are a byte,
// also where several follow each other. Throws std::invalid_argument, "LINE:COLUMN: what is wrong",
// both counted from 1.
board::ash::Bytes bytesFromText(const std::string& text);

}  // namespace tarq::tools
