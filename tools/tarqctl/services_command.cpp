// services [NAME]: what is registered, and why the rest may not be.
#include <CLI/App.hpp>
#include <ostream>

#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/daemon.h"
#include "tools/tarqctl/known_services.h"
#include "tools/tarqctl/print_json.h"

namespace tarq::tools {

namespace {

struct Found {
    std::string name;
    bool present;
    std::string reason;  // why it may be absent
};

bool isPresent(const std::string& name) {
    return Daemon::find(android::String16(name.c_str())) != nullptr;
}

// The last is looked up first. The other way round a start-up that goes on meanwhile would make one
// look passed over: absent when it was asked for, and the next already there.
std::vector<Found> findKnown() {
    const std::vector<KnownService>& services = knownServices();
    std::vector<bool> present(services.size());
    for (size_t i = services.size(); i-- > 0;) present[i] = isPresent(services[i].name);
    std::vector<Found> found;
    for (size_t i = 0; i < services.size(); ++i) {
        found.push_back(
                {services[i].name, present[i], present[i] ? "" : whyAbsent(services, present, i)});
    }
    return found;
}

// Of the known services the one of that name; another name is looked up all the same.
std::vector<Found> find(const std::string& name) {
    for (const Found& service : findKnown()) {
        if (service.name == name) return {service};
    }
    return {{name, isPresent(name), "the daemon has no service of that name"}};
}

void print(const std::vector<Found>& services, const Session& session) {
    Json list = Json::array();
    std::string text;
    for (const Found& service : services) {
        Json entry = {{"name", service.name}, {"present", service.present}};
        if (!service.present) entry["reason"] = service.reason;
        list.push_back(entry);
        text += service.name + (service.present ? " present" : " absent: " + service.reason) + "\n";
    }
    if (session.json) {
        printJson(session.out, {{"services", list}});
    } else {
        session.out << text << std::flush;
    }
}

std::vector<Found> ask(Session& session, const std::string& name) {
    const Daemon daemon(session, "the daemon hangs or is stopped");
    return name.empty() ? findKnown() : find(name);
}

}  // namespace

Run declareServices(CLI::App& app) {
    const auto name = std::make_shared<std::string>();
    app.add_option("NAME", *name, "only this service; exit code 1 if it is absent");
    return [name](Session& session) -> int {
        const std::vector<Found> services = ask(session, *name);  // one, where one is named
        print(services, session);
        return name->empty() || services[0].present ? kDone : kServiceSaidNo;
    };
}

}  // namespace tarq::tools
