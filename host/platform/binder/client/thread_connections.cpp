#include "host/platform/binder/client/thread_connections.h"

#include <unistd.h>

#include "host/platform/binder/client/daemon_session.h"

namespace android::host {

ThreadConnections& ThreadConnections::self() {
    static thread_local ThreadConnections connections;
    return connections;
}

ThreadConnections::~ThreadConnections() {
    close();
}

// The user is asked each time, as a thread may change it between two calls.
int ThreadConnections::get(const DaemonSession& session, Lane lane) {
    const uid_t uid = geteuid();
    if (mToken != session.token() || mUid != uid) {
        close();
        mToken = session.token();
        mUid = uid;
    }
    int& fd = mFds[static_cast<size_t>(lane)];
    if (fd < 0) fd = session.join(lane);
    return fd;
}

void ThreadConnections::close() {
    for (int& fd : mFds) {
        if (fd >= 0) ::close(fd);
        fd = -1;
    }
}

}  // namespace android::host
