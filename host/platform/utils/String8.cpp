// UTF-16 to UTF-8 by the device's rules: surrogates count in pairs only, and a lone one is dropped
// without a trace, so a text may come out shorter than it went in. U+0000 is a character like any
// other and ends nothing.
#include <utils/String8.h>

#include <stdarg.h>
#include <stdio.h>

#include <utils/String16.h>

namespace android {

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
