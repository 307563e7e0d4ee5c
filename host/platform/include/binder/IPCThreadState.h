#pragma once

#include <stdint.h>
#include <sys/types.h>

namespace android {

// Who is calling the method that this thread is running.
class IPCThreadState {
  public:
    static IPCThreadState* self();

    // The kernel's word on the calling process (uid: the effective one). Outside of a call, and in
    // calls within the process, its own. The pid is 0 in a one-way call.
    pid_t getCallingPid() const { return mCallingPid; }
    uid_t getCallingUid() const { return mCallingUid; }

    // An identity is packed as uid << 32 | pid. clear makes it this process's own and returns the
    // one before.
    int64_t clearCallingIdentity();
    void restoreCallingIdentity(int64_t token);

    // Runs calls on this thread, for ever.
    void joinThreadPool(bool isMain = true);

  private:
    IPCThreadState();

    pid_t mCallingPid;
    uid_t mCallingUid;
};

}  // namespace android
