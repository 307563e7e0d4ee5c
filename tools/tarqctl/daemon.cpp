#include "tools/tarqctl/daemon.h"

#include <binder/IServiceManager.h>
#include <errno.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <ostream>
#include <sstream>

#include "tools/tarqctl/board.h"
#include "tools/tarqctl/known_services.h"

namespace tarq::tools {

using android::IBinder;
using android::sp;
using android::String16;
using android::String8;
using android::binder::Status;

std::string daemonSocket(const Session& session) {
    return session.board + "/run/binder.sock";
}

int connectToDaemon(const Session& session) {
    const std::string path = daemonSocket(session);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) return ENAMETOOLONG;  // no daemon can be there
    memcpy(address.sun_path, path.c_str(), path.size());
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (fd < 0) return errno;
    const bool connected = connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
    const int error = connected ? 0 : errno;
    close(fd);
    return error;
}

std::string seconds(std::chrono::duration<double> time) {
    std::ostringstream text;
    text << time.count() << " s";
    return text.str();
}

// _exit: the main thread is in the middle of a call, and nothing it uses may be destroyed.
static void endWith(const Session& session, const Failure& failure) {
    printFailure(failure, session.json, session.out, session.err);
    _exit(failure.exitCode);
}

TimeLimit::TimeLimit(const Session& session, std::function<Failure()> failure)
    : mTimer(session.timeout,
             [&session, failure = std::move(failure)] { endWith(session, failure()); }) {}

Failure noAnswer(const Session& session, const std::string& likelyCause) {
    std::ostringstream longer;
    longer << "--timeout " << std::clamp(session.timeout.count() * 6, 60.0, kMaxTimeout) << " "
           << session.line;
    const std::string check = startupCheck();
    return session.failure("timeout",
                           "no answer after " + seconds(session.timeout) + ": " +
                                   (check.empty() ? likelyCause : check),
                           session.next(longer.str()));
}

Failure notListening(const Session& session, int error) {
    const bool hasLog = access((session.board + "/run/log").c_str(), R_OK) == 0;
    return session.failure("no_daemon",
                           "cannot connect to " + daemonSocket(session) + ": " + strerror(error),
                           hasLog ? session.next("log") : howToStart(error));
}

static const Session& opened(Session& session) {
    openBoard(session);
    return session;
}

Daemon::Daemon(Session& session, const std::string& likelyCause)
    : mSession(opened(session)),
      mLimit(session, [&session, likelyCause] { return noAnswer(session, likelyCause); }) {
    // Without this look defaultServiceManager() would wait for a daemon for ever.
    if (const int error = connectToDaemon(session)) throw notListening(session, error);
}

sp<IBinder> Daemon::find(const String16& name) {
    return android::defaultServiceManager()->checkService(name);
}

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
