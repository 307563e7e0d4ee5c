// Output for programs: with --json, in place of the text.
#pragma once

#include <iosfwd>
#include <nlohmann/json.hpp>

namespace tarq::tools {

// Keeps its members in the order in which they were added.
using Json = nlohmann::ordered_json;

// One line, flushed. Bytes that are not UTF-8 become U+FFFD.
void printJson(std::ostream& out, const Json& json);

}  // namespace tarq::tools
