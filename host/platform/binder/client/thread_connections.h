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
    // Each thread gets its own.
    static ThreadConnections& self();
    ~ThreadConnections();

    // The descriptor for a lane of this session, opened if there is none, or -errno. Connections of
    // another session or user are closed first.
    int get(const DaemonSession& session, Lane lane);
    // Closes them all, one of them being of no use any more: the next get opens new ones.
    void close();

  private:
    ThreadConnections() = default;

    uint64_t mToken = 0;     // of the session that they belong to
    uid_t mUid = 0;          // the effective one, as whom they were opened
    int mFds[2] = {-1, -1};  // by Lane
};

}  // namespace android::host
