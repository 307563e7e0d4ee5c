// What the processes of a soak share. All are forks of one program that has no thread by then, and
// share one piece of memory: who is killed leaves behind what it had counted.
#pragma once

#include <stdint.h>
#include <sys/types.h>

#include <atomic>
#include <initializer_list>
#include <map>
#include <random>
#include <string>

namespace soak {

constexpr int kClients = 8;
// These two are stopped at most. One of them holds the one callback of the LED service.
constexpr bool isKept(int client) {
    return client == 0 || client == 4;
}

// What a round does, one after the other. Processes look at it, and nobody goes back.
enum class Phase {
    kRun,
    kSettle,  // nothing new is begun, and the board is healed
    kCount,   // no key will come any more
    kLeave,   // the clients let go of everything, and end
};

// The operations of the LED service that tell the callback, in the order of its interface.
struct LedOperation {
    const char* name;
    uint32_t code;    // behind FIRST_CALL_TRANSACTION
    int32_t value;    // that the callback gets
    int32_t numbers;  // that it takes
};
constexpr LedOperation kLedOperations[] = {{"setRgbColor", 0, 64, 2},
                                           {"setRgbBrightness", 1, 82, 2},
                                           {"getRgbBrightness", 4, 124, 1},
                                           {"getRgbColor", 5, 101, 1}};

struct Shared {
    std::atomic<Phase> phase;
    std::atomic<int> ready, idle;  // how many clients are
    std::atomic<int> findings;

    // Why a call may take long: nodes that are held or slow now, a daemon or a board that is
    // stopped, or that waits for a processor. The driver adds up the time of it, in µs; for each
    // client that for which it was stopped, behind them what counts for all.
    std::atomic<int> disturbances;
    std::atomic<int64_t> excusedUs[kClients + 1];

    // What each client waits for, and since when; for who never gets its answer.
    struct Waiting {
        std::atomic<const char*> call;
        std::atomic<int64_t> sinceMs;
    } waiting[kClients];

    // Keys are numbered from 1 on, and begun before the board has taken them.
    std::atomic<int32_t> keysBegun, keysTaken;

    // Events of the LED service, by kLedOperations. A call that its client began and did not see
    // the end of may have told or not. In some rounds any client takes the slot, and may be killed
    // with it.
    struct Told {
        std::atomic<int> begun, done, heard;
    } leds[4];
    bool slotIsFree;

    // For people, and to see that anything happened.
    std::atomic<int64_t> calls, oneWay, events, rogue, changes, slowestMs;

    char hardware[512];  // what the sound board answers
};

extern Shared* shared;

// A process has its own, so that what it does, if not when, is the same with the same seed.
class Random {
  public:
    Random(uint64_t seed, int role, int life) {
        std::seed_seq all = {static_cast<uint32_t>(seed), static_cast<uint32_t>(seed >> 32),
                             static_cast<uint32_t>(role), static_cast<uint32_t>(life)};
        mEngine.seed(all);
    }
    // From least to most.
    int number(int least, int most) {
        return least + static_cast<int>(mEngine() % static_cast<uint32_t>(most - least + 1));
    }
    bool oneIn(int count) { return number(1, count) == 1; }
    template <typename Item>
    const Item& oneOf(const std::initializer_list<Item>& items) {
        return items.begin()[number(0, static_cast<int>(items.size()) - 1)];
    }
    std::string bytes(int size) {
        std::string text;
        while (size-- > 0) text += static_cast<char>(mEngine());
        return text;
    }

  private:
    std::mt19937 mEngine;
};

// Prints what must not be, and counts it; who: which process finds it. Only the first few of a
// process are printed.
[[gnu::format(printf, 2, 3)]] void finding(const char* who, const char* format, ...);

int64_t nowMs();
void pauseMs(int ms);
inline bool isOver() {
    return shared->phase != Phase::kRun;
}
// False when it has not become so within the time that nothing needs.
template <typename Condition>
bool becomes(Condition condition) {
    for (int64_t end = nowMs() + 20000; !condition(); pauseMs(5)) {
        if (nowMs() > end) return false;
    }
    return true;
}

// ---- the roles, each a process; what they return is its exit status ----

int runClient(int client, Random random);
int runRogue(Random random);
int runKeys(Random random);
// daemon and board: processes that are stopped now and then.
int runDisturber(Random random, pid_t daemon, pid_t board);
// Keeps what the hardware service answers, or compares it with what was kept.
int runWitness();

// ---- what a process has ----

size_t heapInUse();  // bytes of this process
bool hasLeaks();     // of this process, where a sanitizer can tell, which prints them

struct Holdings {
    size_t descriptors, threads;
    bool operator==(const Holdings& other) const {
        return descriptors == other.descriptors && threads == other.threads;
    }
};
Holdings holdingsOf(pid_t process);

// How long that thread of a process that waited longest for a processor did so since the last call.
class Starvation {
  public:
    int64_t waitedUs(pid_t process);

  private:
    std::map<std::string, int64_t> mWaitedNs;  // by the thread's folder
};

// Of the daemon, as it says itself every 50 ms.
size_t daemonHeap();

}  // namespace soak
