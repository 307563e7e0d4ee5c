// Text of 16-bit units, UTF-16 by convention: all text that crosses the binder.
#pragma once

#include <stddef.h>

#include <string>

namespace android {

class String8;

// Holds any units, 0 and lone surrogates included. A copy is a copy: nothing is shared.
class String16 {
  public:
    String16() = default;
    explicit String16(const char16_t* text) : mText(text) {}
    String16(const char16_t* text, size_t units) : mText(text, units) {}
    // UTF-8 is not checked: the lead byte alone decides how many bytes belong together, and a
    // sequence that would run past the end makes the whole text empty.
    explicit String16(const String8& text);
    explicit String16(const char* text);
    String16(const char* text, size_t length);

    // It is never null, and ended by a 0; it is good until the text changes or goes.
    const char16_t* string() const { return mText.c_str(); }
    operator const char16_t*() const { return mText.c_str(); }  // NOLINT: implicit by contract
    // Counts units, without the terminator.
    size_t size() const { return mText.size(); }

    // Compares all units, so those behind a 0 as well.
    bool operator==(const String16& other) const { return mText == other.mText; }
    bool operator!=(const String16& other) const { return mText != other.mText; }
    bool operator<(const String16& other) const { return mText < other.mText; }

  private:
    std::u16string mText;
};

}  // namespace android
