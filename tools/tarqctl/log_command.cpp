// log [-f]: the file in which the board's daemon writes its log.
#include <host/growing_file.h>
#include <signal.h>
#include <string.h>
#include <unistd.h>

#include <CLI/App.hpp>
#include <ostream>
#include <thread>

#include "tools/tarqctl/board.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/log_line.h"
#include "tools/tarqctl/print_json.h"

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

// Without Ctrl-C the end comes when nothing can be printed any more.
static void follow(const Session& session, host::GrowingFile& log,
                   const host::GrowingFile::TakeLine& take) {
    while (session.out.good()) {
        log.read(take);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

Run declareLog(CLI::App& app) {
    const auto following = std::make_shared<bool>(false);
    app.add_flag("-f", *following, "go on with what is added, until Ctrl-C");
    return [following](Session& session) -> int {
        openBoard(session);
        const std::string path = session.board + "/run/log";
        const auto take = [&session](const std::string& line) { print(session, line); };
        // Every line has been flushed, so that there is nothing left to do at Ctrl-C.
        if (*following) signal(SIGINT, [](int) { _exit(kDone); });
        host::GrowingFile log(path);
        if (const int error = log.read(take)) {
            throw session.failure("no_log", path + ": " + strerror(error), howToStart(error));
        }
        if (*following) follow(session, log, take);
        log.finish(take);
        return kDone;
    };
}

}  // namespace tarq::tools
