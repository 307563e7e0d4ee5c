// What is written to the LED driver, as a file that can be followed while the board runs:
//
//     {"leds":12}
//     {"ms":81234,"attribute":"set_color","text":"3 ff8000"}
//     {"ms":81235,"attribute":"set_color","text":"63 ff8000","refused":true}
//
// The first line tells how many LEDs there are. Each other one is a record in the order in which
// the driver got them; ms is CLOCK_MONOTONIC. Bytes that are no UTF-8 are replaced; only a refused
// record has any.
#pragma once

#include <stdint.h>

#include <string>

namespace tarq::host {

struct LedRecord {
    int64_t ms = 0;
    std::string attribute = {};
    std::string text = {};
    bool isRefused = false;
};

// Lines of the file, without the newline.
std::string firstLedLine(size_t leds);
std::string ledLine(const LedRecord& record);

// A line again: the first one, with a number of LEDs, or one with a record. False when it is none.
struct LedLine {
    size_t leds = 0;
    LedRecord record = {};
};
bool parseLedLine(const std::string& line, LedLine* parsed);

}  // namespace tarq::host
