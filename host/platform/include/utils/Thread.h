// A thread that repeats one function.
#pragma once

#include <stddef.h>

#include <mutex>

#include <utils/Errors.h>
#include <utils/RefBase.h>

namespace android {

// The device has others, which nobody here asks for.
enum {
    PRIORITY_DEFAULT = 0,
};

// Hold it with a strong pointer before run(). It holds itself only within a pass: when nobody else
// does between two of them, the thread ends and the object with it.
class Thread : public virtual RefBase {
  public:
    // canCallJava: whether the platform's managed runtime is to know the thread.
    explicit Thread(bool canCallJava = true);
    ~Thread() override;

    // Starts it, detached, under the name, of which the kernel keeps 15 bytes. INVALID_OPERATION
    // while it runs, UNKNOWN_ERROR if there can be no thread. Once it has ended it may be run
    // again. Priority and stack are the host's usual ones, whatever is asked for.
    virtual status_t run(const char* name, int32_t priority = PRIORITY_DEFAULT, size_t stack = 0);

  private:
    // One pass; true for another one. Runs on the new thread, without a lock. The object lives for
    // as long as a pass takes.
    virtual bool threadLoop() = 0;

    void loop();

    std::mutex mLock;
    bool mRunning = false;
    sp<Thread> mHoldSelf;  // from run() until the thread has its own reference
};

}  // namespace android
