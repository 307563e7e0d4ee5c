// Output for programs: with --json, in place of the text.
#pragma once

#include <iosfwd>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "tools/tarqctl/session.h"

namespace tarq::tools {

// Keeps its members in the order in which they were added.
using Json = nlohmann::ordered_json;

// null for what is empty, and for no number.
Json orNull(const std::string& text);
Json orNull(const std::optional<std::string>& text);
Json orNull(int number);

// One line, flushed. Bytes that are not UTF-8 become U+FFFD.
void printJson(std::ostream& out, const Json& json);

// What a command has to say in the end: the object with --json, else the text as a line of its own.
// Returns kDone, as the next one does.
int printResult(const Session& session, const Json& object, const std::string& text);

// For a command that has nothing to say but that it is done.
int printDone(const Session& session);

}  // namespace tarq::tools
