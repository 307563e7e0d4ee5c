// A lamp effect file, as the board's driver would get it from the daemon.
#pragma once

#include <filesystem>

#include "host/board/led_effect.h"

namespace tarq::board {

// For a board with that many LEDs. What the daemon leaves out is named on standard error. Throws
// Refusal (views.h) for what the driver does not take, and std::runtime_error when the file cannot
// be read: "FILE:LINE: what is wrong".
LedEffect readEffectFile(const std::filesystem::path& file, size_t leds);

}  // namespace tarq::board
