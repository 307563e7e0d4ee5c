// A frame of ASH as people read it.
#pragma once

#include "host/board/ash/ash_frame.h"

namespace tarq::board::ash {

// One line without its newline: "DATA frame 0 ack 0  EZSP 00 version, wants 7", or of a damaged one
// "skipped 4 bytes, cancelled: 00 ff 55 aa".
std::string asText(const Frame& frame);

// Of RSTACK and ERROR: "software"; "" for one that is not known.
std::string codeName(uint8_t code);

}  // namespace tarq::board::ash
