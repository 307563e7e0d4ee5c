#include "host/board/view/led_replay.h"

#include "host/board/control.h"
#include "host/board/led_trace.h"

namespace tarq::board {

namespace fs = std::filesystem;

fs::path requireTrace(const fs::path& board) {
    const fs::path trace = traceOfLeds(board);
    if (fs::exists(trace)) return trace;
    std::string reason;
    const bool shouldBe = ask(board, {"trace"}, &reason);
    throw std::runtime_error(trace.string() + ": " + (shouldBe ? "is not there" : reason));
}

LedReplay::LedReplay(const fs::path& board) : mTrace(requireTrace(board)) {
    update();
}

void LedReplay::update() {
    mTrace.read([this](const std::string& line) { take(line); });
}

void LedReplay::take(const std::string& text) {
    const LedTraceLine line = parseLedTraceLine(text);
    if (line.leds != 0) {
        mLeds = line.leds;
        mDriver = LedDriver(mLeds);
    } else {
        mDriver.write(line.record.attribute, line.record.text, line.record.ms);
    }
}

}  // namespace tarq::board
