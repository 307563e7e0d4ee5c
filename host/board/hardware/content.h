// The bytes that a file of the hardware gives to a reader.
#pragma once

#include <sys/types.h>

#include <string>

namespace tarq::board {

// A few bytes, again and again up to the size, so that a huge file needs no memory.
struct Content {
    std::string bytes = {};
    off_t size = 0;
};

// What is no text: zeros, 0xff, a format, no newline.
Content garbage(off_t size);
constexpr off_t kGarbageSize = 64;
constexpr off_t kHugeSize = 100'000'000;

// Fills the buffer from that place on; how much of it.
size_t copy(const Content& content, off_t offset, char* buffer, size_t size);

}  // namespace tarq::board
