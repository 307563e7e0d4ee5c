// What went over the serial line, as a file that can be followed while the board runs: one line for
// each chunk, as it was read or written,
//
//     {"ms":81234,"from":"host","bytes":"1ac038bc7e"}
//     {"ms":81235,"from":"coprocessor","bytes":"1ac1020b0a527e"}
//
// where ms is CLOCK_MONOTONIC.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

namespace tarq::host {

struct SerialChunk {
    int64_t ms = 0;
    bool isFromHost = false;
    std::vector<uint8_t> bytes = {};
};

// "host" and "coprocessor".
const char* senderName(bool isHost);

// A line of the file, without the newline, and back again. False when it is none.
std::string serialLine(const SerialChunk& chunk);
bool parseSerialLine(const std::string& line, SerialChunk* chunk);

}  // namespace tarq::host
