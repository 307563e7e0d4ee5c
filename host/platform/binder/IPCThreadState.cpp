#include <binder/IPCThreadState.h>

#include <unistd.h>

namespace android {

IPCThreadState::IPCThreadState() : mCallingPid(getpid()), mCallingUid(getuid()) {}

IPCThreadState* IPCThreadState::self() {
    static thread_local IPCThreadState state;
    return &state;
}

// Both calls together let a service act for itself in between; the transport uses them to say who
// calls.
int64_t IPCThreadState::clearCallingIdentity() {
    const uint64_t before = uint64_t{mCallingUid} << 32 | static_cast<uint32_t>(mCallingPid);
    mCallingPid = getpid();
    mCallingUid = getuid();
    return static_cast<int64_t>(before);
}

void IPCThreadState::restoreCallingIdentity(int64_t token) {
    mCallingUid = static_cast<uid_t>(static_cast<uint64_t>(token) >> 32);
    mCallingPid = static_cast<pid_t>(token);
}

}  // namespace android
