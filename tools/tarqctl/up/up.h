#pragma once

#include <string>
#include <vector>

#include "tools/tarqctl/session.h"

namespace tarq::tools {

// As the command line has them; nothing of it has been checked.
struct UpOptions {
    std::string board = "demo_panel";  // one of the known boards, or the folder of another
    bool isShared = false;
    bool requiresFuse = false;
};

// Starts a board and the daemon, runs the command beside them, or shows the log when there is none,
// and ends all of them. The command's status, 128 and the signal that ended this process, or 2. To
// be called while the process has no other thread. What went wrong is printed before it returns.
int runUp(const Session& session, const UpOptions& options,
          const std::vector<std::string>& command);

}  // namespace tarq::tools
