// Follows one match request through the log of the thread that answered it.
#pragma once

#include "tools/tarqctl/log_cursor.h"

namespace tarq::tools {

// Reads what follows the items, which are given as the daemon got them, or each cut as the log cuts
// it; everything but the request's time and thread.
//
// The items say what the daemon must log for them, so texts that are made to look like other lines
// lead nowhere. A yes has no line of its own: it is one when all that had to be logged is there,
// and all fits.
MatchRequest readMatchRequest(LogCursor& log, const std::vector<std::string>& items);

}  // namespace tarq::tools
