// Reads a file whole: what a driver shows in sysfs or procfs, and the small files of /vendor/etc.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

// The bytes of a device's file. Empty when it is empty or cannot be read, which callers treat
// alike: the source is not available. A file that cannot be opened is logged; one that fails while
// it is read is not. Any thread.
std::vector<uint8_t> readEntireFile(const std::string& path);
