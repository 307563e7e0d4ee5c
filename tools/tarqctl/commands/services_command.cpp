// services [NAME]: what is registered, and why the rest may not be. The four that the daemon may
// have are known with what switches them off; for any other name all that can be told is whether it
// is there.
#include <CLI/App.hpp>
#include <ostream>

#include "tools/tarqctl/ask/daemon.h"
#include "tools/tarqctl/ask/known_services.h"
#include "tools/tarqctl/commands.h"

namespace tarq::tools {

namespace {

// Of the known services the one of that name; another name is looked up all the same.
std::vector<FoundService> find(const std::string& name) {
    for (const FoundService& service : findKnownServices()) {
        if (service.name == name) return {service};
    }
    const bool present = Daemon::find(android::String16(name.c_str())) != nullptr;
    return {{name, present, "the daemon has no service of that name"}};
}

void print(const std::vector<FoundService>& services, const Session& session) {
    Json list = Json::array();
    std::string text;
    for (const FoundService& service : services) {
        Json entry = {{"name", service.name}, {"present", service.present}};
        if (!service.present) entry["reason"] = service.reason;
        list.push_back(entry);
        text += service.name + " " +
                painted(session, service.present ? "present" : "absent", service.present) +
                (service.present ? "" : ": " + service.reason) + "\n";
    }
    if (session.json) {
        printJson(session.out, {{"services", list}});
    } else {
        session.out << text << std::flush;
    }
}

std::vector<FoundService> ask(Session& session, const std::string& name) {
    const Daemon daemon(session, "the daemon hangs");
    return name.empty() ? findKnownServices() : find(name);
}

}  // namespace

Run declareServices(CLI::App& app) {
    const auto name = std::make_shared<std::string>();
    app.add_option("NAME", *name, "only this service; exit code 1 if it is absent");
    return [name](Session& session) -> int {
        const std::vector<FoundService> services = ask(session, *name);  // one, where one is named
        print(services, session);
        return name->empty() || services[0].present ? kDone : kServiceSaidNo;
    };
}

}  // namespace tarq::tools
