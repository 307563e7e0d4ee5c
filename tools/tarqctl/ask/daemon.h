// Asking the daemon, with everything that can go wrong before there is an answer. A Daemon is made
// for a call or a few, and not kept while a command prints: its time runs.
#pragma once

#include <binder/IInterface.h>
#include <binder/Status.h>

#include <string>

#include "tools/tarqctl/ask/limits.h"
#include "tools/tarqctl/session.h"

namespace tarq::tools {

// What it means for a command that needs the daemon that host::openBinder() failed.
Failure notListening(const Session& session, int error);

// As noAnswer(), but while the daemon has not come so far that it answers anybody that is the
// cause.
Failure daemonTooSlow(const Session& session, const std::string& likelyCause,
                      const Asked& asked = {});

// The daemon of the session's board, for as long as it is asked: within --timeout.
class Daemon {
  public:
    // Opens the board. Throws a Failure at once when nobody listens there. likelyCause completes
    // the sentence "no answer after 10 s: …".
    Daemon(Session& session, const std::string& likelyCause, const Asked& asked = {});

    // Null if nothing is registered under the name. Within the life of a Daemon, since it may have
    // to wait for an answer.
    static android::sp<android::IBinder> find(const android::String16& name);

    // Throws a Failure if the service is not registered.
    template <typename Interface>
    android::sp<Interface> service(const android::String16& name = Interface::descriptor) const {
        return android::interface_cast<Interface>(require(name));
    }

    // Throws the Failure that a call's status stands for. A call that was not delivered is a call
    // that could not be asked (exit code 2); a service that answered with an exception has said no
    // (1).
    void expectOk(const android::binder::Status& status) const;

  private:
    android::sp<android::IBinder> require(const android::String16& name) const;

    const Session& mSession;
    const TimeLimit mLimit;
};

}  // namespace tarq::tools
