// Text of any system, in pieces, as lines of UTF-8.
#pragma once

#include <stdint.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tarq::tools {

// Takes UTF-16 in pieces of any size. Half a pair becomes U+FFFD.
class Utf16 {
  public:
    explicit Utf16(bool bigEndian) : mFirstShift(bigEndian ? 8 : 0) {}

    // Of these bytes, what is complete by now.
    std::string decode(std::string_view bytes);

  private:
    void take(uint32_t unit, std::string* text);

    const int mFirstShift;  // of the first byte of a unit
    bool mHasHalf = false;
    uint32_t mHalf = 0;
    uint32_t mHigh = 0;  // the first half of a pair that waits for the second
};

// Hands over the lines of a text that comes in pieces: a mark at its start tells UTF-16, and is
// left away. A very long line is cut.
class LogText {
  public:
    using TakeLine = std::function<void(const std::string&)>;
    explicit LogText(TakeLine take) : mTake(std::move(take)) {}

    void put(std::string_view bytes);
    void finish();

  private:
    void begin();
    void pass(std::string_view bytes);
    void cut(std::string_view text);
    void finishLine();

    const TakeLine mTake;
    bool mBegun = false;
    std::string mStart;
    std::optional<Utf16> mUtf16;
    std::string mLine;
    std::optional<bool> mHasCr;  // at the end of the first line
};

}  // namespace tarq::tools
