// What can be wrong with a file of the hardware.
#pragma once

#include <sys/types.h>

#include <string>

namespace tarq::board {

enum class Fault {
    none,
    absent,      // not there
    empty,       // nothing to read, no answer
    garbage,     // bytes that are no text: zeros, 0xff, no newline
    huge,        // 100 MB of them
    directory,   // looks like one
    unreadable,  // refuses to be opened for reading, also by root
    unwritable,  // refuses to be opened for writing, also by root
    slow,        // takes a second for each call
};

// "empty" -> Fault::empty. Throws std::invalid_argument, with all that there are.
Fault faultNamed(const std::string& name);

// The bytes of a read: a few, again and again up to the size, so that a huge one needs no memory.
struct Content {
    std::string bytes;
    off_t size = 0;
};

Content garbage(off_t size);
constexpr off_t kGarbageSize = 64;
constexpr off_t kHugeSize = 100'000'000;

// Fills the buffer from that place on; how much of it.
size_t copy(const Content& content, off_t offset, char* buffer, size_t size);

}  // namespace tarq::board
