// A file is followed by looking at it every 20 ms, which costs little and needs nothing of the
// system. Whether the board still runs is asked before each look, so that the last look sees all
// that it has written.
#include "tools/tarqctl/ask/follow.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <string.h>
#include <unistd.h>

#include <CLI/App.hpp>
#include <optional>
#include <ostream>
#include <thread>

#include "host/run/board.h"
#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/ask/limits.h"

namespace tarq::tools {

void addFollow(CLI::App& app, bool* follows) {
    app.add_flag("-f", *follows,
                 "go on with what is added, until Ctrl-C or the board's end,\n"
                 "which is exit code 2");
}

// Ctrl-C is how following is meant to end, so it is done then. A printer that fails, as on a pipe
// whose reader has gone, ends it after that look.
int printFile(const Session& session, const std::string& path, bool follows,
              const host::GrowingFile::TakeLine& print) {
    // Every line has been flushed, so that there is nothing left to do.
    std::optional<Interrupt> interrupt;
    if (follows) interrupt.emplace([] { _exit(kDone); });
    host::GrowingFile file(path);
    bool goesOn = follows;
    do {
        goesOn = goesOn && host::isRunning(session.board);  // the last look comes behind its end
        if (const int error = file.read(print)) return error;
        if (goesOn) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    } while (goesOn && hasReader(session));
    file.finish(print);
    return 0;
}

// One that is closed was opened for reading, by openStandardDescriptors().
bool hasReader(const Session& session) {
    pollfd output = {STDOUT_FILENO, 0, 0};
    const int flags = fcntl(STDOUT_FILENO, F_GETFL);
    const bool isClosed = flags < 0 || (flags & O_ACCMODE) == O_RDONLY;
    if (isClosed || poll(&output, 1, 0) < 0 || (output.revents & POLLERR) != 0) {
        session.out.setstate(std::ios::badbit);
    }
    return session.out.good();
}

// A record that cannot be read is asked of the board, which alone knows whether it keeps one.
void requireRecord(const Session& session, const std::string& path, const std::string& question) {
    if (host::recordsAreLost(path)) {
        throw session.failure(
                "no_record",
                path + ": lines are lost, the disk was full; make room, and start the "
                       "board again",
                session.next("board"));
    }
    if (access(path.c_str(), R_OK) == 0) return;
    const int error = errno;
    const std::string reason = askBoard(session, {question});
    throw session.failure("no_record", path + ": " + (reason.empty() ? strerror(error) : reason),
                          howToStart(error));
}

// It may be gone between the two looks, as of a board that ends.
void printRecord(const Session& session, const std::string& path, const std::string& question,
                 bool follows, const host::GrowingFile::TakeLine& print) {
    requireRecord(session, path, question);
    const int error = printFile(session, path, follows, print);
    if (error == 0) return;
    throw session.failure("no_record", path + ": " + strerror(error), howToStart(error));
}

// A reader that has had enough, such as head, is no failure. The board's end is exit code 2, as the
// help says.
int printed(const Session& session, bool follows) {
    if (!follows || !session.out.good()) return kDone;
    throw boardEnded(session);
}

}  // namespace tarq::tools
