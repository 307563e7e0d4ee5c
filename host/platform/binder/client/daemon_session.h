// A client's one peer: the daemon.
#pragma once

#include <sys/types.h>

#include <memory>

#include "host/platform/binder/session.h"

namespace android::host {

class DaemonSession : public Session {
  public:
    // The session with the daemon that serves now: a new one if the last has ended. Null if nobody
    // answers.
    static std::shared_ptr<DaemonSession> current();

    // From now on events are handled, on one thread a session.
    static void startEvents();

    DaemonSession(int eventFd, uint64_t id, uint64_t token);
    ~DaemonSession() override;

    // Object 0 is the service manager.
    status_t transact(uint64_t target, uint32_t code, const Parcel& data, Parcel* reply,
                      uint32_t flags) override;

    // Opens a connection for one thread's calls; -errno if the daemon does not take it.
    int join(Lane lane) const;
    // Random, so it also tells this process's sessions apart.
    uint64_t token() const { return mToken; }

  protected:
    bool sendRelease(uint64_t id, uint64_t count) override;

  private:
    bool exchange(int fd, const PacketHeader& call, const Parcel& data, Parcel* reply,
                  status_t* result);
    bool daemonIsGone(int waitMs) const;
    void spawnEventThread();
    void handleEvents();
    void runCall(const Packet& packet);

    const int mEventFd;
    const uint64_t mId;
    const uint64_t mToken;
    const uid_t mDaemonUid;
};

}  // namespace android::host
