#include "host/platform/utils/start_thread.h"

#include <pthread.h>

#include <memory>
#include <utility>

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
