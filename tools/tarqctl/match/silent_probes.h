// Probes that told nothing, of which the daemon makes a no. Whether that is one depends on whether
// the hardware was there to be asked.
#pragma once

#include <string>
#include <vector>

#include "tools/tarqctl/match/explanation.h"
#include "tools/tarqctl/session.h"

namespace tarq::tools {

// What was made of probes that told nothing. It is a guess unless the hardware was there to be
// asked.
struct SilentProbes {
    std::vector<std::string> parts = {};
    bool decide = false;  // without them the answer may be another one
};
SilentProbes silentProbes(const MatchRequest& request);

// Why what is fitted as one of these parts could not be found out: the board has ended, or plays
// plain files where the probe needs more. Sets what to type then. "" when the board plays all that
// the probes ask, be it absent or with a fault; also for no parts. Throws a Failure when the board
// hangs.
std::string whyNotAsked(const Session& session, const std::vector<std::string>& parts,
                        std::string* hint);

// Takes back what rests on silent probes whose hardware could not be asked: why. The sentence tells
// what the service has said all the same; rows of those parts become unknown, and nothing is
// advised about them.
void withhold(const SilentProbes& silent, const std::string& why, Explanation* explanation);

}  // namespace tarq::tools
