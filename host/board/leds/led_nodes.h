// The LED driver's attributes as files of the hardware, and the record of what is written to them.
// The driver itself is in led_driver.h, and knows neither files nor the time.
#pragma once

#include <memory>

#include "host/board/hardware/hardware.h"
#include "host/run/growing_file.h"
#include "host/run/records.h"

namespace tarq::board {

// For one thread at a time. Before open() nothing is written.
class LedTrace {
  public:
    explicit LedTrace(size_t leds) : mLeds(leds) {}

    // Begins the file. Throws std::system_error.
    void open(const std::string& file);
    void add(const host::LedRecord& record) const { mFile.add(host::ledLine(record)); }

  private:
    const size_t mLeds;
    host::RecordFile mFile{"virtual_board: the trace of the LEDs"};
};

// Adds them, named as they are called; the hardware's lock is the driver's as well. What is written
// to them goes into the trace, once that was opened. Throws std::invalid_argument when there are
// some already. count: 1 to 255.
std::shared_ptr<LedTrace> addLeds(Hardware& hardware, size_t count);

}  // namespace tarq::board
