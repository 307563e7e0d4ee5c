// trace [-f]: what the LED driver of the board gets, from whomever, a record a line. With --json
// the lines are those of the board's file, as they stand there; the text leaves out times unless
// they are asked for.
#include <CLI/App.hpp>
#include <ostream>

#include "host/run/records.h"
#include "host/run/text.h"
#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/ask/follow.h"
#include "tools/tarqctl/commands.h"

namespace tarq::tools {

struct Options {
    bool follows = false;
    bool hasTimes = false;
};

static std::string refusalOf(const host::LedRecord& record) {
    return record.whyRefused.empty() ? "" : " (refused: " + host::escaped(record.whyRefused) + ")";
}

static void print(const Session& session, bool hasTimes, const std::string& line) {
    host::LedLine parsed;
    if (session.json) {
        session.out << line + "\n" << std::flush;
    } else if (host::parseLedLine(line, &parsed) && parsed.leds == 0) {
        const host::LedRecord& record = parsed.record;
        session.out << (hasTimes ? host::logTime(record.ms) + " " : "") + record.attribute + " " +
                               host::escaped(record.text) + refusalOf(record) + "\n"
                    << std::flush;
    }
}

Run declareTrace(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addFollow(app, &options->follows);
    app.add_flag("--times", options->hasTimes,
                 "with the times of the log; without, two runs of the same\n"
                 "can be compared");
    return [options](Session& session) -> int {
        openBoard(session);
        printRecord(session, session.board.ledRecords(), "trace", options->follows,
                    [&](const std::string& line) { print(session, options->hasTimes, line); });
        return printed(session, options->follows);
    };
}

}  // namespace tarq::tools
