// Bytes as people write and paste them.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

namespace tarq::tools {

// "1a c0", "0x1A, 0xC0", "\x1a\xc0", "1a:c0", "1a-c0" and "1ac0" are the same; line breaks mean
// nothing, and a # begins a comment up to the end of the line. Two digits are a byte, also where
// several follow each other. Takes a text of any length, a character at a time. For one thread.
// After it has thrown it is of no use any more.
class HexText {
  public:
    // True when this character completes a byte. Throws std::invalid_argument, "LINE:COLUMN: what
    // is wrong", both counted from 1.
    bool take(char c, uint8_t* byte);
    // Throws likewise when the text must not end here.
    void finish() const;

    // Of the line on which the next character is.
    int line() const { return mNext.line; }

  private:
    struct Place {
        int line = 1;
        int column = 1;
    };
    enum class Expected { kAnything, kX, kDigit, kSecondDigit };

    [[noreturn]] static void fail(const Place& place, const std::string& what);
    void begin(char c, const Place& here);

    Place mNext;
    Place mBegin;  // of what is to be completed
    Expected mExpected = Expected::kAnything;
    int mFirst = 0;  // the first digit of a byte
    int mRun = 0;    // how many bytes stand right before, with nothing in between
    bool mIsComment = false;
};

// The bytes of a whole text. Throws as HexText does.
std::vector<uint8_t> bytesFromText(const std::string& text);

}  // namespace tarq::tools
