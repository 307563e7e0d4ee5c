// The colours of all LEDs at once, for a terminal and as text.
#pragma once

#include <stdint.h>
#include <sys/ioctl.h>

#include <string>
#include <vector>

namespace tarq::tools {

// RRGGBB by LED.
using Colours = std::vector<uint32_t>;

// "0:80c0ff 1:0060ff"
std::string listed(const Colours& colours);

// From the top left corner of the screen on: each LED with its id, as many in a row as there is
// space for; flat ones if high ones do not all fit.
std::string blocks(const Colours& colours, const winsize& screen);

}  // namespace tarq::tools
