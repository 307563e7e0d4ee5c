// The bytes of parcels as text, "02 00 00 00 ", so that a test says literally what is on the wire.
#pragma once

#include <binder/Parcel.h>
#include <stdint.h>
#include <stdio.h>

#include <sstream>
#include <string>
#include <vector>

namespace tarq::wire {

inline std::string hex(const uint8_t* bytes, size_t size) {
    std::string text;
    for (size_t i = 0; i < size; ++i) {
        char digits[4];
        snprintf(digits, sizeof(digits), "%02X ", bytes[i]);
        text += digits;
    }
    return text;
}

inline std::string hex(const android::Parcel& parcel) {
    return hex(parcel.data(), parcel.dataSize());
}

// A whole parcel from its bytes. Binder objects cannot be written so.
inline void fill(android::Parcel* parcel, const std::string& text) {
    std::vector<uint8_t> bytes;
    std::istringstream in(text);
    for (unsigned byte = 0; in >> std::hex >> byte;) bytes.push_back(static_cast<uint8_t>(byte));
    parcel->setData(bytes.data(), bytes.size());
}

// A string of ASCII characters: the count, the units, a zero unit, zeros up to a multiple of 4.
inline std::string text(const std::string& ascii) {
    std::vector<uint8_t> bytes = {static_cast<uint8_t>(ascii.size()), 0, 0, 0};
    for (const char c : ascii) bytes.insert(bytes.end(), {static_cast<uint8_t>(c), 0});
    bytes.insert(bytes.end(), {0, 0});
    bytes.resize((bytes.size() + 3) & ~size_t{3});
    return hex(bytes.data(), bytes.size());
}

// What opens every request: the strict-mode word of a native caller, and the descriptor.
inline std::string token(const std::string& descriptor) {
    return "00 00 40 00 " + text(descriptor);
}

}  // namespace tarq::wire
