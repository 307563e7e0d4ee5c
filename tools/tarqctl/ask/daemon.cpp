// Between a command and a service's answer stand a board, a daemon that listens, a time limit and a
// registration. Each of them that is missing is a failure with a cause and a hint of its own, found
// in this order, so that a command only says which service it wants and what to ask.
#include "tools/tarqctl/ask/daemon.h"

#include <binder/IServiceManager.h>
#include <errno.h>
#include <host/binder_door.h>
#include <unistd.h>

#include "host/run/descriptors.h"
#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/ask/known_services.h"

namespace tarq::tools {

using android::IBinder;
using android::sp;
using android::String16;
using android::String8;
using android::binder::Status;

// Where a daemon has run its log may tell why it does not any more, so that is what to look at
// next.
Failure notListening(const Session& session, int error) {
    if (error == EPROTONOSUPPORT) {
        return session.failure(
                "other_build",
                "the daemon is of another build than this tarqctl, and speaks another "
                "language: end the board, and start it again",
                howToStart(0));
    }
    if (error == EMFILE) {
        return session.failure("too_many",
                               "the daemon refuses a connection: user " +
                                       std::to_string(geteuid()) +
                                       " has as many as one may, half of its descriptors",
                               "ss -xp | grep " + session.board.binderSocket());
    }
    const bool hasLog = access(session.board.log().c_str(), R_OK) == 0;
    return session.failure("no_daemon",
                           "no daemon serves, cannot connect to " + session.board.binderSocket() +
                                   ": " + host::socketError(error),
                           hasLog ? session.next("log") : howToStart(error));
}

Failure daemonTooSlow(const Session& session, const std::string& likelyCause, const Asked& asked) {
    const std::string check = startupCheck();
    return noAnswer(session, check.empty() ? likelyCause : check, asked);
}

static const Session& opened(Session& session) {
    openBoard(session);
    return session;
}

Daemon::Daemon(Session& session, const std::string& likelyCause, const Asked& asked)
    : mSession(opened(session)),
      mLimit(session, [=, &session] { return daemonTooSlow(session, likelyCause, asked); }) {
    // Without this look defaultServiceManager() would wait for a daemon for ever.
    if (const int error = host::openBinder()) throw notListening(session, error);
}

sp<IBinder> Daemon::find(const String16& name) {
    return android::defaultServiceManager()->checkService(name);
}

// Why a service is absent is worked out for those that are known; of another name nothing is known.
sp<IBinder> Daemon::require(const String16& name) const {
    const sp<IBinder> service = find(name);
    if (service != nullptr) return service;
    const std::string text = String8(name).string();
    std::string why = text + " is not registered";
    for (const FoundService& known : findKnownServices()) {
        if (known.name == text && !known.present) why += ": " + known.reason;
    }
    throw mSession.failure("no_service", why, mSession.next("services"));
}

// The ways in which a call fails without the service having said anything.
static std::string reason(const Status& status) {
    switch (status.transactionError()) {
        case android::DEAD_OBJECT:
            return "the daemon ended before it answered";
        case android::FAILED_TRANSACTION:
            return "the call or its answer was not delivered, it may be too large";
        case android::UNKNOWN_TRANSACTION:
            return "the service does not know this call";
        default:
            return status.toString8().string();
    }
}

void Daemon::expectOk(const Status& status) const {
    if (status.isOk()) return;
    const bool answered = status.transactionError() == android::OK;
    throw mSession.failure("call_failed", reason(status), mSession.next("log"),
                           answered ? kServiceSaidNo : kCouldNotAsk);
}

}  // namespace tarq::tools
