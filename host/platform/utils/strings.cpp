// Texts between UTF-8 and UTF-16 by the device's rules, which check little. What is not UTF-8
// becomes some text or none, but never a read beyond the end. Surrogates count in pairs only, and a
// lone one is dropped without a trace, so a text may come out shorter than it went in. U+0000 is a
// character like any other and ends nothing.
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <utils/String16.h>
#include <utils/String8.h>

namespace android {

// ---- UTF-8 to UTF-16 ----

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

// ---- UTF-16 to UTF-8 ----

// The first and the second half of a pair.
static bool isHighSurrogate(char16_t unit) {
    return (unit & 0xFC00) == 0xD800;
}
static bool isLowSurrogate(char16_t unit) {
    return (unit & 0xFC00) == 0xDC00;
}

// Every character takes its shortest form, one to four bytes.
static void appendUtf8(uint32_t code, std::string* out) {
    if (code < 0x80) {
        out->push_back(static_cast<char>(code));
        return;
    }
    int shift = code < 0x800 ? 6 : code < 0x10000 ? 12 : 18;
    const uint32_t lead = shift == 6 ? 0xC0 : shift == 12 ? 0xE0 : 0xF0;
    out->push_back(static_cast<char>(lead | (code >> shift)));
    while (shift > 0) {
        shift -= 6;
        out->push_back(static_cast<char>(0x80 | ((code >> shift) & 0x3F)));
    }
}

String8::String8(const char16_t* text, size_t units) {
    for (size_t i = 0; i < units; ++i) {
        if (isHighSurrogate(text[i]) && i + 1 < units && isLowSurrogate(text[i + 1])) {
            appendUtf8(0x10000 + ((text[i] & 0x3FFu) << 10) + (text[i + 1] & 0x3FFu), &mText);
            ++i;
        } else if (!isHighSurrogate(text[i]) && !isLowSurrogate(text[i])) {
            appendUtf8(text[i], &mText);
        }
    }
}

String8::String8(const String16& text) : String8(text.string(), text.size()) {}

String8 String8::format(const char* fmt, ...) {
    String8 result;
    va_list args;
    va_start(args, fmt);
    va_list again;
    va_copy(again, args);
    const int length = vsnprintf(nullptr, 0, fmt, args);
    va_end(args);
    if (length > 0) {
        result.mText.resize(static_cast<size_t>(length));
        vsnprintf(result.mText.data(), result.mText.size() + 1, fmt, again);
    }
    va_end(again);
    return result;
}

}  // namespace android
