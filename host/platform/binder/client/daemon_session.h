// A client's one peer: the daemon. The session ends with the daemon's process, and the next use
// begins another with whichever daemon serves then; proxies of the old one stay dead.
#pragma once

#include <sys/types.h>

#include <memory>

#include "host/platform/binder/session.h"

namespace android::host {

class DaemonSession : public Session {
  public:
    // The session with the daemon that serves now: a new one if the last has ended. Null if nobody
    // answers, and in a child of a fork. May wait for the daemon's answer.
    static std::shared_ptr<DaemonSession> current();
    // The same, which hands over why there is none, an errno, instead of logging a refusal.
    static std::shared_ptr<DaemonSession> current(int* error);

    // From now on events are handled, on one thread a session. Until then they wait in the socket.
    static void startEvents();

    // Takes the descriptor of the event connection; id and token are the daemon's, from its
    // WELCOME.
    DaemonSession(int eventFd, uint64_t id, uint64_t token);
    ~DaemonSession() override;

    // Object 0 is the service manager, which is asked on a lane of its own. One-way calls go out in
    // order, and are carried out in it for one object, whatever becomes of this process; one for
    // which the daemon has no room now is FAILED_TRANSACTION.
    status_t transact(uint64_t target, uint32_t code, const Parcel& data, Parcel* reply,
                      uint32_t flags) override;

    // Opens a connection for one thread's calls; -errno if the daemon does not take it, which is
    // logged.
    int join(Lane lane) const;
    // Random, so it also tells this process's sessions apart.
    uint64_t token() const { return mToken; }

  protected:
    int post(const PacketHeader& header, const std::vector<PacketObject>& objects,
             const Parcel& data) override;

  private:
    // One call on this thread's connection. False if that is of no use any more.
    bool exchange(int fd, const PacketHeader& call, const Parcel& data, Parcel* reply,
                  status_t* result);
    // Whether the daemon's end of the event connection is closed, within the time.
    bool daemonIsGone(int waitMs) const;
    void spawnEventThread();
    // In place of that thread, where there is none: the releases up to the next callback's call,
    // which only a thread for events may run. Any thread.
    void takeReleases();
    // Returns when the session ends or the daemon sends what it must not.
    void handleEvents();
    void runCall(const Packet& packet);

    std::mutex mHearing;  // of the flag; held while releases are taken
    bool mHasEventThread = false;
    const int mEventFd;
    const uint64_t mId;
    const uint64_t mToken;
    const uid_t mDaemonUid;
};

}  // namespace android::host
