// What is written to the LEDs, as a file that can be followed while the board runs:
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

#include <filesystem>
#include <string>

#include "host/board/record_file.h"

namespace tarq::board {

struct LedRecord {
    int64_t ms;
    std::string attribute;
    std::string text;
    bool refused;
};

// Where a running board has the file.
std::filesystem::path traceOfLeds(const std::filesystem::path& board);

// CLOCK_MONOTONIC in ms.
int64_t now();

class LedTraceWriter {
  public:
    explicit LedTraceWriter(size_t leds) : mLeds(leds) {}

    // Begins the file. Throws std::system_error.
    void open(const std::filesystem::path& file);
    // Before open() nothing is written.
    void add(const LedRecord& record);

  private:
    const size_t mLeds;
    RecordFile mFile{"the trace of the LEDs"};
};

// A line of it: the first one, with a number of LEDs, or one with a record.
struct LedTraceLine {
    size_t leds = 0;
    LedRecord record = {};
};

// Throws std::exception when it is none.
LedTraceLine parseLedTraceLine(const std::string& line);

}  // namespace tarq::board
