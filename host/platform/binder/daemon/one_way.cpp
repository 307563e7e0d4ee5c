// Each object that has calls has a queue, and a thread for as long as there is something in it. The
// call that runs stays in front, so a queue that is there has a thread, or waits for the spare one:
// when no thread can be had calls come late, and none is lost.
#include "host/platform/binder/daemon/one_way.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "host/platform/binder/daemon/handlers.h"
#include "host/platform/utils/start_thread.h"

namespace android::host {

namespace {

struct Queues {
    std::mutex lock;
    std::unordered_map<BBinder*, std::deque<std::unique_ptr<Call>>> byTarget;
    std::deque<BBinder*> withoutThread;
    std::condition_variable spareWanted;
};

// They are never destroyed, as threads still use them when the process ends.
Queues& queues() {
    static Queues& instance = *new Queues;
    return instance;
}

const Call& firstOf(BBinder* target) {
    const std::lock_guard<std::mutex> guard(queues().lock);
    return *queues().byTarget.at(target).front();
}

// Until nothing is left for the object.
void runAll(BBinder* target) {
    Queues& all = queues();
    for (bool hasMore = true; hasMore;) {
        const Call& call = firstOf(target);
        {
            const HandlerTurn turn;
            Parcel unwanted;
            call.run(&unwanted);
        }
        std::unique_ptr<Call> done;  // may be the last to hold the object: goes without the lock
        const std::lock_guard<std::mutex> guard(all.lock);
        const auto queue = all.byTarget.find(target);
        done = std::move(queue->second.front());
        queue->second.pop_front();
        hasMore = !queue->second.empty();
        if (!hasMore) all.byTarget.erase(queue);
    }
}

[[noreturn]] void runSpare() {
    Queues& all = queues();
    for (;;) {
        BBinder* target = nullptr;
        {
            std::unique_lock<std::mutex> guard(all.lock);
            all.spareWanted.wait(guard, [&all] { return !all.withoutThread.empty(); });
            target = all.withoutThread.front();
            all.withoutThread.pop_front();
        }
        runAll(target);
    }
}

}  // namespace

bool startOneWayCalls() {
    return startThread(runSpare);
}

void queueOneWay(std::unique_ptr<Call> call) {
    Queues& all = queues();
    BBinder* const target = call->target.get();
    const std::lock_guard<std::mutex> guard(all.lock);
    auto& queue = all.byTarget[target];
    queue.push_back(std::move(call));
    if (queue.size() > 1 || startThread([target] { runAll(target); })) return;
    all.withoutThread.push_back(target);
    all.spareWanted.notify_one();
}

}  // namespace android::host
