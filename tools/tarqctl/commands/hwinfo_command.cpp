// hwinfo: the daemon's list of parts, in its order and with nothing added.
#include <com/tarq/hardwareInfo/IHardwareInfoService.h>

#include <CLI/App.hpp>
#include <ostream>

#include "tools/tarqctl/ask/daemon.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/match/facts.h"

namespace tarq::tools {

static std::vector<std::string> ask(Session& session) {
    const Daemon daemon(session, "the daemon is still starting, or hangs");
    const auto service = daemon.service<com::tarq::hardwareInfo::IHardwareInfoService>();
    std::vector<android::String16> items;
    bool always = false;  // the answer's own result is true whatever happened
    daemon.expectOk(service->getHardwareInfo(&items, &always));
    std::vector<std::string> texts;
    for (const android::String16& item : items) texts.emplace_back(android::String8(item));
    return texts;
}

static void printText(std::ostream& out, const std::vector<std::string>& items) {
    for (const std::string& item : items) out << item + "\n" << std::flush;
}

// A value may hold a colon, a name cannot. As an object, since no name is there twice.
static Json asJson(const std::vector<std::string>& items) {
    Json peripherals = Json::object();
    for (const std::string& item : items) {
        const Item part = itemFrom(item);
        peripherals[part.name] = part.value;
    }
    return {{"peripherals", peripherals}};
}

Run declareHwinfo(CLI::App& /*app*/) {
    return [](Session& session) -> int {
        const std::vector<std::string> items = ask(session);
        if (session.json) {
            printJson(session.out, asJson(items));
        } else {
            printText(session.out, items);
        }
        return kDone;
    };
}

}  // namespace tarq::tools
