// The RGB LED driver of the virtual board, without its files and without a clock. This is what the
// records mean to it; the picture of an effect says the same of the effect's own.
//
//   set_color       ID RRGGBB   The LED's colour, at first 000000.
//   set_brightness  ID BB       At first ff. Shown is colour * brightness / 255.
//   get_color       ID          Selects an LED, at first 0; a read gives what was set last, as
//   get_brightness  ID          hexadecimal digits and a newline.
//   standby_effect  ID TYPE RRGGBB BB CONT VAL
//                               TYPE 0 ends it, 1 is steady, 2 blinks (half a period on, half off),
//                               3 breathes. It lasts for CONT periods; 0 or less: for ever. VAL is
//                               the period in units of 100 ms, at least 1.
//   xml_effect_trans_state      1 begins the transfer of an effect, once more: anew; 0 ends it and
//                               plays it; 2 stops what is played. Until 0 the one before goes on.
//   xml_effect_trans_vals       interval N: 1 to 10000 ms. duration N: 1 to 3600000 ms. loop N: 1
//                               plays it again and again, 0 once, then the last colours stay.
//   xml_effect_trans_data       ID RRGGBB S: the LED's next step, S intervals long, 1 to 100000.
//                               Each LED repeats its own steps until the duration is over.
//
// Numbers are hexadecimal, but CONT, N and S decimal. An LED shows the step of the effect, in its
// brightness, if the effect names it; else its stand-by effect; else what was set. Anything else is
// refused and changes nothing: an LED or a value out of range, parameters and steps outside of a
// transfer, 0 without a "1" before or without all three parameters.
#pragma once

#include <stdint.h>

#include <optional>
#include <string>
#include <vector>

#include "host/board/leds/led_effect.h"

namespace tarq::board {

constexpr size_t kMostLeds = 255;  // that a driver has

// For one thread at a time. Times are in ms of any clock that does not go back.
class LedDriver {
  public:
    // count: 1 to kMostLeds.
    explicit LedDriver(size_t count) : mLeds(count) {}

    // Why the record is refused, for people; "" when it is taken. A newline at the end, as echo
    // appends it, is white space like any other.
    std::string write(const std::string& attribute, const std::string& record, int64_t now);
    // False for an attribute that has nothing to read.
    bool read(const std::string& attribute, std::string* text) const;

    // The colours to be seen, RRGGBB, one for each LED. now: not before the time of the last
    // record. An effect that is over keeps its last colours.
    std::vector<uint32_t> shown(int64_t now) const;
    // What was played last and not stopped; null if there is none.
    const LedEffect* effect() const { return mEffect ? &*mEffect : nullptr; }

  private:
    struct Standby {
        enum Type : uint32_t { kNone, kSteady, kBlink, kBreathe };
        uint32_t type = kNone;
        uint32_t colour = 0;
        uint32_t brightness = 0;
        int64_t periods = 0;
        int64_t period = 1;  // in ms
        int64_t start = 0;
        std::optional<uint32_t> shown(int64_t now) const;
    };
    struct Led {
        uint32_t colour = 0;
        uint32_t brightness = 0xff;
        Standby standby;
    };

    size_t led(Fields& fields) const;
    // Why not, or "".
    std::string setColour(Fields& fields);
    std::string setBrightness(Fields& fields);
    std::string select(Fields& fields, size_t* selected) const;
    std::string setStandby(Fields& fields, int64_t now);
    std::string setState(Fields& fields, int64_t now);
    std::string endTransfer(int64_t now);
    uint32_t shown(size_t led, int64_t now) const;

    std::vector<Led> mLeds;
    size_t mColourOf = 0;  // selected for reading
    size_t mBrightnessOf = 0;
    std::optional<LedEffect> mTransfer;
    std::optional<LedEffect> mEffect;
    int64_t mEffectStart = 0;
};

}  // namespace tarq::board
