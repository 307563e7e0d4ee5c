#include <errno.h>
#include <host/growing_file.h>
#include <stdio.h>

#include <optional>
#include <system_error>

#include "host/board/attributes.h"
#include "host/board/endings.h"
#include "host/board/led_trace.h"
#include "host/board/view/led_replay.h"
#include "host/board/view/views.h"

namespace tarq::board {

// Without times, so that two runs of the same can be compared.
static std::string asText(const LedRecord& record) {
    return record.attribute + " " + escaped(record.text) + (record.refused ? " (refused)" : "");
}

static void print(const std::string& line, bool asJson) {
    if (asJson) {
        puts(line.c_str());
    } else if (const LedTraceLine parsed = parseLedTraceLine(line); parsed.leds == 0) {
        puts(asText(parsed.record).c_str());
    }
}

void printTrace(const std::filesystem::path& board, bool follows, bool asJson) {
    host::GrowingFile trace(requireTrace(board));
    std::optional<Endings> endings;
    if (follows) endings.emplace();
    do {
        trace.read([asJson](const std::string& line) { print(line, asJson); });
        if (fflush(stdout) != 0) throw std::system_error(errno, std::system_category(), "output");
    } while (follows && !endings->comeWithin(std::chrono::milliseconds(20)));
}

}  // namespace tarq::board
