// Asking the daemon, with everything that can go wrong before there is an answer.
#pragma once

#include <binder/IInterface.h>
#include <binder/Status.h>

#include <functional>
#include <string>

#include "tools/tarqctl/session.h"
#include "tools/tarqctl/timer.h"

namespace tarq::tools {

// Where the daemon of the session's board listens.
std::string daemonSocket(const Session& session);

// Tries to connect there: 0 or an errno.
int connectToDaemon(const Session& session);

// What that error means for a command that needs the daemon.
Failure notListening(const Session& session, int error);

// What it means when --timeout is over. likelyCause completes "no answer after 10 s: …", unless
// the daemon has not come so far that it answers anybody.
Failure noAnswer(const Session& session, const std::string& likelyCause);

// Prints the failure and ends the process when it exists for longer than --timeout. A call to the
// daemon cannot be interrupted, and nothing else is left to do. Not to be held while printing.
class TimeLimit {
  public:
    // failure is called when the time is up, on another thread.
    TimeLimit(const Session& session, std::function<Failure()> failure);

  private:
    Timer mTimer;
};

// "10 s"
std::string seconds(std::chrono::duration<double> time);

// The daemon of the session's board, for as long as it is asked: within --timeout.
class Daemon {
  public:
    // Opens the board. Throws a Failure at once when nobody listens there. likelyCause completes
    // the sentence "no answer after 10 s: …".
    Daemon(Session& session, const std::string& likelyCause);

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
