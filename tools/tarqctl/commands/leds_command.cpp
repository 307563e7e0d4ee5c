// leds: the LEDs of the board as they are seen, live or as a picture of an effect. What the records
// of the trace mean is the driver's business, so the tool feeds a driver of its own with them and
// looks at that every 20 ms; a change is shown, until Ctrl-C or the end of the board.
#include <unistd.h>

#include <CLI/App.hpp>
#include <atomic>
#include <ostream>
#include <thread>

#include "host/run/board.h"
#include "host/run/records.h"
#include "host/run/text.h"
#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/ask/follow.h"
#include "tools/tarqctl/ask/limits.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/view/effect_picture.h"
#include "tools/tarqctl/view/leds.h"

namespace tarq::tools {

namespace {

// The terminal's other screen, without a cursor; afterwards the usual one is as it was. What was on
// the terminal before is back afterwards, also when the command fails.
class Screen {
  public:
    explicit Screen(std::ostream& out) : mOut(out) { mOut << "\x1b[?1049h\x1b[?25l"; }
    ~Screen() { mOut << "\x1b[0m\x1b[?25h\x1b[?1049l" << std::flush; }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    // Once more when the terminal's size has changed.
    void show(const std::vector<std::string>& title, const Colours& colours) {
        winsize size = {};
        ioctl(STDOUT_FILENO, TIOCGWINSZ, &size);
        if (size.ws_col == 0 || size.ws_row == 0) size = {24, 80, 0, 0};
        const bool isResized = size.ws_col != mSize.ws_col || size.ws_row != mSize.ws_row ||
                               colours.size() != mColours.size();
        if (isResized) mOut << "\x1b[2J";
        if (isResized || colours != mColours || title != mTitle) {
            mOut << blocks(title, colours, size) << std::flush;
        }
        mSize = size;
        mTitle = title;
        mColours = colours;
    }

  private:
    std::ostream& mOut;
    winsize mSize = {};
    std::vector<std::string> mTitle;
    Colours mColours;
};

// ms is the time at which they were seen, by the clock of the records.
void printColours(const Session& session, int64_t ms, const Colours& colours) {
    if (!session.json) {
        session.out << listed(colours) + "\n" << std::flush;
        return;
    }
    Json leds = Json::array();
    for (const uint32_t colour : colours) {
        char digits[7];
        snprintf(digits, sizeof(digits), "%06x", colour & 0xffffff);
        leds.push_back(digits);
    }
    printJson(session.out, {{"ms", ms}, {"leds", leds}});
}

// As blocks on a terminal; without one, or with --json or NO_COLOR, a line for each change. A slow
// terminal delays the next look and nothing else: what happened meanwhile is in the trace.
void watch(const Session& session) {
    LedReplay leds(session);
    std::atomic<bool> isOver{false};
    const Interrupt interrupt([&isOver] { isOver = true; });
    std::optional<Screen> screen;
    if (session.coloured && !session.json) screen.emplace(session.out);
    const std::string board = "LEDs of " + host::escaped(session.board.directory);
    Colours before;
    while (!isOver && hasReader(session)) {
        if (!host::isRunning(session.board)) {
            screen.reset();
            throw boardEnded(session);
        }
        leds.update();
        const int64_t ms = host::nowMs();
        const Colours colours = leds.driver().shown(ms);
        if (screen) {
            screen->show({board, whatPlays(leds.driver().effect()) + "; Ctrl-C ends this view"},
                         colours);
        } else if (colours != before) {
            printColours(session, ms, colours);
        }
        before = colours;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

int showOnce(const Session& session) {
    if (!host::isRunning(session.board)) throw boardEnded(session);
    const LedReplay leds(session);
    const int64_t ms = host::nowMs();
    printColours(session, ms, leds.driver().shown(ms));
    return kDone;
}

}  // namespace

Run declareLeds(CLI::App& app) {
    const auto effect = std::make_shared<std::string>();
    const auto gif = std::make_shared<std::string>();
    const auto once = std::make_shared<bool>(false);
    CLI::Option* option =
            app.add_option("--gif", *gif,
                           "draw the effect that is played into this file, as a moving\n"
                           "GIF, instead of showing the LEDs until Ctrl-C or the\n"
                           "board's end, which is exit code 2")
                    ->type_name("FILE");
    app.add_option("--effect", *effect,
                   "draw this one: a file of the device, such as\n"
                   "/vendor/etc/leds/wave_fast.xml, or any other, which needs\n"
                   "no board")
            ->type_name("FILE")
            ->needs(option);
    app.add_flag("--once", *once, "print the colours that they have now, a line")->excludes(option);
    return [effect, gif, once](Session& session) -> int {
        if (!gif->empty()) {
            drawEffect(session, *effect, *gif);
            return printDone(session);
        }
        openBoard(session);
        if (*once) return showOnce(session);
        watch(session);
        return kDone;
    };
}

}  // namespace tarq::tools
