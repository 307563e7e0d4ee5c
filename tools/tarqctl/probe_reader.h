// What the daemon logs while it asks the hardware which part is fitted.
#pragma once

#include "tools/tarqctl/log_cursor.h"

namespace tarq::tools {

// Takes the lines up to the result of the part's probe into finding.probe, if the part has a probe.
// The words of the item must have been compared. Returns whether the result is what words and
// probe come to: if not, another request has changed the state in between.
bool readProbe(LogCursor& log, const Item& part, ItemFinding& finding);

// Whether a line of that kind tells how a probe goes on.
bool isProbing(LogText kind);

}  // namespace tarq::tools
