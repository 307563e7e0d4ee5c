// What each driver answers, and with which errors it refuses. The kernel's rules for GPIO are kept
// to the letter, because the daemon's way of reading a line is made of them: a line's files are
// there only while it is exported, numbers may be octal or hexadecimal, and an output is read back
// as it is driven, not as the level outside is.
#include "host/board/hardware/drivers.h"

#include <linux/ioctl.h>
#include <stdlib.h>
#include <string.h>

#include "host/run/text.h"

namespace tarq::board {

off_t Attribute::size() const {
    return mKind == kProperty ? static_cast<off_t>(mBytes.size()) : Node::size();
}

int Attribute::read(std::string* content) {
    *content = mBytes;
    return 0;
}

void Attribute::set(const std::string& value) {
    const std::string why =
            mKind == kProperty ? host::parseHex(value, &mBytes) : host::unescape(value, &mBytes);
    if (!why.empty()) throw std::invalid_argument(why);
}

// The module information: the sensor's name at its start, zero-terminated; the rest is zero here.
static constexpr size_t kInformationSize = 3766;
static constexpr unsigned kGetInformation = _IOC(_IOC_READ, 'V', 192, kInformationSize);
static_assert(kGetInformation == 0x8EB656C0);

int Camera::ioctl(unsigned request, void* argument) {
    if (request != kGetInformation) return -ENOTTY;
    memset(argument, 0, kInformationSize);
    memcpy(argument, mSensor.c_str(), mSensor.size());
    return 0;
}

void Camera::set(const std::string& value) {
    if (value.size() >= kInformationSize) throw std::invalid_argument("is too long for a name");
    mSensor = value;
}

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

// A line that is exported already is busy, one that is not cannot be unexported; a number that the
// board does not have is no line at all.
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

// An input refuses (EPERM), and any number but 0 drives a 1.
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
