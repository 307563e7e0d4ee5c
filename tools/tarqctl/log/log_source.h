// The lines of a log in whatever people keep it: text of any system, gzip, a zip archive.
#pragma once

#include <stdint.h>

#include <functional>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tarq::tools {

// Where the lines go. All are called on the caller's thread. begin is called before the first line
// of each text, also of one without any line.
struct LogSink {
    // A text begins: a member of an archive, or "" for one that stands alone.
    std::function<void(const std::string& member)> begin;
    std::function<void(const std::string& line)> take;
};

// What unpacks to more is no log that anybody keeps, and would fill the time of whoever reads it.
constexpr uint64_t kMaxUnpacked = uint64_t{1} << 30;  // bytes, of all that is packed in one file

// Hands over the lines as UTF-8, without their ends (LF, or CR LF throughout). Reads UTF-8 and,
// with a mark, UTF-16; unpacks gzip, also in an archive. Of a line that is longer than any log has
// it leaves the rest away. A few buffers are all it keeps, but for an archive that comes through
// a pipe. Returns what the input seems to be, such as "empty", for who finds no log in it. Throws
// std::runtime_error when it cannot be read, is damaged, or unpacks to more than the limit.
std::string readLog(std::istream& in, const LogSink& sink, uint64_t maxUnpacked = kMaxUnpacked);

// Takes UTF-16 in pieces of any size. Half a pair becomes U+FFFD. The mark that tells the order of
// its bytes has been taken away by then.
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

    // In order, and then finish() once: without that the last line may be missing.
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
