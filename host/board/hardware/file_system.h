// The hardware as files: a FUSE file system. It needs /dev/fuse; where that may not be used the
// board plays plain files.
#pragma once

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include "host/board/hardware/hardware.h"

struct fuse;

namespace tarq::board {

// Mounted, and served by threads of its own, as long as it exists. Each call is handed to the
// hardware as it comes, by whatever thread libfuse has for it; one that waits keeps its thread, of
// which there are 256 at most.
class FileSystem {
  public:
    // forAll: other users may look in. Throws std::runtime_error with the reason when this system
    // does not let us mount.
    FileSystem(Hardware& hardware, const std::filesystem::path& mountPoint, bool forAll);
    // Calls that wait return; files that are still open are dead from then on.
    ~FileSystem();
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;

  private:
    Hardware& mHardware;
    fuse* mFuse;
    std::atomic<bool> mLoopEnded{false};
    std::thread mLoop;
};

}  // namespace tarq::board
