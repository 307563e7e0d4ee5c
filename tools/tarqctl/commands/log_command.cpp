// log [-f]: the file in which the board's daemon writes its log. Lines are passed on as they are,
// so that those of another shape are there too. Colours are for a terminal alone, and go by the
// priority.
#include <string.h>

#include <CLI/App.hpp>
#include <ostream>

#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/ask/follow.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/log/log_line.h"

namespace tarq::tools {

// Lines of another shape, such as a sanitizer's report, have a text alone.
static Json asJson(const std::string& line) {
    const std::optional<LogLine> parsed = parseLogLine(line);
    if (!parsed) return {{"text", line}};
    return {{"time", parsed->time}, {"pid", parsed->pid},
            {"tid", parsed->tid},   {"priority", std::string(1, parsed->priority)},
            {"tag", parsed->tag},   {"text", parsed->text}};
}

static std::string coloured(const std::string& line) {
    const std::optional<LogLine> parsed = parseLogLine(line);
    const std::string colour = parsed ? colourOf(parsed->priority) : "";
    return colour.empty() ? line : colour + line + "\x1b[0m";
}

static void print(const Session& session, const std::string& line) {
    if (session.json) {
        printJson(session.out, asJson(line));
    } else {
        session.out << (session.coloured ? coloured(line) : line) + "\n" << std::flush;
    }
}

Run declareLog(CLI::App& app) {
    const auto following = std::make_shared<bool>(false);
    addFollow(app, following.get());
    return [following](Session& session) -> int {
        openBoard(session);
        const std::string path = session.board.log();
        const auto take = [&session](const std::string& line) { print(session, line); };
        if (const int error = printFile(session, path, *following, take)) {
            throw session.failure("no_log", path + ": " + strerror(error), howToStart(error));
        }
        return printed(session, *following);
    };
}

}  // namespace tarq::tools
