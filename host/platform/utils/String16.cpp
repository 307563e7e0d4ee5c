// UTF-8 to UTF-16 by the device's rules, which check little: what is not UTF-8 becomes some text or
// none, but never a read beyond the end.
#include <utils/String16.h>

#include <stdint.h>
#include <string.h>

#include <utils/String8.h>

namespace android {

// How many bytes belong together, by the first of them. A byte that cannot begin a sequence is one
// of its own.
static size_t sequenceLength(uint8_t lead) {
    if (lead < 0xC0) return 1;
    if (lead < 0xE0) return 2;
    return lead < 0xF0 ? 3 : 4;
}

// One sequence of length bytes; continuation bytes are masked, not checked.
static uint32_t codePoint(const uint8_t* bytes, size_t length) {
    if (length == 1) return bytes[0];
    uint32_t code = bytes[0] & (0xFFu >> (length + 1));
    for (size_t i = 1; i < length; ++i) code = (code << 6) | (bytes[i] & 0x3Fu);
    return code;
}

String16::String16(const char* text, size_t length) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text);
    for (size_t i = 0; i < length;) {
        const size_t step = sequenceLength(bytes[i]);
        if (step > length - i) {
            mText.clear();
            return;
        }
        const uint32_t code = codePoint(bytes + i, step);
        if (code > 0xFFFF) {
            mText.push_back(static_cast<char16_t>(0xD800 | (((code - 0x10000) >> 10) & 0x3FF)));
            mText.push_back(static_cast<char16_t>(0xDC00 | ((code - 0x10000) & 0x3FF)));
        } else {
            mText.push_back(static_cast<char16_t>(code));
        }
        i += step;
    }
}

String16::String16(const char* text) : String16(text, strlen(text)) {}

String16::String16(const String8& text) : String16(text.string(), text.size()) {}

}  // namespace android
