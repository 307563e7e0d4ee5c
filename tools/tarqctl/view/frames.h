// The frames of a serial line as people and programs read them, printed while its bytes come.
#pragma once

#include <stdint.h>

#include <optional>
#include <string>
#include <vector>

#include "host/board/coprocessor/ash_frame.h"
#include "tools/tarqctl/session.h"

namespace tarq::tools {

// When and from whom a frame came, as far as that is known. Bytes that were pasted have none. Times
// are those of the record of the line, in which a chunk has one time for all its bytes.
struct FrameOrigin {
    std::string sender;              // "host" or "coprocessor"
    std::optional<int64_t> ms = {};  // CLOCK_MONOTONIC
    std::string time = {};           // the same moment as the log tells it, or ""
};

// Without its newline: "DATA frame 0 ack 0 EZSP 00 version, wants 7", or of a damaged one "skipped
// 4 bytes, cancelled: 00 ff 55 aa". What is told of it is what the bytes say, not what they should
// have been.
std::string textOf(const board::ash::Frame& frame);

// A line: "01-02 08:14:03.120 host RST", without an origin, which is not known of pasted bytes, the
// frame alone; or with --json an object. It is flushed, so that whoever reads along sees each frame
// when it comes.
void printFrame(const Session& session, const board::ash::Frame& frame,
                const std::optional<FrameOrigin>& origin);

// Each sender has a reader of its own, so that what both send at once does not get mixed; and so
// has what came from nobody knows whom. The session outlives it. For one thread.
class FramePrinter {
  public:
    // senders: those that are counted also when nothing comes from them. They are counted in this
    // order at the end.
    FramePrinter(const Session& session, const std::vector<std::string>& senders);

    // Prints the frames that end in these bytes at once, with the origin of the bytes in which they
    // end. The origin also tells whose reader gets them.
    void take(const std::optional<FrameOrigin>& origin, const board::ash::Bytes& bytes);

    // Prints what stands behind the last flag, and without --json for each sender a line such as
    // "host: 3 frames, 1 damaged, 4 bytes skipped". Called once, at the end: what has not ended by
    // then never will.
    void finish();

  private:
    // What one sender has sent so far.
    struct Direction {
        std::string sender;  // "" where it is not known
        board::ash::Reader reader = {};
        std::optional<FrameOrigin> last = {};  // of the bytes that were taken last
        size_t good = 0;
        size_t damaged = 0;
        size_t skippedBytes = 0;  // of the damaged ones
    };

    Direction& of(const std::string& sender);
    void print(Direction* direction, const std::vector<board::ash::Frame>& frames) const;

    const Session& mSession;
    std::vector<Direction> mDirections;
};

}  // namespace tarq::tools
