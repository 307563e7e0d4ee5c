// The fields of a record that is written to the LED driver.
#pragma once

#include <stdint.h>

#include <sstream>
#include <string>

namespace tarq::board {

// Taken one after the other, and found good or bad together at the end. White space is between
// them, and may be around them.
class Fields {
  public:
    explicit Fields(const std::string& record) : mRecord(record) {}

    std::string word();
    // Digits alone, of either case; 0 when the field is anything else.
    uint32_t hex(uint32_t max) { return static_cast<uint32_t>(number(16, 0, max)); }
    // A minus sign is taken as well; the minimum when the field is anything else.
    int64_t decimal(int64_t min, int64_t max) { return number(10, min, max); }

    // All that were asked for were there and in their range, and there are no more.
    bool areGood();

  private:
    int64_t number(int base, int64_t min, int64_t max);

    std::istringstream mRecord;
    bool mGood = true;
};

}  // namespace tarq::board
