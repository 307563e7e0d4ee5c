// The LEDs of a running board, as another process sees them.
#pragma once

#include <host/growing_file.h>

#include <filesystem>
#include <functional>

#include "host/board/led_driver.h"

namespace tarq::board {

// The path of the board's trace. Throws std::exception with the reason when it has none.
std::filesystem::path requireTrace(const std::filesystem::path& board);

// Feeds a driver with the records of the trace, so that it is in the state of the board's own. A
// board that is switched on again begins anew.
class LedReplay {
  public:
    // Throws std::exception when there is no trace.
    explicit LedReplay(const std::filesystem::path& board);

    // Takes what was added. Throws std::exception when that makes no sense.
    void update();
    const LedDriver& driver() const { return mDriver; }
    size_t leds() const { return mLeds; }

  private:
    void take(const std::string& line);

    host::GrowingFile mTrace;
    size_t mLeds = 1;
    LedDriver mDriver{mLeds};
};

}  // namespace tarq::board
