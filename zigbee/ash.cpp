// A frame is made by nesting: the content is randomised, the control byte goes before it, and the
// checksum of both and the flag go behind.
#include "zigbee/ash.h"

#include <utility>

namespace ash {

// The control byte of a data frame is its numbers alone.
static constexpr uint8_t kCancel = 0x1A;
static constexpr uint8_t kReset = 0xC0;
static constexpr uint8_t kAcknowledgement = 0x80;

uint16_t checksum(const uint8_t* bytes, size_t size) {
    uint32_t crc = 0xFFFF;
    for (size_t i = 0; i < size; ++i) {
        crc ^= static_cast<uint32_t>(bytes[i]) << 8;
        for (int bit = 0; bit < 8; ++bit) crc = (crc & 0x8000) != 0 ? crc << 1 ^ 0x1021 : crc << 1;
    }
    return static_cast<uint16_t>(crc);
}

void randomise(uint8_t* bytes, size_t size) {
    uint8_t next = 0x42;
    for (size_t i = 0; i < size; ++i) {
        bytes[i] ^= next;
        next = static_cast<uint8_t>((next & 1) != 0 ? next >> 1 ^ 0xB8 : next >> 1);
    }
}

// Takes the control byte and what follows it; adds the checksum of that, and the flag.
static std::vector<uint8_t> completed(std::vector<uint8_t> frame) {
    const uint16_t crc = checksum(frame.data(), frame.size());
    frame.push_back(static_cast<uint8_t>(crc >> 8));
    frame.push_back(static_cast<uint8_t>(crc & 0xFF));
    frame.push_back(kFlag);
    return frame;
}

std::vector<uint8_t> resetFrame() {
    std::vector<uint8_t> frame = completed({kReset});
    frame.insert(frame.begin(), kCancel);
    return frame;
}

std::vector<uint8_t> acknowledgement(uint8_t number) {
    return completed({static_cast<uint8_t>(kAcknowledgement | (number & 7))});
}

std::vector<uint8_t> dataFrame(uint16_t number, std::vector<uint8_t> content) {
    randomise(content.data(), content.size());
    const int low = number & 7;
    content.insert(content.begin(), static_cast<uint8_t>(low << 4 | low));
    return completed(std::move(content));
}

}  // namespace ash
