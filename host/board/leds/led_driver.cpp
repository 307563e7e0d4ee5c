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

static constexpr uint32_t kMaxColour = 0xffffff;
static constexpr uint32_t kMaxBrightness = 0xff;

static uint32_t dimmed(uint32_t colour, uint32_t brightness) {
    uint32_t result = 0;
    for (const int shift : {16, 8, 0}) {
        result |= (colour >> shift & 0xff) * brightness / kMaxBrightness << shift;
    }
    return result;
}

// ---- what is written and read ----

bool LedDriver::write(const std::string& attribute, const std::string& record, int64_t now) {
    Fields fields(record);
    if (attribute == "set_color") return set(fields, &Led::colour, kMaxColour);
    if (attribute == "set_brightness") return set(fields, &Led::brightness, kMaxBrightness);
    if (attribute == "get_color") return select(fields, &mColourOf);
    if (attribute == "get_brightness") return select(fields, &mBrightnessOf);
    if (attribute == "standby_effect") return setStandby(fields, now);
    if (attribute == "xml_effect_trans_state") return setState(fields, now);
    if (attribute == "xml_effect_trans_vals") return mTransfer && mTransfer->setParameter(fields);
    if (attribute == "xml_effect_trans_data") return mTransfer && mTransfer->addStep(fields);
    return false;
}

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
    return fields.hex(static_cast<uint32_t>(mLeds.size() - 1));
}

bool LedDriver::set(Fields& fields, uint32_t Led::*value, uint32_t max) {
    const size_t id = led(fields);
    const uint32_t given = fields.hex(max);
    if (!fields.areGood()) return false;
    mLeds[id].*value = given;
    return true;
}

bool LedDriver::select(Fields& fields, size_t* selected) const {
    const size_t id = led(fields);
    if (!fields.areGood()) return false;
    *selected = id;
    return true;
}

bool LedDriver::setStandby(Fields& fields, int64_t now) {
    const size_t id = led(fields);
    Standby standby;
    standby.type = fields.hex(Standby::kBreathe);
    standby.colour = fields.hex(kMaxColour);
    standby.brightness = fields.hex(kMaxBrightness);
    standby.periods = fields.decimal(INT32_MIN, INT32_MAX);
    standby.period = int64_t{100} * fields.hex(UINT32_MAX);
    standby.start = now;
    if (!fields.areGood() || standby.period == 0) return false;
    mLeds[id].standby = standby;
    return true;
}

bool LedDriver::setState(Fields& fields, int64_t now) {
    const uint32_t state = fields.hex(2);
    if (!fields.areGood()) return false;
    if (state == 0) {
        if (!mTransfer || !mTransfer->isComplete()) return false;
        mEffect = std::exchange(mTransfer, std::nullopt);
        mEffectStart = now;
    } else if (state == 1) {
        mTransfer.emplace(mLeds.size());
    } else {
        mEffect.reset();
    }
    return true;
}

// ---- what is shown ----

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
