// Finds out which of the panels that the board may carry is fitted.
#pragma once

#include <stdint.h>

#include <string>
#include <string_view>

// Sets item to the entry of the table's row LCD ("IC-ID,IC-ID,…") whose number is the one that the
// hardware reports, exactly as it stands there. False, and item as it was, when there is none or
// the hardware reports nothing; the reason is logged. Asks the hardware anew each time, which for
// GPIO lines means to export them. Any thread, after start-up.
bool getLcdInfoFromXml(std::string& item);

// The search alone: the first item of the list with that number. Items are kept as they are;
// blanks around their numbers do not matter.
bool findPanel(std::string_view list, int32_t panelId, std::string& item);

// Reads an identification pin: path is a device tree property whose first cell is its number, below
// 128; level becomes 0 or 1. False, and level as it was, for any failure, which is logged. Any
// thread; see gpio_input.h on two of them.
bool getGpioValFromDsiId(const char* path, int32_t& level);
