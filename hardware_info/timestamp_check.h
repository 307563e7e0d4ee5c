// Lets a package in by its age that does not fit by its parts: when it is newer than the earliest
// time from which packages support each of the parts that this board carries.
#pragma once

#include <stdint.h>

#include <atomic>
#include <string_view>

// The time of the package that is about to be installed, as its updater told it: 0 until one does.
// There is one value for all callers, kept until the next is set; access it with relaxed order. The
// unit is the one in which the timestamp file is written, and nobody's business here.
extern std::atomic<int64_t> otaTimestamp;

// Takes any value, 0 included, which means that none was told. Any thread.
void _setOtaTimestamp(int64_t timestamp);

// Whether the package's time is later than every time that /vendor/etc/hardware_timestamp.txt gives
// for a part of this board. False as well for time 0 and for a file that is missing, empty or
// wrong in any line; true when it has no line for this board. The reason is logged. Reads the file
// and asks the probes anew each time. Any thread.
bool _isLaterTimestamp(int64_t packageTime);

// The same for a file's content; packageTime 0 is a time like any other here. Lines "--KIND" open a
// section, with the names of PeripheralType; the others are "PART,TIME". Only kinds that have a
// probe may have a section. Blank lines and comments are mistakes.
bool isLaterThanListed(std::string_view content, int64_t packageTime);
