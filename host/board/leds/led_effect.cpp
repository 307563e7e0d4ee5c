// An effect is read field by field from the records of its transfer: all fields of a record are
// good or the record is refused whole. A colour follows from the steps of an LED and the time that
// has gone by, so nothing is kept while it plays.
#include "host/board/leds/led_effect.h"

#include <stdlib.h>

#include <algorithm>
#include <utility>

namespace tarq::board {

// The first one counts: what follows it may be shifted.
void Fields::blame(const std::string& what) {
    if (mWrong.empty()) mWrong = what;
}

std::string Fields::word(const char* name) {
    std::string word;
    if (!(mRecord >> word)) blame(std::string(name) + " is missing");
    return word;
}

// A sign is behind it. More digits than that are out of every range.
bool Fields::isNumber(const std::string& text, int base) const {
    static constexpr size_t kLongest = 12;
    const char* digits = base == 10 ? "0123456789" : "0123456789abcdefABCDEF";
    return !text.empty() && text.size() <= kLongest &&
           text.find_first_not_of(digits) == std::string::npos;
}

int64_t Fields::within(const std::string& shown, int64_t number, int64_t min, int64_t max) {
    if (number >= min && number <= max) return number;
    blame(shown + " is not within " + std::to_string(min) + " to " + std::to_string(max));
    return min;
}

// People count in decimal, so it is told in both; the daemon writes -1 as ffffffff.
uint32_t Fields::hex(const char* name, uint32_t min, uint32_t max) {
    const std::string text = word(name);
    if (!isNumber(text, 16)) {
        blame(std::string(name) + " \"" + text + "\" is no hexadecimal number");
        return min;
    }
    const int64_t number = strtoll(text.c_str(), nullptr, 16);
    const bool isNegative = number > INT32_MAX && number <= UINT32_MAX;
    std::string shown = std::string(name) + " " +
                        std::to_string(isNegative ? static_cast<int32_t>(number) : number);
    if (number > 9) shown += " (hexadecimal " + text + ")";
    return static_cast<uint32_t>(within(shown, number, min, max));
}

uint32_t Fields::colour() {
    const std::string text = word("the colour");
    const int64_t number = isNumber(text, 16) ? strtoll(text.c_str(), nullptr, 16) : -1;
    if (number >= 0 && number <= 0xffffff) return static_cast<uint32_t>(number);
    blame("\"" + text + "\" is no colour RRGGBB");
    return 0;
}

int64_t Fields::decimal(const char* name, int64_t min, int64_t max) {
    const std::string text = word(name);
    if (!isNumber(text.substr(text.rfind('-', 0) == 0 ? 1 : 0), 10)) {
        blame(std::string(name) + " \"" + text + "\" is no decimal number");
        return min;
    }
    return within(std::string(name) + " " + text, strtoll(text.c_str(), nullptr, 10), min, max);
}

std::string Fields::wrong() {
    std::string rest;
    if (mRecord >> rest) blame("\"" + rest + "\" is one word too many");
    return mWrong;
}

// Their names, and the least and the most that they may be.
static const std::map<std::string, std::pair<int64_t, int64_t>>& parameters() {
    static const auto& ranges = *new std::map<std::string, std::pair<int64_t, int64_t>>{
            {"loop", {0, 1}}, {"interval", {1, 10'000}}, {"duration", {1, 3'600'000}}};
    return ranges;
}

// One that is given again counts as it was given last.
std::string LedEffect::setParameter(Fields& record) {
    const std::string name = record.word("the parameter");
    const auto range = parameters().find(name);
    if (range == parameters().end()) return "\"" + name + "\" is none of loop, interval, duration";
    const int64_t value = record.decimal(name.c_str(), range->second.first, range->second.second);
    std::string wrong = record.wrong();
    if (wrong.empty()) mParameters[name] = value;
    return wrong;
}

std::string LedEffect::addStep(Fields& record) {
    const size_t led = record.hex("LED", 0, static_cast<uint32_t>(mLeds - 1));
    const uint32_t colour = record.colour();
    const int64_t s = record.decimal("s", 1, 100'000);
    std::string wrong = record.wrong();
    if (!wrong.empty()) return wrong;
    std::vector<Step>& steps = mSteps[led];
    steps.push_back({(steps.empty() ? 0 : steps.back().end) + s, colour});
    return "";
}

std::string LedEffect::missing() const {
    std::string names;
    for (const auto& [name, range] : parameters()) {
        if (mParameters.count(name) == 0) names += (names.empty() ? "" : ", ") + name;
    }
    return names;
}

int64_t LedEffect::firstS() const {
    return mSteps.empty() ? 1 : mSteps.begin()->second.front().end;
}

// In ms, of any LED: a picture with longer frames would miss it.
int64_t LedEffect::shortestStep() const {
    int64_t shortest = duration();
    for (const auto& [led, steps] : mSteps) {
        int64_t begin = 0;
        for (const Step& step : steps) {
            shortest = std::min(shortest, (step.end - std::exchange(begin, step.end)) * interval());
        }
    }
    return shortest;
}

// The steps of an LED are repeated from their own end on, so LEDs whose steps differ in length
// drift apart within the duration. One that plays once stays at its last moment.
uint32_t LedEffect::colour(size_t led, int64_t elapsed) const {
    const std::vector<Step>& steps = mSteps.at(led);
    const int64_t now = loops() ? elapsed % duration() : std::min(elapsed, duration() - 1);
    const int64_t place = now / interval() % steps.back().end;
    return std::upper_bound(steps.begin(), steps.end(), place,
                            [](int64_t at, const Step& step) { return at < step.end; })
            ->colour;
}

}  // namespace tarq::board
