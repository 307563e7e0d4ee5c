// The services that the daemon may have. A new one is a row. Their names are those of the
// interfaces, which are the one source of them.
#pragma once

#include <string>
#include <vector>

namespace tarq::tools {

struct KnownService {
    std::string name;
    const char* enabledBy;  // the property that must be "true" for it; null when it is always there
    bool isBehindCheck = false;  // it comes after the check for the Zigbee co-processor
};

// In the order in which the daemon registers them.
const std::vector<KnownService>& knownServices();

// The one of that name; null when there is none.
const KnownService* findKnown(const std::string& name);

// "property ro.x is not "true"", as it is now; "" for one that is not switched off.
std::string whySwitchedOff(const KnownService& service);

// What the daemon is busy with before it answers any call: the start-up check for the Zigbee
// co-processor, as long as it is enabled and has published nothing. Else "". Its message is for
// people and completes a sentence.
std::string startupCheck();

// The same where the check is what this service waits for. Else "".
std::string startupCheckBefore(const KnownService& service);

// Why services[index] may be absent, from what can be seen now: which of the services are present.
// Registrations appear in their order, so an absent one behind which others stand was passed over.
std::string whyAbsent(const std::vector<KnownService>& services, const std::vector<bool>& present,
                      size_t index);

// It is absent for whoever asks now: a service that is registered later is found by asking again.
struct FoundService {
    std::string name;
    bool present;
    std::string reason;  // why it may be absent
};

// Looks all of them up, in their order. Within the life of a Daemon.
std::vector<FoundService> findKnownServices();

}  // namespace tarq::tools
