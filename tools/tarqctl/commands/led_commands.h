// The commands below `led`, as in commands.h. What they have in common is how the outcome of a call
// is found out.
#pragma once

#include <com/tarq/rgbleds/IRgbLedsService.h>

#include "tools/tarqctl/ask/daemon.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/log/led_outcome.h"

namespace tarq::tools {

// In the order of the help of `led`.
const std::vector<Command>& ledCommands();

Run declareLedPlay(CLI::App& app);

// What comes of a call besides its status. It is filled by whoever makes the call, who knows what
// the daemon will log and send.
struct LedAnswer {
    bool done = true;                    // as the service says
    std::vector<std::string> arguments;  // of the operation, as the log prints them
    std::vector<std::string> records;    // "ATTRIBUTE TEXT": what the driver is sent
};

// Makes one call, and returns what the log tells of it, if it does. Throws a Failure when an
// attribute could not be opened, or the driver refused one of those records, whatever the service
// says. operation: as the log names it. asked: for the message when no answer comes.
std::optional<LedCall> askLeds(Session& session, const std::string& operation,
                               const std::function<android::binder::Status(
                                       com::tarq::rgbleds::IRgbLedsService&, LedAnswer*)>& call,
                               const Asked& asked = {true});

}  // namespace tarq::tools
