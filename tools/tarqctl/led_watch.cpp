// led watch: what the LED driver of the board gets, from whomever.
#include <string.h>
#include <time.h>

#include <CLI/App.hpp>
#include <ostream>

#include "tools/tarqctl/board.h"
#include "tools/tarqctl/led_commands.h"
#include "tools/tarqctl/print_file.h"
#include "tools/tarqctl/print_json.h"
#include "tools/tarqctl/text.h"

namespace tarq::tools {

static int64_t milliseconds(clockid_t clock) {
    timespec time = {};
    clock_gettime(clock, &time);
    return int64_t{time.tv_sec} * 1000 + time.tv_nsec / 1'000'000;
}

// As the log has it, so that the two can be laid side by side. The trace counts from the boot on.
static std::string clockTime(int64_t sinceBoot) {
    const int64_t ms = milliseconds(CLOCK_REALTIME) - milliseconds(CLOCK_MONOTONIC) + sinceBoot;
    const time_t second = ms / 1000;
    tm local = {};
    localtime_r(&second, &local);
    char text[32];
    const size_t size = strftime(text, sizeof(text), "%m-%d %H:%M:%S", &local);
    snprintf(text + size, sizeof(text) - size, ".%03d", static_cast<int>(ms % 1000));
    return text;
}

static void print(const Session& session, const std::string& line) {
    if (session.json) {
        session.out << line + "\n" << std::flush;
        return;
    }
    const Json record = Json::parse(line, nullptr, false);
    if (!record.contains("attribute")) return;  // the first line tells how many LEDs there are
    session.out << clockTime(record.value("ms", int64_t{0})) + " " +
                           escaped(record.value("attribute", "") + " " + record.value("text", "")) +
                           (record.contains("refused") ? " (refused)\n" : "\n")
                << std::flush;
}

Run declareLedWatch(CLI::App& /*app*/) {
    return [](Session& session) -> int {
        openBoard(session);
        const std::string path = session.board + "/run/leds.jsonl";
        const auto take = [&session](const std::string& line) { print(session, line); };
        if (const int error = printFile(session, path, true, take)) {
            throw session.failure("no_trace",
                                  path + ": " + strerror(error) +
                                          ": the board has no LEDs, or was started without FUSE",
                                  howToStart(error));
        }
        return kDone;
    };
}

}  // namespace tarq::tools
