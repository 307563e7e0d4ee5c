// The kernel's rules are kept to the letter here, because the daemon's way of reading a line is
// made of them: a line's files are there only while it is exported, numbers may be octal or
// hexadecimal, and an output is read back as it is driven, not as the level outside is.
#include "host/board/hardware/gpio.h"

#include <stdlib.h>

namespace tarq::board {

// The record without the one newline that echo appends and the kernel forgives.
static std::string withoutNewline(std::string record) {
    if (!record.empty() && record.back() == '\n') record.pop_back();
    return record;
}

// A number as the kernel takes it: also 0x2a and 052, nothing around it. False if it is none.
static bool parse(const std::string& record, long* number) {
    const std::string text = withoutNewline(record);
    if (text.find_first_of(" \t\n\v\f\r") != std::string::npos) return false;
    char* end = nullptr;
    errno = 0;
    *number = strtol(text.c_str(), &end, 0);
    return errno == 0 && end != text.c_str() && end == text.c_str() + text.size();
}

int GpioExport::write(const std::string& record) {
    long number = 0;
    if (!parse(record, &number)) return -EINVAL;
    const auto found = mLines->find(number);
    if (found == mLines->end()) return -EINVAL;
    GpioLine& line = found->second;
    if (line.exported == mExports) return mExports ? -EBUSY : -EINVAL;
    line.exported = mExports;
    if (mExports) ++line.exports;
    return 0;
}

int GpioDirection::read(std::string* content) {
    *content = mLine.output ? "out\n" : "in\n";
    return 0;
}

int GpioDirection::write(const std::string& record) {
    const std::string direction = withoutNewline(record);
    if (direction == "in") {
        mLine.output = false;
    } else if (direction == "out" || direction == "low" || direction == "high") {
        mLine.output = true;
        mLine.driven = direction == "high";
    } else {
        return -EINVAL;
    }
    return 0;
}

int GpioValue::read(std::string* content) {
    *content = (mLine.output ? mLine.driven : mLine.level) ? "1\n" : "0\n";
    return 0;
}

int GpioValue::write(const std::string& record) {
    if (!mLine.output) return -EPERM;
    long level = 0;
    if (!parse(record, &level)) return -EINVAL;
    mLine.driven = level != 0;
    return 0;
}

void GpioValue::set(const std::string& value) {
    if (value != "0" && value != "1") throw std::invalid_argument("a level is 0 or 1");
    mLine.level = value == "1";
}

}  // namespace tarq::board
