// One frame between its two forms: what it means, and the bytes on the line. A table has the kinds
// of frames with mask and value of their control byte, as in the header. A frame that does not
// decode is kept, with the reason, so that whoever looks at a line sees every byte of it.
#include "host/board/coprocessor/ash_frame.h"

#include <stdarg.h>
#include <stdio.h>

#include <algorithm>

namespace tarq::board::ash {

namespace {

// The content that a kind has is part of it: a frame of another size is damaged.
struct Kind {
    Type type;
    const char* name;
    uint8_t mask;
    uint8_t value;
    size_t minContent;
    size_t maxContent;
};

// The first row whose bits fit is the kind, and no byte fits two of them.
constexpr Kind kKinds[] = {
        {Type::kData, "DATA", 0x80, 0x00, 3, 128},      {Type::kAck, "ACK", 0xE0, 0x80, 0, 0},
        {Type::kNak, "NAK", 0xE0, 0xA0, 0, 0},          {Type::kReset, "RST", 0xFF, 0xC0, 0, 0},
        {Type::kResetDone, "RSTACK", 0xFF, 0xC1, 2, 2}, {Type::kError, "ERROR", 0xFF, 0xC2, 2, 2},
};

constexpr size_t kChecksumSize = 2;

__attribute__((format(printf, 1, 2))) std::string format(const char* pattern, ...) {
    char text[100];
    va_list arguments;
    va_start(arguments, pattern);
    vsnprintf(text, sizeof(text), pattern, arguments);
    va_end(arguments);
    return text;
}

// There and back again. The sequence of the protocol, begun anew for each frame: a byte is made of
// the one before by a shift to the right, and by b8 when a bit falls out. Here 80 and 38 of that b8
// are two steps.
void randomise(Bytes& content) {
    uint8_t next = 0x42;
    for (uint8_t& byte : content) {
        byte ^= next;
        const bool isOdd = (next & 1) != 0;
        next = static_cast<uint8_t>(next >> 1 | next << 7);
        if (isOdd) next ^= 0x38;
    }
}

// Whoever sends without escaping and has a flag in the checksum ends the frame there. What came
// before that flag is without one or both bytes of the checksum.
bool isCutInChecksum(const Bytes& bytes) {
    const size_t size = bytes.size();
    if (size == 0) return false;
    return checksum(bytes.data(), size) >> 8 == kFlag ||
           checksum(bytes.data(), size - 1) == (bytes[size - 1] << 8 | kFlag);
}

// Why a frame is to be skipped, the likeliest cause first; "" for a good one.
std::string damageOf(const Frame& frame, const Bytes& bytes, const Kind* kind) {
    if (!frame.isChecksumGood && isCutInChecksum(bytes)) {
        return "may be cut by a flag in its checksum that is not escaped";
    }
    if (bytes.size() <= kChecksumSize) return "too short for a frame";
    const size_t place = bytes.size() - kChecksumSize;
    if (!frame.isChecksumGood) {
        return format("checksum %02x%02x instead of %04x", bytes[place], bytes[place + 1],
                      checksum(bytes.data(), place));
    }
    if (kind == nullptr) return format("unknown control byte %02x", bytes[0]);
    if (frame.content.size() < kind->minContent || frame.content.size() > kind->maxContent) {
        return format("%s with %zu bytes of content", kind->name, frame.content.size());
    }
    return "";
}

bool isReserved(uint8_t byte) {
    return byte == kFlag || byte == kEscape || byte == kXon || byte == kXoff ||
           byte == kSubstitute || byte == kCancel;
}

// Numbers are taken modulo eight by whoever sets them.
uint8_t controlByte(const Frame& frame, const Kind& kind) {
    const int numbers = frame.isBusy << 3 | frame.expected;
    switch (frame.type) {
        case Type::kData:
            return static_cast<uint8_t>(frame.number << 4 | frame.isAgain << 3 | frame.expected);
        case Type::kAck:
        case Type::kNak:
            return static_cast<uint8_t>(kind.value | numbers);
        default:
            return kind.value;
    }
}

}  // namespace

const char* nameOf(Type type) {
    for (const Kind& kind : kKinds) {
        if (kind.type == type) return kind.name;
    }
    return "";
}

// CRC-CCITT, begun with ffff: a byte at a time instead of the shifts that define it.
uint16_t checksum(const uint8_t* bytes, size_t size) {
    uint16_t crc = 0xFFFF;
    for (size_t i = 0; i < size; ++i) {
        crc = static_cast<uint16_t>((crc >> 8 | crc << 8) ^ bytes[i]);
        crc = static_cast<uint16_t>(crc ^ (crc & 0xFF) >> 4);
        crc = static_cast<uint16_t>(crc ^ crc << 12);
        crc = static_cast<uint16_t>(crc ^ (crc & 0xFF) << 5);
    }
    return crc;
}

// Even a frame whose checksum is wrong is taken apart as far as it goes, which tells best what it
// may have been.
Frame decode(const Bytes& bytes) {
    Frame frame;
    const Kind* kind = nullptr;
    if (bytes.size() > kChecksumSize) {
        const uint8_t control = bytes[0];
        kind = std::find_if(std::begin(kKinds), std::end(kKinds), [control](const Kind& one) {
            return (control & one.mask) == one.value;
        });
        if (kind == std::end(kKinds)) kind = nullptr;
        const auto end = bytes.end() - kChecksumSize;
        frame.isChecksumGood =
                checksum(bytes.data(), bytes.size() - kChecksumSize) == (end[0] << 8 | end[1]);
        frame.content.assign(bytes.begin() + 1, end);
        if (kind != nullptr) frame.type = kind->type;
        if (frame.type == Type::kData) {
            frame.number = control >> 4;
            frame.isAgain = (control & 8) != 0;
            randomise(frame.content);
        } else {
            frame.isBusy = control < 0xC0 && (control & 8) != 0;
        }
        if (control < 0xC0) frame.expected = control & 7;
    }
    frame.damage = damageOf(frame, bytes, kind);
    return frame;
}

// What must not stand on the line as it is gets the escape byte in front and bit 5 flipped.
Bytes encode(const Frame& frame) {
    const Kind& kind = *std::find_if(std::begin(kKinds), std::end(kKinds) - 1,
                                     [&](const Kind& one) { return one.type == frame.type; });
    Bytes plain = frame.content;
    if (frame.type == Type::kData) randomise(plain);
    plain.insert(plain.begin(), controlByte(frame, kind));
    const uint16_t crc = checksum(plain.data(), plain.size());
    plain.push_back(static_cast<uint8_t>(crc >> 8));
    plain.push_back(static_cast<uint8_t>(crc & 0xFF));
    Bytes line;
    if (frame.type == Type::kReset || frame.type == Type::kResetDone) line.push_back(kCancel);
    for (const uint8_t byte : plain) {
        if (isReserved(byte)) line.push_back(kEscape);
        line.push_back(isReserved(byte) ? byte ^ 0x20 : byte);
    }
    line.push_back(kFlag);
    return line;
}

std::string asHex(const Bytes& bytes, const char* between) {
    std::string text;
    for (const uint8_t byte : bytes) text += (text.empty() ? "" : between) + format("%02x", byte);
    return text;
}

}  // namespace tarq::board::ash
