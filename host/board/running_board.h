// The directory of a running board: root/, the device's tree; hw/, where the hardware is mounted;
// and run/, which lasts as long as the board is switched on.
#pragma once

#include <filesystem>

namespace tarq::board {

class RunningBoard {
  public:
    // Takes the directory for this process, and makes it if need be; `shared` opens it to other
    // users, for reading. Throws std::exception, also when another process has it.
    RunningBoard(std::filesystem::path directory, bool shared);
    // Switches the board off: removes run/.
    ~RunningBoard();
    RunningBoard(const RunningBoard&) = delete;
    RunningBoard& operator=(const RunningBoard&) = delete;

    // Makes run/ and root/ anew as the board's folder describes them, except for root/data, which
    // a device keeps as well. Throws std::exception.
    void boot(const std::filesystem::path& folder);

    // Once hw/ is mounted: makes /sys, /proc and /dev, plain folders so far, links into it.
    void linkHardware();

    const std::filesystem::path& directory() const { return mDirectory; }

  private:
    bool lock();
    void clearRun();

    const std::filesystem::path mDirectory;
    const std::filesystem::perms mMode;
    int mLock = -1;  // of run/lock: held means that the board runs
};

}  // namespace tarq::board
