// What a thread knows of the call that it is running.
#pragma once

#include <stdint.h>
#include <sys/types.h>

namespace android {

// Who is calling the method that this thread is running. Each thread has one of its own, and nobody
// else may use it.
class IPCThreadState {
  public:
    // Gives the calling thread's, never null.
    static IPCThreadState* self();

    // The kernel's word on the calling process (uid: the effective one of the calling thread).
    // Outside of a call it is this process's own; a call within the process changes nothing. The
    // pid is 0 in a one-way call.
    pid_t getCallingPid() const { return mCallingPid; }
    uid_t getCallingUid() const { return mCallingUid; }

    // An identity is packed as uid << 32 | pid. clear makes it this process's own and returns the
    // one before. restore takes any: who calls it with a made-up one has only deceived itself.
    int64_t clearCallingIdentity();
    void restoreCallingIdentity(int64_t token);

    // Never returns. In the daemon it lets one call more run at the same time, in a client it lets
    // events be handled. The calls themselves run on other threads, unlike on the device. isMain
    // makes no difference.
    void joinThreadPool(bool isMain = true);

  private:
    IPCThreadState();

    pid_t mCallingPid;
    uid_t mCallingUid;
};

}  // namespace android
