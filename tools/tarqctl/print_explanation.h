// Explanations for people and for programs.
#pragma once

#include <iosfwd>

#include "tools/tarqctl/explanation.h"
#include "tools/tarqctl/print_json.h"

namespace tarq::tools {

// Control characters escaped, so that a text from a log can neither break a table nor command a
// terminal.
std::string printable(const std::string& text);

// The verdict, the table, and what would make it fit.
std::string asText(const Explanation& explanation);

// {"verdict", "sentence", "items": [{"name", …}], "fallback", …}: the members' names stay.
Json asJson(const Explanation& explanation);

}  // namespace tarq::tools
