// The commands below `led`, as in commands.h.
#pragma once

#include <com/tarq/rgbleds/IRgbLedsService.h>

#include "tools/tarqctl/ask/daemon.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/log/led_outcome.h"

namespace tarq::tools {

const std::vector<Command>& ledCommands();

Run declareLedPlay(CLI::App& app);

// What comes of a call besides its status.
struct LedAnswer {
    bool done = true;                    // as the service says
    std::vector<std::string> arguments;  // of the operation, as the log prints them
    std::vector<std::string> records;    // "ATTRIBUTE TEXT": what the driver is sent
};

// Makes one call, and returns what the log tells of it, if it does. Throws a Failure when an
// attribute could not be opened, or the driver refused one of those records, whatever the service
// says.
std::optional<LedCall> askLeds(Session& session, const std::string& operation,
                               const std::function<android::binder::Status(
                                       com::tarq::rgbleds::IRgbLedsService&, LedAnswer*)>& call,
                               const Asked& asked = {true});

}  // namespace tarq::tools
