// Makes and takes the directory of a running board, see host/run/board.h.
#pragma once

#include <filesystem>

#include "host/run/board.h"

namespace tarq::board {

class BoardDirectory {
  public:
    // Takes the directory for this process, and makes it if need be; `shared` opens it to other
    // users, for reading. Throws std::exception, also when another process has it.
    BoardDirectory(const std::filesystem::path& directory, bool shared);
    // Switches the board off: removes run/.
    ~BoardDirectory();
    BoardDirectory(const BoardDirectory&) = delete;
    BoardDirectory& operator=(const BoardDirectory&) = delete;

    // Makes run/ and root/ anew as the board's folder describes them, except for root/data, which
    // a device keeps as well, and sets the properties. Throws std::exception.
    void boot(const std::filesystem::path& folder);

    // Once hw/ is mounted: makes /sys, /proc and /dev, plain folders so far, links into it.
    void linkHardware();

    const host::Board& board() const { return mBoard; }

  private:
    void clearRun();

    const host::Board mBoard;
    const std::filesystem::perms mMode;
    int mLock = -1;
};

}  // namespace tarq::board
