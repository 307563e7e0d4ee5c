// What a command reads besides its arguments.
#pragma once

#include <functional>
#include <string>

#include "tools/tarqctl/session.h"

namespace tarq::tools {

// Hands over the lines of the file, or of standard input for "-", without their newlines. Throws a
// Failure if it cannot be read.
void readLines(const Session& session, const std::string& file,
               const std::function<void(const std::string&)>& take);

}  // namespace tarq::tools
