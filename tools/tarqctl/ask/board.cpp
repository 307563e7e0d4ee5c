// A session's board is settled once: the one that was named, else the only one that the user runs.
// More than one is no reason to guess. From then on it is also the board of this process, for what
// has no way to be told: binder, properties and the device's paths.
#include "tools/tarqctl/ask/board.h"

#include <errno.h>
#include <host/process_board.h>

#include <filesystem>

#include "host/run/board.h"
#include "host/run/control.h"
#include "host/run/descriptors.h"
#include "tools/tarqctl/ask/limits.h"
#include "tools/tarqctl/session.h"

namespace tarq::tools {

namespace fs = std::filesystem;

// Boards that run elsewhere than where `up` keeps them have to be named.
static host::Board onlyRunningBoard(const Session& session) {
    const std::vector<host::Board> boards = host::runningBoards();
    if (boards.empty()) {
        throw session.failure("no_board",
                              "no board is running below " + host::usersBoards() +
                                      ", and neither --board nor TARQ_BOARD names one",
                              howToStart(0));
    }
    if (boards.size() > 1) {
        std::string why = "several boards are running:";
        for (const host::Board& board : boards) why += " --board " + shellQuoted(board.directory);
        throw session.failure(
                "several_boards", why,
                "tarqctl --board " + shellQuoted(boards.front().directory) + " services");
    }
    return boards.front();
}

const char* howToStart(int error) {
    return error == EACCES ? "scripts/run --shared" : "scripts/run";
}

static std::string hasEnded(const Session& session) {
    return "the board in " + session.board.directory + " has ended";
}

Failure boardEnded(const Session& session) {
    return session.failure("no_board", hasEnded(session), howToStart(0));
}

void openBoard(Session& session) {
    if (session.board.isNone()) session.board = onlyRunningBoard(session);
    const std::string run = session.board.run();
    std::error_code error;
    if (!fs::is_directory(run, error)) {
        if (!error) error = std::make_error_code(std::errc::not_a_directory);
        const bool isNone = error != std::errc::permission_denied;
        throw session.failure("no_board",
                              (isNone ? "no board is there, " : "") + run + ": " + error.message(),
                              howToStart(error.value()));
    }
    host::setProcessBoard(session.board);
}

// A board that is stopped takes connections and never answers, so the wait has a limit.
static host::Answer answerTo(const Session& session, const std::vector<std::string>& words) {
    const TimeLimit limit(session, [&] { return noAnswer(session, "the board hangs"); });
    return host::askBoard(session.board, words);
}

// A killed board leaves its socket, which refuses.
static std::string cannotAsk(const Session& session, int error) {
    if (error == ECONNREFUSED || error == ECONNRESET) return hasEnded(session);
    if (error == ENOENT) return "no board runs in " + session.board.directory;
    return "no board can be asked in " + session.board.directory + ": " + host::socketError(error);
}

// One that may be opened but not asked is shared already, and obeys who started it.
static std::string hintAt(const Session& session, int error) {
    return error == EACCES ? session.asRoot() : howToStart(error);
}

std::string askBoard(const Session& session, const std::vector<std::string>& words) {
    const host::Answer answer = answerTo(session, words);
    if (answer.error == 0) return answer.isDone ? "" : answer.reason;
    throw session.failure("no_board", cannotAsk(session, answer.error),
                          hintAt(session, answer.error));
}

// A board that answers with something else speaks of other things than this tool knows.
std::string askState(const Session& session, host::BoardState* state, std::string* hint) {
    const host::Answer answer = answerTo(session, {"board"});
    *hint = hintAt(session, answer.error);
    if (answer.error != 0) return cannotAsk(session, answer.error);
    if (host::parseBoardState(answer.text, state)) return "";
    return "the board in " + session.board.directory + " is another version's: " + answer.reason;
}

}  // namespace tarq::tools
