// Log texts by the pattern with which the daemon's printf made them.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tarq::tools {

// The arguments if the text was printed with the pattern, each as short as it can be. The pattern's
// conversions are %s, %d, %u and %x, with or without a length such as z.
std::optional<std::vector<std::string>> printedArguments(const char* pattern,
                                                         const std::string& text);

// The lines that the log makes of a text: it cuts a long one and begins a line behind a newline.
std::vector<std::string> asLogged(const std::string& text);

}  // namespace tarq::tools
