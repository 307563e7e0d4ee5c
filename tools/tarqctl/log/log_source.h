// The lines of a log in whatever people keep it: text of any system, gzip, a zip archive.
#pragma once

#include <stdint.h>

#include <functional>
#include <istream>
#include <string>

namespace tarq::tools {

// Where the lines go. All are called on the caller's thread.
struct LogSink {
    // A text begins: a member of an archive, or "" for one that stands alone.
    std::function<void(const std::string& member)> begin;
    std::function<void(const std::string& line)> take;
};

constexpr uint64_t kMaxUnpacked = uint64_t{1} << 30;  // bytes, of all that is packed in one file

// Hands over the lines as UTF-8, without their ends (LF, or CR LF throughout). Reads UTF-8 and,
// with a mark, UTF-16; unpacks gzip, also in an archive. Of a line that is longer than any log has
// it leaves the rest away. A few buffers are all it keeps, but for an archive that comes through
// a pipe. Returns what the input seems to be, such as "empty", for who finds no log in it. Throws
// std::runtime_error when it cannot be read, is damaged, or unpacks to more than the limit.
std::string readLog(std::istream& in, const LogSink& sink, uint64_t maxUnpacked = kMaxUnpacked);

}  // namespace tarq::tools
