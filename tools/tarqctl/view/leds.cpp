// The trace has all that the driver was told, so a driver that is fed with it shows the same. Its
// colours are written as text or as blocks of a terminal, which fit themselves to its size.
#include "tools/tarqctl/view/leds.h"

#include <stdio.h>

#include <algorithm>

#include "host/run/records.h"
#include "tools/tarqctl/ask/follow.h"

namespace tarq::tools {

LedReplay::LedReplay(const Session& session) : mTrace(session.board.ledRecords()) {
    requireRecord(session, session.board.ledRecords(), "trace");
    update();
}

void LedReplay::update() {
    mTrace.read([this](const std::string& line) { take(line); });
}

// The first line of a board that was switched on again says how many LEDs there are, and begins
// anew.
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

static constexpr size_t kWidth = 5;  // of a block, in columns; one more is between two

static std::string format(const char* pattern, uint32_t a, uint32_t b, uint32_t c = 0) {
    char text[64];
    snprintf(text, sizeof(text), pattern, a, b, c);
    return text;
}

std::string listed(const Colours& colours) {
    std::string line;
    for (uint32_t led = 0; led < colours.size(); ++led) {
        line += format(led == 0 ? "%u:%06x" : " %u:%06x", led, colours[led]);
    }
    return line;
}

// The number on it is black or white, whichever can be read: the limit is for the brightness that
// eyes see, by the weights of ITU-R BT.601.
static std::string asBackground(uint32_t colour) {
    const uint32_t red = colour >> 16, green = colour >> 8 & 0xff, blue = colour & 0xff;
    const bool isBright = 299 * red + 587 * green + 114 * blue > 110'000;
    return (isBright ? "\x1b[30m" : "\x1b[37m") + format("\x1b[48;2;%u;%u;%um", red, green, blue);
}

std::string whatPlays(const board::LedEffect* effect) {
    if (effect == nullptr) return "no effect plays";
    return "an effect of " + std::to_string(effect->duration()) + " ms plays " +
           (effect->loops() ? "again and again" : "once, and its last colours stay");
}

// A row of LEDs, from that one on.
static std::string lineOf(const Colours& colours, size_t first, size_t perRow, bool withIds) {
    std::string text;
    for (size_t led = first; led < std::min(first + perRow, colours.size()); ++led) {
        const auto id = static_cast<uint32_t>(led);
        text += asBackground(colours[led]);
        text += withIds ? format(" %3u ", id, 0) : std::string(kWidth, ' ');
        text += led + 1 < first + perRow ? "\x1b[0m " : "\x1b[0m";
    }
    return text + "\n";
}

// It is drawn over what is there, so nothing flickers.
std::string blocks(const std::vector<std::string>& title, const Colours& colours,
                   const winsize& screen) {
    const size_t perRow = std::max<size_t>(1, (screen.ws_col + 1) / (kWidth + 1));
    const size_t rows = (colours.size() + perRow - 1) / perRow;
    std::string text = "\x1b[H";
    size_t height = screen.ws_row;
    if (height > rows + title.size()) {
        height -= title.size() + 1;
        // What the line before had more is erased.
        for (const std::string& line : title) text += line.substr(0, screen.ws_col) + "\x1b[K\n";
        text += "\n";
    }
    const bool areHigh = rows * 4 <= height;
    for (size_t row = 0; row < rows && (areHigh || row < height); ++row) {
        if (areHigh) text += lineOf(colours, row * perRow, perRow, false);
        text += lineOf(colours, row * perRow, perRow, true);
        if (areHigh) text += lineOf(colours, row * perRow, perRow, false) + "\n";
    }
    text.pop_back();  // at the bottom a newline would scroll
    return text;
}

}  // namespace tarq::tools
