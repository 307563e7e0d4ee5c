// Bytes as people paste them.
#pragma once

#include "host/board/coprocessor/ash_frame.h"

namespace tarq::tools {

// "1a c0", "0x1A, 0xC0" and "1ac0" are the same; line breaks mean nothing. Two digits are a byte,
// also where several follow each other. Throws std::invalid_argument, "LINE:COLUMN: what is wrong",
// both counted from 1.
board::ash::Bytes bytesFromText(const std::string& text);

}  // namespace tarq::tools
