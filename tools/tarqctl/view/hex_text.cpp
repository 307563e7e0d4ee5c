// What is pasted comes from terminals, source files and logs, each of which separates bytes in a
// way of its own. Nothing is passed over that could be something else: a dump's column of offsets
// reads like bytes, so it is refused.
#include "tools/tarqctl/view/hex_text.h"

#include <string.h>

#include <stdexcept>

namespace tarq::tools {

// A digit of either case, or -1.
static int valueOf(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

static bool isX(char c) {
    return c == 'x' || c == 'X';
}

void HexText::fail(const Place& place, const std::string& what) {
    throw std::invalid_argument(std::to_string(place.line) + ":" + std::to_string(place.column) +
                                ": " + what);
}

// Whatever is no part of something that has begun.
void HexText::begin(char c, const Place& here) {
    mBegin = here;
    if (c == ':' && mRun > 1) {
        fail(here, "a colon behind several bytes, as behind an offset: give the bytes alone");
    }
    if (valueOf(c) >= 0) {
        mFirst = valueOf(c);
        mExpected = Expected::kSecondDigit;
        return;
    }
    mRun = 0;
    mIsComment = c == '#';
    if (c == '\\') {
        mExpected = Expected::kX;
    } else if (!mIsComment && strchr(" \t\r\n,:-", c) == nullptr) {
        fail(here,
             "only hexadecimal digits, 0x, \\x, blanks, commas, colons, dashes and # with a "
             "comment are expected");
    }
}

// A 0 in front of an x was no digit of a byte, but only where no byte stands right before it: in
// "1a0x1b" the x is a mistake.
bool HexText::take(char c, uint8_t* byte) {
    const Place here = mNext;
    if (c == '\0') fail(here, "a byte of value 0, as UTF-16 has them: give ASCII");
    mNext = c == '\n' ? Place{here.line + 1, 1} : Place{here.line, here.column + 1};
    if (mIsComment) {
        mIsComment = c != '\n';
        return false;
    }
    const int value = valueOf(c);
    switch (mExpected) {
        case Expected::kAnything:
            begin(c, here);
            return false;
        case Expected::kX:
            if (!isX(c)) fail(mBegin, "no x and digits follow");
            mExpected = Expected::kDigit;
            return false;
        case Expected::kDigit:
            if (value < 0) fail(mBegin, "no digits follow");
            begin(c, here);
            return false;
        default:
            break;
    }
    if (isX(c) && mFirst == 0 && mRun == 0) {
        mExpected = Expected::kDigit;
        return false;
    }
    if (value < 0) fail(mBegin, "a byte is two digits");
    *byte = static_cast<uint8_t>(mFirst << 4 | value);
    mExpected = Expected::kAnything;
    ++mRun;
    return true;
}

// A text must not end within a byte, or behind a prefix without digits.
void HexText::finish() const {
    if (mExpected == Expected::kSecondDigit) fail(mBegin, "a byte is two digits");
    if (mExpected != Expected::kAnything) fail(mBegin, "no digits follow");
}

std::vector<uint8_t> bytesFromText(const std::string& text) {
    HexText hex;
    std::vector<uint8_t> bytes;
    uint8_t byte = 0;
    for (const char c : text) {
        if (hex.take(c, &byte)) bytes.push_back(byte);
    }
    hex.finish();
    return bytes;
}

}  // namespace tarq::tools
