// Those who are told take locks of their own, which may be held by whoever found the death out: so
// it is never that thread which tells them. A thread that were started then could be refused, and
// the notice lost or a lock waited for by its holder; this one is there before anybody can link.
#include "host/platform/binder/notices.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

#include "host/platform/utils/start_thread.h"

namespace android::host {

namespace {

struct Notices {
    [[noreturn]] void run() {
        std::unique_lock<std::mutex> guard(lock);
        for (;;) {
            added.wait(guard, [this] { return !proxies.empty(); });
            sp<BpBinder> proxy = std::move(proxies.front());
            proxies.pop_front();
            guard.unlock();
            proxy->sendObituary();
            proxy.clear();
            guard.lock();
        }
    }

    std::mutex lock;
    std::condition_variable added;
    std::deque<sp<BpBinder>> proxies;
    bool hasThread = false;
};

// They are never destroyed, as the thread waits on them when the process ends.
Notices& notices() {
    static Notices& instance = *new Notices;
    return instance;
}

}  // namespace

bool startNotices() {
    Notices& all = notices();
    const std::lock_guard<std::mutex> guard(all.lock);
    if (!all.hasThread) all.hasThread = startThread([&all] { all.run(); });
    return all.hasThread;
}

// Without the thread nobody is linked: the proxies only learn that they are dead.
void sendObituaries(std::vector<sp<BpBinder>> proxies) {
    if (!startNotices()) {
        for (const sp<BpBinder>& proxy : proxies) proxy->sendObituary();
        return;
    }
    Notices& all = notices();
    const std::lock_guard<std::mutex> guard(all.lock);
    for (sp<BpBinder>& proxy : proxies) all.proxies.push_back(std::move(proxy));
    all.added.notify_one();
}

}  // namespace android::host
