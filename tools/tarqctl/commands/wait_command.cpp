// wait [NAME…]: until the daemon serves, also when it has not been started yet. Every 50 ms a look
// is taken; what each look found is kept for the moment when the time is up, in which it is too
// late to ask what was missing.
#include <host/binder_door.h>

#include <CLI/App.hpp>
#include <algorithm>
#include <mutex>
#include <thread>

#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/ask/daemon.h"
#include "tools/tarqctl/ask/known_services.h"
#include "tools/tarqctl/ask/why_silent.h"
#include "tools/tarqctl/commands.h"

namespace tarq::tools {

namespace {

// What is known when the time is up, which may come in the middle of a call.
struct Progress {
    std::mutex lock;
    int error = 0;                     // of the last try to connect
    std::vector<std::string> missing;  // not found so far
    bool mustServe = false;            // being registered is not enough: calls are to be answered
};

// Why the daemon does not serve, or that service of it is missing. A name that it does not have, or
// that is switched off, waits for no hardware.
Cause whyNotYet(const Session& session, const std::vector<std::string>& missing) {
    const std::string next = session.next("services");
    if (missing.empty()) return whyNobodyAnswers(session, true, {startupCheck(), next});
    const KnownService* service = findKnown(missing.front());
    if (service == nullptr) {
        return whyNobodyAnswers(session, false, {"no service of that name is known", next});
    }
    const std::string off = whySwitchedOff(*service);
    return whyNobodyAnswers(session, off.empty(),
                            {off.empty() ? startupCheckBefore(*service) : off, next});
}

// The nearest cause first: nobody listens, somebody is stopped, the start-up check goes on.
Failure notThereYet(const Session& session, Progress& progress) {
    const std::lock_guard<std::mutex> lock(progress.lock);
    if (progress.error != 0) {
        Failure failure = notListening(session, progress.error);
        failure.why += ", for " + seconds(session.timeout);
        return failure;
    }
    const bool isComplete = progress.missing.empty();
    std::string why = isComplete ? "not serving after " : "not registered after ";
    why += seconds(session.timeout);
    if (!isComplete) why += ": " + joined(progress.missing);
    const Cause cause = whyNotYet(session, progress.missing);
    return session.failure("timeout", why + (cause.why.empty() ? "" : ": ") + cause.why,
                           cause.hint);
}

// Asks for what is still missing; true when there is nothing more to wait for. A name once found is
// not asked for again, so that a daemon that comes up slowly is asked little.
bool look(Progress& progress) {
    const int error = host::openBinder();
    std::vector<std::string> missing = progress.missing;  // written by this thread only
    const auto isRegistered = [](const std::string& name) {
        return Daemon::find(android::String16(name.c_str())) != nullptr;
    };
    if (error == 0) {
        missing.erase(std::remove_if(missing.begin(), missing.end(), isRegistered), missing.end());
    }
    const std::lock_guard<std::mutex> lock(progress.lock);
    progress.error = error;
    progress.missing = missing;
    if (error != 0 || !missing.empty()) return false;
    return !progress.mustServe || startupCheck().empty();
}

// A service that its property switches off would never come.
std::vector<std::string> enabledServices() {
    std::vector<std::string> names;
    for (const KnownService& service : knownServices()) {
        if (whySwitchedOff(service).empty()) names.push_back(service.name);
    }
    return names;
}

}  // namespace

Run declareWait(CLI::App& app) {
    const auto names = std::make_shared<std::vector<std::string>>();
    app.add_option("NAME", *names, "wait only until these services are registered");
    return [names](Session& session) -> int {
        openBoard(session);
        Progress progress;  // outlives the time limit, which reads it
        progress.mustServe = names->empty();
        progress.missing = progress.mustServe ? enabledServices() : *names;
        {
            const TimeLimit limit(session, [&] { return notThereYet(session, progress); });
            while (!look(progress)) {
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
            }
        }
        return printDone(session);
    };
}

}  // namespace tarq::tools
