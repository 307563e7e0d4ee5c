#pragma once

#include <string>

#include "tools/tarqctl/session.h"

namespace tarq::tools {

// The session's command for root: "sudo /DIR/tarqctl --board DIR COMMAND". sudo has a PATH of its
// own, on which a tool that somebody has built is not.
std::string asRoot(const Session& session);

}  // namespace tarq::tools
