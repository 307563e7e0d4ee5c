// The daemon's list of the board's parts.
#pragma once

#include <string>
#include <vector>

#include "tools/tarqctl/ask/daemon.h"

namespace tarq::tools {

// name:value for each kind of part, in the daemon's order; the value "null" where there is none.
std::vector<std::string> hardwareList(const Daemon& daemon);

}  // namespace tarq::tools
