// Whether the hardware was there to be asked, when a probe found nothing.
#pragma once

#include <string>
#include <vector>

#include "tools/tarqctl/session.h"

namespace tarq::tools {

// Why what is fitted as one of these parts could not be found out: the board has ended, or plays
// plain files where the probe needs more. Sets what to type then. "" when the board plays all that
// the probes ask, be it absent or with a fault; also for no parts. Throws a Failure when the board
// hangs.
std::string whyNotAsked(const Session& session, const std::vector<std::string>& parts,
                        std::string* hint);

}  // namespace tarq::tools
