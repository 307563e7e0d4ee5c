// An effect is read field by field from the records of its transfer: all fields of a record are
// good or the record is refused whole. A colour follows from the steps of an LED and the time that
// has gone by, so nothing is kept while it plays.
#include "host/board/leds/led_effect.h"

#include <stdlib.h>

#include <algorithm>

namespace tarq::board {

std::string Fields::word() {
    std::string word;
    mGood &= static_cast<bool>(mRecord >> word);
    return word;
}

int64_t Fields::number(int base, int64_t min, int64_t max) {
    static constexpr size_t kLongest = 12;  // a longer one is out of every range
    const std::string text = word();
    const size_t sign = base == 10 && text.rfind('-', 0) == 0 ? 1 : 0;
    const char* digits = base == 10 ? "0123456789" : "0123456789abcdefABCDEF";
    mGood &= text.size() > sign && text.size() <= kLongest &&
             text.find_first_not_of(digits, sign) == std::string::npos;
    const int64_t number = mGood ? strtoll(text.c_str(), nullptr, base) : min;
    mGood &= number >= min && number <= max;
    return mGood ? number : min;
}

bool Fields::areGood() {
    std::string rest;
    return mGood && !(mRecord >> rest);
}

bool LedEffect::setParameter(Fields& record) {
    static const std::map<std::string, std::pair<int64_t, int64_t>> kRanges = {
            {"loop", {0, 1}}, {"interval", {1, 10'000}}, {"duration", {1, 3'600'000}}};
    const auto range = kRanges.find(record.word());
    if (range == kRanges.end()) return false;
    const int64_t value = record.decimal(range->second.first, range->second.second);
    if (!record.areGood()) return false;
    mParameters[range->first] = value;
    return true;
}

bool LedEffect::addStep(Fields& record) {
    const size_t led = record.hex(static_cast<uint32_t>(mLeds - 1));
    const uint32_t colour = record.hex(0xffffff);
    const int64_t s = record.decimal(1, 100'000);
    if (!record.areGood()) return false;
    std::vector<Step>& steps = mSteps[led];
    steps.push_back({(steps.empty() ? 0 : steps.back().end) + s, colour});
    return true;
}

int64_t LedEffect::firstS() const {
    return mSteps.empty() ? 1 : mSteps.begin()->second.front().end;
}

uint32_t LedEffect::colour(size_t led, int64_t elapsed) const {
    const std::vector<Step>& steps = mSteps.at(led);
    const int64_t now = loops() ? elapsed % duration() : std::min(elapsed, duration() - 1);
    const int64_t place = now / interval() % steps.back().end;
    return std::upper_bound(steps.begin(), steps.end(), place,
                            [](int64_t at, const Step& step) { return at < step.end; })
            ->colour;
}

}  // namespace tarq::board
