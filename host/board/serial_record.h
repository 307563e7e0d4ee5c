// What went over the serial line, as a file that can be followed while the board runs: one line for
// each chunk, as it was read or written,
//
//     {"ms":81234,"from":"host","bytes":"1ac038bc7e"}
//     {"ms":81235,"from":"coprocessor","bytes":"1ac1020b0a527e"}
//
// where ms is CLOCK_MONOTONIC.
#pragma once

#include <stdint.h>

#include <filesystem>
#include <string>

#include "host/board/ash/ash_frame.h"

namespace tarq::board {

struct SerialChunk {
    int64_t ms = 0;
    bool isFromHost = false;
    ash::Bytes bytes = {};
};

// Where a running board has the file.
std::filesystem::path recordOfSerial(const std::filesystem::path& board);

const char* senderName(bool isHost);

// One line of it, without the newline, and back again. Throws std::exception when it is none.
std::string asLine(const SerialChunk& chunk);
SerialChunk parseSerialLine(const std::string& line);

}  // namespace tarq::board
