// A lamp effect: what the LED driver was told of it, and the colours that it gives.
#pragma once

#include <stdint.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace tarq::board {

// Taken one after the other, each by the name that it has for people, and found good or bad
// together at the end. White space is between them, and may be around them.
class Fields {
  public:
    explicit Fields(const std::string& record) : mRecord(record) {}

    std::string word(const char* name);
    // Digits alone, of either case; the minimum when the field is anything else.
    uint32_t hex(const char* name, uint32_t min, uint32_t max);
    // RRGGBB; fewer digits are as good.
    uint32_t colour();
    // A minus sign is taken as well; the minimum when the field is anything else.
    int64_t decimal(const char* name, int64_t min, int64_t max);

    // What is wrong with the first of those that were asked for, or with more than those; "" when
    // all are there, in their range.
    std::string wrong();

  private:
    bool isNumber(const std::string& text, int base) const;
    int64_t within(const std::string& shown, int64_t number, int64_t min, int64_t max);
    void blame(const std::string& what);

    std::istringstream mRecord;
    std::string mWrong;
};

// What the texts mean is said in led_driver.h.
class LedEffect {
  public:
    explicit LedEffect(size_t leds) : mLeds(leds) {}

    // Take a record of the transfer: "interval 20", "3 ff8000 5". What is wrong with it, and
    // nothing is changed then; else "".
    std::string setParameter(Fields& record);
    std::string addStep(Fields& record);
    // Those of loop, interval and duration that are not there, "" when it is complete.
    std::string missing() const;

    // The rest is for a complete one. Times are in ms.
    bool loops() const { return mParameters.at("loop") == 1; }
    int64_t interval() const { return mParameters.at("interval"); }
    int64_t duration() const { return mParameters.at("duration"); }
    // The s of the first step; 1 when there is none.
    int64_t firstS() const;
    // How long the shortest step is; the duration when there is none.
    int64_t shortestStep() const;

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
