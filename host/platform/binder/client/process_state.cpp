// A client's role in the binder: it calls the daemon, and hosts callbacks.
#include <binder/IPCThreadState.h>
#include <binder/ProcessState.h>
#include <unistd.h>

#include "host/platform/binder/client/daemon_session.h"

namespace android {

sp<ProcessState> ProcessState::self() {
    static const sp<ProcessState>& state = *new sp<ProcessState>(new ProcessState);
    return state;
}

void ProcessState::startThreadPool() {
    host::DaemonSession::startEvents();
}

// Events have a thread of their own already: this one only must not end.
void IPCThreadState::joinThreadPool(bool /*isMain*/) {
    host::DaemonSession::startEvents();
    for (;;) pause();
}

}  // namespace android
