// The LEDs of a running board as another process sees them, and shows them.
#pragma once

#include <stdint.h>
#include <sys/ioctl.h>

#include <string>
#include <vector>

#include "host/board/leds/led_driver.h"
#include "host/run/growing_file.h"
#include "tools/tarqctl/session.h"

namespace tarq::tools {

// Feeds a driver with the records of the trace, so that it is in the state of the board's own. A
// board that is switched on again begins anew. What it shows is what the board shows, as both have
// the same driver. For one thread.
class LedReplay {
  public:
    // Throws a Failure when the board has no trace.
    explicit LedReplay(const Session& session);

    // Takes what was added.
    void update();
    // Times for it are those of host::nowMs(), as in the records.
    const board::LedDriver& driver() const { return mDriver; }
    size_t leds() const { return mLeds; }

  private:
    void take(const std::string& line);

    host::GrowingFile mTrace;
    size_t mLeds = 1;
    board::LedDriver mDriver{mLeds};
};

// RRGGBB by LED.
using Colours = std::vector<uint32_t>;

// "0:80c0ff 1:0060ff" In the order of the LEDs, without a newline.
std::string listed(const Colours& colours);

// What plays, in a line: "an effect of 960 ms plays again and again".
std::string whatPlays(const board::LedEffect* effect);

// From the top left corner of the screen on: the title's lines, if the screen is high enough, and
// each LED with its number, as many in a row as there is space for; flat ones if high ones do not
// all fit.
std::string blocks(const std::vector<std::string>& title, const Colours& colours,
                   const winsize& screen);

}  // namespace tarq::tools
