#include "tools/tarqctl/board.h"

#include <errno.h>
#include <host/running_boards.h>
#include <stdlib.h>

#include <filesystem>

namespace tarq::tools {

namespace fs = std::filesystem;

static std::string onlyRunningBoard(const Session& session) {
    const std::string directory = host::usersBoards();
    const std::vector<std::string> boards = host::runningBoards(directory);
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
