// Printing the frames of a serial line while its bytes come.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/board/coprocessor/ash_frame.h"
#include "tools/tarqctl/view/frame_text.h"

namespace tarq::tools {

// Each sender has a reader of its own, so that what both send at once does not get mixed; and so
// has what came from nobody knows whom.
class FramePrinter {
  public:
    // senders: those that are counted also when nothing comes from them.
    FramePrinter(const Session& session, const std::vector<std::string>& senders);

    void take(const std::optional<FrameOrigin>& origin, const board::ash::Bytes& bytes);

    // Prints what stands behind the last flag, and without --json for each sender a line such as
    // "host: 3 frames, 1 damaged, 4 bytes skipped".
    void finish();

  private:
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
