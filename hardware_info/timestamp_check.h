// Lets a package in by its age that does not fit by its parts: when it is newer than the earliest
// time from which packages support each of the parts that this board carries.
#pragma once

#include <stdint.h>

#include <string_view>

// Whether the package's time is later than every time that /vendor/etc/hardware_timestamp.txt gives
// for a part of this board. False as well for time 0 and for a file that is missing, empty or
// wrong in any line; true when it has no line for this board. The reason is logged. Reads the file
// and asks the probes anew each time. Any thread.
bool _isLaterTimestamp(int64_t otaTimestamp);

// The same for a file's content. Lines "--KIND" open a section, with the names of PeripheralType;
// the others are "PART,TIME". Only kinds that have a probe may have a section.
bool isLaterThanListed(std::string_view content, int64_t otaTimestamp);
