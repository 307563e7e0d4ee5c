#include "host/board/leds/led_fields.h"

#include <stdlib.h>

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

}  // namespace tarq::board
