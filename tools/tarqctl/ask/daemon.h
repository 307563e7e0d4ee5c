// Asking the daemon, with everything that can go wrong before there is an answer.
#pragma once

#include <binder/IInterface.h>
#include <binder/Status.h>

#include <string>

#include "tools/tarqctl/ask/time_limit.h"
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

    // Null if nothing is registered under the name.
    static android::sp<android::IBinder> find(const android::String16& name);

    // Throws a Failure if the service is not registered.
    template <typename Interface>
    android::sp<Interface> service(const android::String16& name = Interface::descriptor) const {
        return android::interface_cast<Interface>(require(name));
    }

    // Throws the Failure that a call's status stands for.
    void expectOk(const android::binder::Status& status) const;

  private:
    android::sp<android::IBinder> require(const android::String16& name) const;

    const Session& mSession;
    const TimeLimit mLimit;
};

}  // namespace tarq::tools
