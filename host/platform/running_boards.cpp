#include <host/running_boards.h>

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

namespace tarq::host {

namespace fs = std::filesystem;

// The try is for a shared lock: two tools that look at the same time are not taken for a board.
static bool runs(const fs::path& board) {
    const int fd = open((board / "run/lock").c_str(), O_RDONLY | O_CLOEXEC);
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

std::vector<std::string> runningBoards(const std::string& directory) {
    std::vector<std::string> boards;
    std::error_code unreadable;  // the same as empty
    for (const fs::directory_entry& entry : fs::directory_iterator(directory, unreadable)) {
        if (runs(entry.path())) boards.push_back(entry.path());
    }
    std::sort(boards.begin(), boards.end());
    return boards;
}

}  // namespace tarq::host
