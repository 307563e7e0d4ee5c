// Explanations for people and for programs.
#pragma once

#include "tools/tarqctl/match/explanation.h"
#include "tools/tarqctl/print_json.h"

namespace tarq::tools {

// The verdict, the table, and what would make it fit.
std::string asText(const Explanation& explanation);

// {"verdict", "sentence", "items": [{"name", …}], "fallback", …}: the members' names stay.
Json asJson(const Explanation& explanation);

}  // namespace tarq::tools
