#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <system_error>

#include "host/board/endings.h"
#include "host/board/led_trace.h"
#include "host/board/view/led_replay.h"
#include "host/board/view/views.h"

namespace tarq::board {

namespace {

using Colours = std::vector<uint32_t>;

constexpr size_t kWidth = 5;  // of a block, in columns; one more is between two

std::string format(const char* pattern, uint32_t a, uint32_t b, uint32_t c = 0) {
    char text[64];
    snprintf(text, sizeof(text), pattern, a, b, c);
    return text;
}

// "0:80c0ff 1:0060ff"
std::string listed(const Colours& colours) {
    std::string line;
    for (uint32_t led = 0; led < colours.size(); ++led) {
        line += format(led == 0 ? "%x:%06x" : " %x:%06x", led, colours[led]);
    }
    return line + "\n";
}

std::string asBackground(uint32_t colour) {
    const uint32_t red = colour >> 16, green = colour >> 8 & 0xff, blue = colour & 0xff;
    const bool isBright = 299 * red + 587 * green + 114 * blue > 110'000;
    return (isBright ? "\x1b[30m" : "\x1b[37m") + format("\x1b[48;2;%u;%u;%um", red, green, blue);
}

// From the top left corner of the screen on: each LED with its id, as many in a row as there is
// space for; flat ones if high ones do not all fit.
std::string blocks(const Colours& colours, const winsize& screen) {
    const size_t perRow = std::max<size_t>(1, (screen.ws_col + 1) / (kWidth + 1));
    const size_t rows = (colours.size() + perRow - 1) / perRow;
    const bool areHigh = rows * 4 <= screen.ws_row;
    std::string text = "\x1b[H";
    const auto addLine = [&](size_t first, bool withIds) {
        for (size_t led = first; led < std::min(first + perRow, colours.size()); ++led) {
            text += asBackground(colours[led]);
            const auto id = static_cast<uint32_t>(led);
            text += withIds ? format(" %2x  ", id, 0) : std::string(kWidth, ' ');
            text += led + 1 < first + perRow ? "\x1b[0m " : "\x1b[0m";
        }
        text += "\n";
    };
    for (size_t row = 0; row < rows && (areHigh || row < screen.ws_row); ++row) {
        if (areHigh) addLine(row * perRow, false);
        addLine(row * perRow, true);
        if (areHigh) addLine(row * perRow, false);
        if (areHigh) text += "\n";
    }
    text.pop_back();  // at the bottom a newline would scroll
    return text;
}

void print(const std::string& text) {
    fputs(text.c_str(), stdout);
    if (fflush(stdout) != 0) throw std::system_error(errno, std::system_category(), "output");
}

// The terminal's other screen, without a cursor; afterwards the usual one is as it was.
class Screen {
  public:
    Screen() { print("\x1b[?1049h\x1b[?25l"); }
    ~Screen() {
        fputs("\x1b[0m\x1b[?25h\x1b[?1049l", stdout);
        fflush(stdout);
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;
};

winsize sizeOfTerminal() {
    winsize size = {};
    ioctl(STDOUT_FILENO, TIOCGWINSZ, &size);
    if (size.ws_col == 0 || size.ws_row == 0) return {24, 80, 0, 0};
    return size;
}

}  // namespace

void watchLeds(const std::filesystem::path& board) {
    const char* noColour = getenv("NO_COLOR");
    const bool isText = !isatty(STDOUT_FILENO) || (noColour != nullptr && *noColour != '\0');
    LedReplay leds(board);
    const Endings endings;
    std::optional<Screen> screen;
    if (!isText) screen.emplace();
    Colours before;
    winsize sizeBefore = {};
    do {
        leds.update();
        const Colours colours = leds.driver().shown(now());
        const winsize size = isText ? winsize{} : sizeOfTerminal();
        const bool isResized = size.ws_col != sizeBefore.ws_col ||
                               size.ws_row != sizeBefore.ws_row || colours.size() != before.size();
        if (isResized && !isText) print("\x1b[2J");
        if (colours != before || isResized) print(isText ? listed(colours) : blocks(colours, size));
        before = colours;
        sizeBefore = size;
    } while (!endings.comeWithin(std::chrono::milliseconds(20)));
}

}  // namespace tarq::board
