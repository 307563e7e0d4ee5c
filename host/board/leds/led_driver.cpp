// The state is a few values for each LED and one effect for all. It changes only by records, which
// are taken whole or refused whole; what is shown follows from the state and the time, so the
// driver needs no clock, and two that were fed the same records show the same.
#include "host/board/leds/led_driver.h"

#include <stdint.h>
#include <stdio.h>

#include <algorithm>
#include <utility>

#include "host/board/leds/led_effect.h"

namespace tarq::board {

static constexpr uint32_t kMaxBrightness = 0xff;
static constexpr char kNoTransfer[] = "no transfer has begun";

static uint32_t dimmed(uint32_t colour, uint32_t brightness) {
    uint32_t result = 0;
    for (const int shift : {16, 8, 0}) {
        result |= (colour >> shift & 0xff) * brightness / kMaxBrightness << shift;
    }
    return result;
}

// ---- what is written and read ----

std::string LedDriver::write(const std::string& attribute, const std::string& record, int64_t now) {
    Fields fields(record);
    if (attribute == "set_color") return setColour(fields);
    if (attribute == "set_brightness") return setBrightness(fields);
    if (attribute == "get_color") return select(fields, &mColourOf);
    if (attribute == "get_brightness") return select(fields, &mBrightnessOf);
    if (attribute == "standby_effect") return setStandby(fields, now);
    if (attribute == "xml_effect_trans_state") return setState(fields, now);
    const bool isStep = attribute == "xml_effect_trans_data";
    if (!isStep && attribute != "xml_effect_trans_vals") return "there is no such attribute";
    if (!mTransfer) return kNoTransfer;
    return isStep ? mTransfer->addStep(fields) : mTransfer->setParameter(fields);
}

// Without a prefix, and of a colour without leading zeros, as the driver prints them.
bool LedDriver::read(const std::string& attribute, std::string* text) const {
    if (attribute != "get_color" && attribute != "get_brightness") return false;
    const uint32_t value =
            attribute == "get_color" ? mLeds[mColourOf].colour : mLeds[mBrightnessOf].brightness;
    char line[16];
    snprintf(line, sizeof(line), "%x\n", value);
    *text = line;
    return true;
}

size_t LedDriver::led(Fields& fields) const {
    return fields.hex("LED", 0, static_cast<uint32_t>(mLeds.size() - 1));
}

std::string LedDriver::setColour(Fields& fields) {
    const size_t id = led(fields);
    const uint32_t colour = fields.colour();
    std::string wrong = fields.wrong();
    if (wrong.empty()) mLeds[id].colour = colour;
    return wrong;
}

std::string LedDriver::setBrightness(Fields& fields) {
    const size_t id = led(fields);
    const uint32_t brightness = fields.hex("brightness", 0, kMaxBrightness);
    std::string wrong = fields.wrong();
    if (wrong.empty()) mLeds[id].brightness = brightness;
    return wrong;
}

std::string LedDriver::select(Fields& fields, size_t* selected) const {
    const size_t id = led(fields);
    std::string wrong = fields.wrong();
    if (wrong.empty()) *selected = id;
    return wrong;
}

// Everything is read before anything is set, as with every record. It begins now, also where the
// same was set before.
std::string LedDriver::setStandby(Fields& fields, int64_t now) {
    const size_t id = led(fields);
    Standby standby;
    standby.type = fields.hex("type", 0, Standby::kBreathe);
    standby.colour = fields.colour();
    standby.brightness = fields.hex("brightness", 0, kMaxBrightness);
    standby.periods = fields.decimal("cont", INT32_MIN, INT32_MAX);
    standby.period = int64_t{100} * fields.hex("val", 1, UINT32_MAX);
    standby.start = now;
    std::string wrong = fields.wrong();
    if (wrong.empty()) mLeds[id].standby = standby;
    return wrong;
}

// A 2 stops what is played; a transfer that has begun goes on.
std::string LedDriver::setState(Fields& fields, int64_t now) {
    const uint32_t state = fields.hex("state", 0, 2);
    std::string wrong = fields.wrong();
    if (!wrong.empty()) return wrong;
    if (state == 0) return endTransfer(now);
    if (state == 1) mTransfer.emplace(mLeds.size());
    if (state == 2) mEffect.reset();
    return "";
}

// An effect that lacks a parameter is refused but kept: the transfer goes on, and may bring what is
// missing.
std::string LedDriver::endTransfer(int64_t now) {
    if (!mTransfer) return kNoTransfer;
    const std::string missing = mTransfer->missing();
    if (!missing.empty()) return "the effect has no " + missing;
    mEffect = std::exchange(mTransfer, std::nullopt);
    mEffectStart = now;
    return "";
}

// ---- what is shown ----

// Nothing where no stand-by effect goes on, so that what was set shows.
std::optional<uint32_t> LedDriver::Standby::shown(int64_t now) const {
    const int64_t elapsed = now - start;
    if (type == kNone || (periods > 0 && elapsed / period >= periods)) return std::nullopt;
    const int64_t place = elapsed % period;
    const int64_t fromDark = std::min(place, period - place);  // half a period at the brightest
    uint32_t level = brightness;
    if (type == kBlink && place >= period / 2) level = 0;
    if (type == kBreathe) level = static_cast<uint32_t>(level * fromDark * 2 / period);
    return dimmed(colour, level);
}

// The effect is shown in the brightness that the LED has; the stand-by effect has its own.
uint32_t LedDriver::shown(size_t led, int64_t now) const {
    const Led& state = mLeds[led];
    if (mEffect && mEffect->names(led)) {
        return dimmed(mEffect->colour(led, now - mEffectStart), state.brightness);
    }
    return state.standby.shown(now).value_or(dimmed(state.colour, state.brightness));
}

std::vector<uint32_t> LedDriver::shown(int64_t now) const {
    std::vector<uint32_t> colours(mLeds.size());
    for (size_t led = 0; led < colours.size(); ++led) colours[led] = shown(led, now);
    return colours;
}

}  // namespace tarq::board
