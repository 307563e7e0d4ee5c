#include "common/device_file.h"

#include <host/process_board.h>

// The first component counts as a whole: "/devices" is not in "/dev".
static bool isOnTheBoard(const std::string& path) {
    static constexpr const char* kFolders[] = {"/sys", "/proc", "/dev", "/vendor", "/data"};
    const std::string first = path.substr(0, path.find('/', 1));
    for (const char* folder : kFolders) {
        if (first == folder) return true;
    }
    return false;
}

std::string deviceFile(std::string path) {
    if (!isOnTheBoard(path)) return path;
    // Without a board there is nothing to open; above all not the host's own /sys or /dev.
    const tarq::host::Board& board = tarq::host::processBoard();
    return board.isNone() ? "" : board.device(path);
}
