// Makes and takes the directory of a running board, see host/run/board.h.
#pragma once

#include <filesystem>

#include "host/run/board.h"

namespace tarq::board {

// One board from its start to its end, in this order: the directory is taken, boot() makes it anew,
// whoever mounts the hardware calls linkHardware(), and the destructor switches it off. For one
// thread.
class BoardDirectory {
  public:
    // Takes the directory for this process, and makes it if need be; `shared` opens it to other
    // users, for reading. Throws std::exception, also when another process has it, or when it holds
    // what is no board's. Also sets the
    // umask of this process, so that whatever the board makes later is as open as its directory.
    BoardDirectory(const std::filesystem::path& directory, bool shared);
    // Switches the board off: removes run/. root/data stays for the next start.
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

// Sets the properties of a board that has just been switched on: first the defaults, KEY=VALUE
// lines and comments that begin with #, then what was saved of the persist. ones. Each line that
// is malformed or refused is named on standard error, and the others count. Called once a process.
// Throws std::exception when the defaults cannot be read or are no text, and when the disk is full.
void loadProperties(const std::filesystem::path& defaults, const host::Board& board);

}  // namespace tarq::board
