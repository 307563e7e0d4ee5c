#include "tools/tarqctl/view/led_replay.h"

#include "host/run/led_record.h"
#include "tools/tarqctl/view/print_file.h"

namespace tarq::tools {

LedReplay::LedReplay(const Session& session) : mTrace(session.board.ledRecords()) {
    requireRecord(session, session.board.ledRecords(), "trace");
    update();
}

void LedReplay::update() {
    mTrace.read([this](const std::string& line) { take(line); });
}

void LedReplay::take(const std::string& text) {
    host::LedLine line;
    if (!host::parseLedLine(text, &line)) return;
    if (line.leds != 0) {
        mLeds = line.leds;
        mDriver = board::LedDriver(mLeds);
    } else {
        mDriver.write(line.record.attribute, line.record.text, line.record.ms);
    }
}

}  // namespace tarq::tools
