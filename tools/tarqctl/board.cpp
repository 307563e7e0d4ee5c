#include "tools/tarqctl/board.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

namespace tarq::tools {

namespace fs = std::filesystem;

// The try is for a shared lock: two tools that look at the same time are not taken for a board.
static bool runs(const fs::path& board) {
    const int fd = open((board / "run/lock").c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    const bool held = flock(fd, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    close(fd);
    return held;
}

// Where scripts/run keeps the boards of a user, each in a directory of its own.
static std::string usersBoards() {
    const char* temporary = getenv("TMPDIR");
    const fs::path parent = temporary != nullptr && *temporary != '\0' ? temporary : "/tmp";
    return parent / ("tarqd-" + std::to_string(getuid()));
}

static std::string onlyRunningBoard(const Session& session) {
    const std::string directory = usersBoards();
    const std::vector<std::string> boards = runningBoards(directory);
    if (boards.empty()) {
        throw session.failure("no_board",
                              "no board is running below " + directory +
                                      ", and neither --board nor TARQ_BOARD names one",
                              howToStart(0));
    }
    if (boards.size() > 1) {
        std::string why = "several boards are running:";
        for (const std::string& board : boards) why += " --board " + shellQuoted(board);
        throw session.failure("several_boards", why,
                              "tarqctl --board " + shellQuoted(boards.front()) + " services");
    }
    return boards.front();
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

const char* howToStart(int error) {
    return error == EACCES ? "scripts/run --shared" : "scripts/run";
}

void openBoard(Session& session) {
    if (session.board.empty()) session.board = onlyRunningBoard(session);
    std::error_code error;
    if (!fs::is_directory(fs::path(session.board) / "run", error)) {
        if (!error) error = std::make_error_code(std::errc::not_a_directory);
        throw session.failure("no_board", session.board + "/run: " + error.message(),
                              howToStart(error.value()));
    }
    setenv("TARQ_BOARD", session.board.c_str(), 1);
}

}  // namespace tarq::tools
