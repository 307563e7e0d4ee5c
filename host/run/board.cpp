// A board runs as long as somebody holds the lock on its lock file: the kernel lets go of it when
// the process ends, so neither a kill nor a crash leaves a board that only seems to run. A board
// that is switched off removes run/ with the lock file in it, so whoever has locked a file looks
// whether it is still the one of that name.
#include "host/run/board.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

namespace tarq::host {

namespace fs = std::filesystem;

static bool isNamed(int fd, const std::string& path) {
    struct stat held = {};
    struct stat named = {};
    return fstat(fd, &held) == 0 && stat(path.c_str(), &named) == 0 &&
           held.st_dev == named.st_dev && held.st_ino == named.st_ino;
}

int lockBoard(const Board& board) {
    for (;;) {
        std::error_code error;
        fs::create_directories(board.run(), error);
        const int fd = open(board.lock().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (fd < 0 && errno == ENOENT && !error) continue;  // run/ was removed in between
        if (fd < 0) return -errno;
        if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
            const int error = errno;
            close(fd);
            return -error;
        }
        if (isNamed(fd, board.lock())) return fd;
        close(fd);
    }
}

// The try is for a shared lock: two tools that look at the same time are not taken for a board.
bool isRunning(const Board& board) {
    const int fd = open(board.lock().c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    const bool held = flock(fd, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    close(fd);
    return held;
}

std::string usersBoards() {
    const char* temporary = getenv("TMPDIR");
    const fs::path parent = temporary != nullptr && *temporary != '\0' ? temporary : "/tmp";
    return parent / ("tarqd-" + std::to_string(getuid()));
}

std::vector<Board> runningBoards() {
    std::vector<Board> boards;
    std::error_code unreadable;  // the same as empty
    for (const fs::directory_entry& entry : fs::directory_iterator(usersBoards(), unreadable)) {
        const Board board = {entry.path()};
        if (isRunning(board)) boards.push_back(board);
    }
    std::sort(boards.begin(), boards.end(),
              [](const Board& one, const Board& other) { return one.directory < other.directory; });
    return boards;
}

}  // namespace tarq::host
