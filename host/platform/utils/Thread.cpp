// The object holds itself from run() until its thread has taken a reference of its own, so that it
// may be dropped right after it was started. Then it is held for a pass, and between two passes by
// others alone: that is how a thread of this class is ended.
#include <pthread.h>
#include <sys/prctl.h>
#include <utils/Thread.h>

#include <memory>
#include <string>
#include <utility>

#include "host/platform/utils/start_thread.h"

namespace android::host {

// pthread_create instead of std::thread, which would throw: a process that is out of threads goes
// on.
bool startThread(std::function<void()> body) {
    auto argument = std::make_unique<std::function<void()>>(std::move(body));
    const auto run = [](void* data) -> void* {
        const std::unique_ptr<std::function<void()>> owned(
                static_cast<std::function<void()>*>(data));
        (*owned)();
        return nullptr;
    };
    pthread_t thread;
    if (pthread_create(&thread, nullptr, run, argument.get()) != 0) return false;
    static_cast<void>(argument.release());  // the thread has it
    pthread_detach(thread);
    return true;
}

}  // namespace android::host

namespace android {

Thread::Thread(bool /*canCallJava*/) {}

Thread::~Thread() = default;

// Every thread has the host's own priority and stack: nothing here asks for others.
status_t Thread::run(const char* name, int32_t /*priority*/, size_t /*stack*/) {
    const std::lock_guard<std::mutex> guard(mLock);
    if (mRunning) return INVALID_OPERATION;
    mRunning = true;
    mHoldSelf = this;
    const auto body = [this, named = std::string(name)] {
        prctl(PR_SET_NAME, named.c_str());
        loop();
    };
    if (host::startThread(body)) return OK;
    mRunning = false;
    mHoldSelf.clear();
    return UNKNOWN_ERROR;
}

// The lock hands the reference over: the thread may come here before run() has returned.
void Thread::loop() {
    sp<Thread> strong;
    {
        const std::lock_guard<std::mutex> guard(mLock);
        strong = mHoldSelf;
        mHoldSelf.clear();
    }
    const wp<Thread> weak(strong);
    while (strong->threadLoop()) {
        strong.clear();  // may end the object
        strong = weak.promote();
        if (strong == nullptr) return;
    }
    const std::lock_guard<std::mutex> guard(strong->mLock);
    strong->mRunning = false;
}

}  // namespace android
