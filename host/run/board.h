// A running board: what lies in its directory, each path once, and who has it. What is below run/rf
// is in receiver_wire.h.
#pragma once

#include <stddef.h>

#include <string>
#include <vector>

namespace tarq::host {

// A board by its directory, which exists as long as somebody keeps it; run/ is there only while the
// board is switched on. A value: whoever reads or writes there is handed one, so that one process
// may look at any number of boards. Nothing here touches the disk.
struct Board {
    std::string directory = {};  // "" is no board

    bool isNone() const { return directory.empty(); }

    // "/vendor/etc" -> the file that stands for it on this machine. /vendor and /data are plain
    // folders; /sys, /proc and /dev lead into hardware(), or are plain as well without FUSE. The
    // path is absolute, as the device has it.
    std::string device(const std::string& path) const { return directory + "/root" + path; }
    // Where the hardware is mounted, as files of a file system of its own.
    std::string hardware() const { return directory + "/hw"; }
    // Where plain files wait that the hardware plays meanwhile.
    std::string aside() const { return directory + "/aside"; }

    // Made when the board is switched on, and removed when it is switched off.
    std::string run() const { return directory + "/run"; }
    // Locked by the board's process (flock), for as long as it runs.
    std::string lock() const { return directory + "/run/lock"; }
    // A file for each property; one whose name begins with a dot is being written.
    std::string properties() const { return directory + "/run/properties"; }
    // Those that are kept over a restart.
    std::string savedProperties() const { return device("/data/property"); }
    // What the daemon logs, when it was started with this path in TARQ_LOG.
    std::string log() const { return directory + "/run/log"; }
    // Locked by the daemon (flock), for as long as it runs.
    std::string daemonLock() const { return directory + "/run/daemon.lock"; }
    // Where the daemon listens, and where the board does.
    std::string binderSocket() const { return directory + "/run/binder.sock"; }
    std::string controlSocket() const { return directory + "/run/board.sock"; }
    // What was written to the LED driver and to the serial line, see records.h.
    std::string ledRecords() const { return directory + "/run/leds.jsonl"; }
    std::string serialRecords() const { return directory + "/run/serial.jsonl"; }
};

// In bytes: the longest directory below which every socket has an address (sockaddr_un).
constexpr size_t kMaxBoardPath = 91;

// ---- who has it: the lock on BOARD/run/lock, which its process holds until it ends ----

// Takes the board for this process, and makes its directory if need be. A descriptor,
// close-on-exec, that holds the lock until it is closed; or -errno: -EWOULDBLOCK when another
// process has it.
int lockBoard(const Board& board);

// Whether a process has it, at this moment: it may end before the caller looks at anything else.
// False as well for a directory that does not exist or may not be read. Never waits.
bool isRunning(const Board& board);

// Where `tarqctl up` keeps the boards of this user, each in a directory of its own: below TMPDIR,
// or /tmp without one. The name has the user's number in it, since all users may share that place.
std::string usersBoards();

// The boards of this user that run, sorted by their directories; none of other users.
std::vector<Board> runningBoards();

}  // namespace tarq::host
