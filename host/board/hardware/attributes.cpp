#include "host/board/hardware/attributes.h"

#include <linux/ioctl.h>
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

}  // namespace tarq::board
