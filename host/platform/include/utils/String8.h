// Text of 8-bit units, UTF-8 by convention.
#pragma once

#include <string.h>

#include <string>

namespace android {

class String16;

// Holds any bytes; size() tells about those behind a 0, string() shows what C takes for the text.
class String8 {
  public:
    String8() = default;
    explicit String8(const char* text) : mText(text) {}
    String8(const char* text, size_t length) : mText(text, length) {}
    // A lone surrogate is dropped; U+0000 becomes one 0 byte.
    explicit String8(const String16& text);
    String8(const char16_t* text, size_t units);

    // Writes like printf; a format that cannot be carried out gives an empty text.
    static String8 format(const char* fmt, ...) __attribute__((__format__(printf, 1, 2)));

    // It is never null, and ended by a 0; it is good until the text changes or goes.
    const char* string() const { return mText.c_str(); }
    const char* c_str() const { return mText.c_str(); }
    operator const char*() const { return mText.c_str(); }  // NOLINT: implicit by contract
    // Counts bytes, without the terminator.
    size_t size() const { return mText.size(); }
    size_t length() const { return mText.size(); }
    bool isEmpty() const { return mText.empty(); }

    // Comparing ends at the first 0 byte, as strcmp does.
    bool operator==(const String8& other) const { return strcmp(string(), other.string()) == 0; }
    bool operator!=(const String8& other) const { return !(*this == other); }
    bool operator==(const char* other) const { return strcmp(string(), other) == 0; }
    bool operator!=(const char* other) const { return !(*this == other); }
    bool operator<(const String8& other) const { return strcmp(string(), other.string()) < 0; }

  private:
    std::string mText;
};

}  // namespace android
