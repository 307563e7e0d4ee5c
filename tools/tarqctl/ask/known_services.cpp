// An absent service has no way to say why, so the reason is worked out from what can be seen: the
// property that switches it off, the check that still keeps the daemon from it, or the later
// service that is there already, which means that this one was refused.
#include "tools/tarqctl/ask/known_services.h"

#include <com/tarq/hardwareInfo/IHardwareInfoService.h>
#include <com/tarq/radiokey/IRadioKeyService.h>
#include <com/tarq/rgbleds/IRgbLedsService.h>
#include <com/tarq/shell/IShellService.h>
#include <cutils/properties.h>
#include <utils/String8.h>

#include <algorithm>

#include "tools/tarqctl/ask/daemon.h"

namespace tarq::tools {

template <typename Interface>
static std::string descriptor() {
    return android::String8(Interface::descriptor).string();
}

// A service that its daemon always has needs no property.
const std::vector<KnownService>& knownServices() {
    static const std::vector<KnownService>& services = *new std::vector<KnownService>{
            {descriptor<com::tarq::hardwareInfo::IHardwareInfoService>(), nullptr},
            {descriptor<com::tarq::rgbleds::IRgbLedsService>(), nullptr},
            {descriptor<com::tarq::shell::IShellService>(), nullptr},
            {android::String8(com::tarq::radiokey::IRadioKeyService::SERVICE_NAME()).string(),
             "ro.vendor.433_check_enable", true},
    };
    return services;
}

// "" for a property that is not set, which cannot be told from one that is empty.
static std::string property(const char* name) {
    char value[PROPERTY_VALUE_MAX];
    property_get(name, value, "");
    return value;
}

const KnownService* findKnown(const std::string& name) {
    for (const KnownService& service : knownServices()) {
        if (service.name == name) return &service;
    }
    return nullptr;
}

std::string whySwitchedOff(const KnownService& service) {
    if (service.enabledBy == nullptr || property(service.enabledBy) == "true") return "";
    return std::string("property ") + service.enabledBy + " is not \"true\"";
}

// The check publishes its result in a property when it ends, whatever that is; it is asked there,
// since the daemon answers nobody meanwhile.
std::string startupCheck() {
    const bool runs = property("ro.vendor.zigbee_check_enable") == "true" &&
                      property("ro.vendor.zigbee.info").empty();
    return runs ? "the Zigbee check is still running; it can take up to 13.5 minutes when nothing "
                  "answers on /dev/ttyS3"
                : "";
}

std::string startupCheckBefore(const KnownService& service) {
    return service.isBehindCheck ? startupCheck() : "";
}

std::string whyAbsent(const std::vector<KnownService>& services, const std::vector<bool>& present,
                      size_t index) {
    const KnownService& service = services[index];
    const std::string off = whySwitchedOff(service);
    if (!off.empty()) return off;
    const bool passedOver = std::any_of(present.begin() + static_cast<std::ptrdiff_t>(index) + 1,
                                        present.end(), [](bool later) { return later; });
    const std::string check = passedOver ? "" : startupCheckBefore(service);
    if (!check.empty()) return check;
    std::string why = passedOver ? "" : "the daemon is still starting, or ";
    why += "its registration was refused, see the log";
    if (service.enabledBy != nullptr) {
        why += std::string(", or property ") + service.enabledBy +
               " became \"true\" after the start";
    }
    return why;
}

// The last is looked up first. The other way round a start-up that goes on meanwhile would make one
// look passed over: absent when it was asked for, and the next already there.
std::vector<FoundService> findKnownServices() {
    const std::vector<KnownService>& services = knownServices();
    std::vector<bool> present(services.size());
    for (size_t i = services.size(); i-- > 0;) {
        present[i] = Daemon::find(android::String16(services[i].name.c_str())) != nullptr;
    }
    std::vector<FoundService> found;
    for (size_t i = 0; i < services.size(); ++i) {
        found.push_back(
                {services[i].name, present[i], present[i] ? "" : whyAbsent(services, present, i)});
    }
    return found;
}

}  // namespace tarq::tools
