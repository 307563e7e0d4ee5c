// The commands below `radio`, as in commands.h. What the receiver's numbers mean is said here once,
// for all of them.
#pragma once

#include <com/tarq/radiokey/IRadioKeyService.h>

#include "tools/tarqctl/ask/daemon.h"
#include "tools/tarqctl/commands.h"

namespace tarq::tools {

// In the order of the help of `radio`.
const std::vector<Command>& radioCommands();

Run declareRadioWatch(CLI::App& app);

// The service, or a Failure that tells why there is none.
android::sp<com::tarq::radiokey::IRadioKeyService> radioOf(const Daemon& daemon);

// Why the service may not answer; it completes the sentence of a Daemon.
constexpr char kRadioIsSlow[] = "the receiver is slow, or the daemon is still starting, or hangs";

// What the service answers while the receiver is being started or set to another frequency. Every
// other number is the receiver's own; 0 is the one of a virtual board without a receiver.
constexpr int32_t kChipNotReady = -1;
constexpr int32_t kChipAbsent = 0;
// "chip status 0, with which a virtual board says that no receiver answers". What is not known of a
// number is not said.
std::string meaningOfStatus(int32_t status);

// What a start of the daemon makes of the stored text.
struct StoredFrequency {
    int32_t number;
    std::string text;  // empty when none is stored
};
// Reads the board's property, without the daemon. The board has to be open. What the receiver is
// tuned to now nobody tells.
StoredFrequency storedFrequency();

// "433 (default)", "315"
std::string asText(const StoredFrequency& frequency);

}  // namespace tarq::tools
