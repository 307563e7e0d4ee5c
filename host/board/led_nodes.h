// The LED driver's attributes as files of the hardware.
#pragma once

#include <memory>

#include "host/board/hardware.h"
#include "host/board/led_driver.h"
#include "host/board/led_trace.h"

namespace tarq::board {

// Adds them, named as they are called; the hardware's lock is the driver's as well. What is written
// to them goes into the trace, once that was opened. Throws std::invalid_argument when there are
// some already.
std::shared_ptr<LedTraceWriter> addLeds(Hardware& hardware, size_t count);

}  // namespace tarq::board
