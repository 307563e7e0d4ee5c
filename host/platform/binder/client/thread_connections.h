// The connections on which one thread of a client calls.
#pragma once

#include <sys/types.h>

#include <memory>

#include "host/platform/binder/wire.h"

namespace android::host {

class DaemonSession;

// Opened at the thread's first call, closed with the thread. The daemon takes the caller's user
// from the connection, so a thread that has changed its effective uid gets new ones.
class ThreadConnections {
  public:
    static ThreadConnections& self();
    ~ThreadConnections();

    // The descriptor for a lane of this session, or -errno.
    int get(const DaemonSession& session, Lane lane);
    void close();

  private:
    ThreadConnections() = default;

    uint64_t mToken = 0;
    uid_t mUid = 0;
    int mFds[2] = {-1, -1};
};

}  // namespace android::host
