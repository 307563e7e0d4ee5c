// What a command works with.
#pragma once

#include <chrono>
#include <iosfwd>
#include <string>

#include "host/run/board.h"
#include "tools/tarqctl/failure.h"

namespace tarq::tools {

constexpr double kMaxTimeout = 86400;  // seconds

// The global options, what to read and where to print. Text is printed a line or more at a time and
// flushed, so that a reader on a pipe sees it at once.
struct Session {
    std::istream& in;
    std::ostream& out;
    std::ostream& err;
    bool coloured = false;  // out is a terminal that wants colours
    bool json = false;
    std::chrono::duration<double> timeout{10};
    host::Board board = {};  // as given; never none once openBoard() has returned
    std::string line = {};   // the command with its arguments, quoted for a shell

    Failure failure(const std::string& code, const std::string& why, const std::string& hint,
                    int exitCode = kCouldNotAsk) const {
        return {code, line, why, hint, exitCode};
    }
    // Tells on err what the user should know of a command that goes on, with or without --json.
    void notice(const std::string& text) const;
    // "tarqctl --board DIR COMMAND", to be tried next on the same board.
    std::string next(const std::string& command) const;
};

// The word as it is typed in a shell: as it is, or between single quotes.
std::string shellQuoted(const std::string& word);

}  // namespace tarq::tools
