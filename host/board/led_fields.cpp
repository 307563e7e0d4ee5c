#include "host/board/led_fields.h"

#include <stdlib.h>

namespace tarq::board {

static constexpr size_t kMaxDigits = 10;  // a longer one is out of every range

std::string Fields::word() {
    std::string word;
    mGood &= static_cast<bool>(mRecord >> word);
    return word;
}

uint32_t Fields::hex(uint32_t max) {
    const std::string digits = word();
    const bool isNumber = digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos &&
                          digits.size() <= kMaxDigits;
    const uint64_t number = isNumber ? strtoull(digits.c_str(), nullptr, 16) : 0;
    if (isNumber && number <= max) return static_cast<uint32_t>(number);
    mGood = false;
    return 0;
}

int64_t Fields::decimal(int64_t min, int64_t max) {
    const std::string text = word();
    const std::string digits = text.substr(text.rfind('-', 0) == 0 ? 1 : 0);
    const bool isNumber = digits.find_first_not_of("0123456789") == std::string::npos &&
                          !digits.empty() && digits.size() <= kMaxDigits;
    const int64_t number = isNumber ? strtoll(text.c_str(), nullptr, 10) : 0;
    if (isNumber && number >= min && number <= max) return number;
    mGood = false;
    return min;
}

bool Fields::areGood() {
    std::string rest;
    return mGood && !(mRecord >> rest);
}

}  // namespace tarq::board
