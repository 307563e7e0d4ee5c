// The first bytes tell the encoding, so they are kept until there are three. From then on nothing
// is kept but half a character and the line that has not ended.
#include "tools/tarqctl/log/log_source.h"

#include <algorithm>

namespace tarq::tools {

static constexpr size_t kMaxLine = 1 << 16;  // bytes; an entry of a log has at most 4068

// c: a code point up to 10ffff.
static void appendUtf8(uint32_t c, std::string* out) {
    if (c < 0x80) {
        *out += static_cast<char>(c);
        return;
    }
    const int more = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    constexpr uint8_t kFirst[] = {0, 0xc0, 0xe0, 0xf0};
    *out += static_cast<char>(kFirst[more] | c >> (6 * more));
    for (int i = more - 1; i >= 0; --i) *out += static_cast<char>(0x80 | (c >> (6 * i) & 0x3f));
}

std::string Utf16::decode(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<uint8_t>(c);
        if (mHasHalf) take(static_cast<uint32_t>(mHalf | byte << (8 - mFirstShift)), &text);
        mHalf = static_cast<uint32_t>(byte) << mFirstShift;
        mHasHalf = !mHasHalf;
    }
    return text;
}

// A unit is a whole character, or half of a pair. A half alone is told by U+FFFD, and what follows
// it is read as if it had not been there.
void Utf16::take(uint32_t unit, std::string* text) {
    const bool isLow = unit >= 0xdc00 && unit < 0xe000;
    if (mHigh != 0 && isLow) {
        appendUtf8(0x10000 + ((mHigh - 0xd800) << 10) + (unit - 0xdc00), text);
    } else {
        if (mHigh != 0) appendUtf8(0xfffd, text);
        if (isLow) appendUtf8(0xfffd, text);
    }
    const bool isHigh = unit >= 0xd800 && unit < 0xdc00;
    if (!isHigh && !isLow) appendUtf8(unit, text);
    mHigh = isHigh ? unit : 0;
}

// ---- text ----

void LogText::put(std::string_view bytes) {
    if (mBegun) return pass(bytes);
    mStart.append(bytes);
    if (mStart.size() >= 3) begin();
}

void LogText::finish() {
    if (!mBegun) begin();
    if (!mLine.empty()) finishLine();
}

void LogText::begin() {
    mBegun = true;
    std::string_view start = mStart;
    if (start.substr(0, 2) == "\xff\xfe" || start.substr(0, 2) == "\xfe\xff") {
        mUtf16.emplace(start[0] == '\xfe');
        start.remove_prefix(2);
    } else if (start.substr(0, 3) == "\xef\xbb\xbf") {
        start.remove_prefix(3);
    }
    pass(start);
}

void LogText::pass(std::string_view bytes) {
    if (mUtf16) {
        cut(mUtf16->decode(bytes));
    } else {
        cut(bytes);
    }
}

// What a line has beyond the limit is passed over up to its end, so that the next line begins where
// it does.
void LogText::cut(std::string_view text) {
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        mLine.append(text.substr(0, std::min(end, kMaxLine - std::min(kMaxLine, mLine.size()))));
        if (end == text.size()) return;
        finishLine();
        text.remove_prefix(end + 1);
    }
}

// A CR is the end of a line only where the first line has one, too.
void LogText::finishLine() {
    const bool endsInCr = !mLine.empty() && mLine.back() == '\r';
    if (!mHasCr) mHasCr = endsInCr;
    if (*mHasCr && endsInCr) mLine.pop_back();
    mTake(mLine);
    mLine.clear();
}

}  // namespace tarq::tools
