// Text for a terminal.
#pragma once

#include <string>

namespace tarq::tools {

// Control characters as \xNN, so that a text from elsewhere can neither break a table nor command
// the terminal. UTF-8 and backslashes stay as they are.
std::string escaped(const std::string& text);

}  // namespace tarq::tools
