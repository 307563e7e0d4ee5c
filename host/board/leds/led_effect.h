// A lamp effect: what the LED driver was told of it, and the colours that it gives.
#pragma once

#include <stdint.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

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

// What the texts mean is said in led_driver.h.
class LedEffect {
  public:
    explicit LedEffect(size_t leds) : mLeds(leds) {}

    // Take a record of the transfer: "interval 20", "3 ff8000 5". False, and nothing is changed,
    // when it makes no sense.
    bool setParameter(Fields& record);
    bool addStep(Fields& record);
    // Loop, interval and duration are there.
    bool isComplete() const { return mParameters.size() == 3; }

    // The rest is for a complete one. Times are in ms.
    bool loops() const { return mParameters.at("loop") == 1; }
    int64_t interval() const { return mParameters.at("interval"); }
    int64_t duration() const { return mParameters.at("duration"); }
    // The s of the first step; 1 when there is none.
    int64_t firstS() const;

    bool names(size_t led) const { return mSteps.count(led) != 0; }
    // Of an LED that it names, that long after the start of the effect.
    uint32_t colour(size_t led, int64_t elapsed) const;

  private:
    struct Step {
        int64_t end;  // in intervals, from the LED's first step on
        uint32_t colour;
    };

    size_t mLeds;
    std::map<std::string, int64_t> mParameters;
    std::map<size_t, std::vector<Step>> mSteps;  // by LED
};

}  // namespace tarq::board
