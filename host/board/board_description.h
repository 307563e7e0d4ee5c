// board.xml: what is fitted to a board.
#pragma once

#include <filesystem>

#include "host/board/hardware.h"
#include "host/board/led_trace.h"

namespace tarq::board {

// Adds the nodes of all parts that the file names; none without a file. Returns the trace of the
// LEDs, yet to be opened; null without LEDs. Throws std::runtime_error, "FILE:LINE: what is wrong",
// for anything in it that is not understood.
std::shared_ptr<LedTraceWriter> fit(const std::filesystem::path& file, Hardware& hardware);

}  // namespace tarq::board
