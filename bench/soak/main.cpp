// Drives a soak in rounds: a board and a daemon that stay, and in each round processes that come,
// are stopped and killed, and at its end let go of everything. Each round has a seed of its own,
// one more than that of the round before, so that the round that failed is played again alone.
//
// Usage: soak MINUTES SEED. Exit code: 0 nothing was found, 1 something was, 2 could not start.
#include <host/process_board.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "bench/soak/processes.h"

namespace soak {

namespace {

class Soak {
  public:
    explicit Soak(const std::string& directory);
    void playRound(uint64_t seed, int64_t ms);

  private:
    bool settle();
    bool askWitness();
    void checkDaemon();
    void print(uint64_t seed) const;

    const std::string mLog;  // of one round
    Processes mProcesses;
    Holdings mBefore = {};
    size_t mHeapBefore = 0, mHeapAfterFirst = 0;
};

Soak::Soak(const std::string& directory) : mLog(directory + "/log"), mProcesses(directory, mLog) {
    askWitness();
    for (Holdings now = {1, 1}; !(now == mBefore);) {  // until what it had to start has ended
        mBefore = now;
        pauseMs(500);
        now = holdingsOf(mProcesses.daemon);
    }
    mHeapBefore = daemonHeap();
}

bool Soak::askWitness() {
    mProcesses.startRole(kWitness, 0, [](const Random& /*random*/) { return runWitness(); });
    return mProcesses.await("the daemon", [this] { return mProcesses.count() == 0; });
}

// What a killed client began may come, or not; what was done must.
void checkLeds() {
    const auto isLost = [](const Shared::Told& told) { return told.heard < told.done; };
    const auto isComplete = [&] {
        return shared->slotIsFree ||
               std::none_of(std::begin(shared->leds), std::end(shared->leds), isLost);
    };
    becomes(isComplete);
    pauseMs(100);
    for (int i = 0; i < 4; ++i) {
        const Shared::Told& told = shared->leds[i];
        if ((isLost(told) && !shared->slotIsFree) || told.heard > told.begun) {
            finding("driver", "%s: %s, %d events of %d calls, of which %d were begun",
                    isLost(told) ? "lost" : "doubled", kLedOperations[i].name, told.heard.load(),
                    told.done.load(), told.begun.load());
        }
    }
}

bool Soak::settle() {
    shared->phase = Phase::kSettle;
    for (int i = 0; i < kClients; ++i) mProcesses.resume(i);
    const auto areIdle = [this](int times) {
        return shared->idle == times * kClients && mProcesses.count() == kClients;
    };
    if (!mProcesses.await("quiet", [&] { return areIdle(1); })) return false;
    shared->phase = Phase::kCount;
    if (!mProcesses.await("the keys", [&] { return areIdle(2); })) return false;
    checkLeds();
    shared->phase = Phase::kLeave;
    return mProcesses.await("the clients' end", [this] { return mProcesses.count() == 0; });
}

// Of the first round tables stay that have grown, and one callback. What stays of later ones is a
// leak, even if it is a few bytes of each client.
void Soak::checkDaemon() {
    constexpr size_t kFirst = size_t{64} * 1024;
    constexpr size_t kLater = size_t{4} * 1024;
    if (!becomes([this] { return holdingsOf(mProcesses.daemon) == mBefore; })) {
        const Holdings now = holdingsOf(mProcesses.daemon);
        finding("driver", "held: the daemon has %zu descriptors, %zu threads; before %zu, %zu",
                now.descriptors, now.threads, mBefore.descriptors, mBefore.threads);
    }
    const size_t most = mHeapAfterFirst == 0 ? mHeapBefore + kFirst : mHeapAfterFirst + kLater;
    if (!becomes([&] { return daemonHeap() <= most; })) {
        finding("driver", "held: the daemon has %zu bytes of heap; before %zu", daemonHeap(),
                mHeapAfterFirst == 0 ? mHeapBefore : mHeapAfterFirst);
    }
    if (mHeapAfterFirst == 0) mHeapAfterFirst = daemonHeap();
}

void Soak::playRound(uint64_t seed, int64_t ms) {
    const std::string hardware = shared->hardware;
    new (shared) Shared{};
    hardware.copy(shared->hardware, hardware.size());
    shared->slotIsFree = seed % 4 == 3;
    if (truncate(mLog.c_str(), 0) != 0) giveUp(mLog.c_str());
    Random random(seed, kDriver, 0);
    mProcesses.startRoles(seed);
    for (const int64_t end = nowMs() + ms; nowMs() < end;) mProcesses.harass(random);
    if (settle() && askWitness()) checkDaemon();
    print(seed);
}

void Soak::print(uint64_t seed) const {
    const auto number = [](const std::atomic<int64_t>& value) {
        return static_cast<long long>(value.load());
    };
    const Holdings now = holdingsOf(mProcesses.daemon);
    printf("seed %llu: %lld calls, slowest %lld ms, %lld one-way, %d keys, %lld events, %d kills, "
           "%d stops, %lld rogue connections, %lld changes; daemon: %zu descriptors, %zu threads, "
           "%zu bytes, %zu at the start; %d findings\n",
           static_cast<unsigned long long>(seed), number(shared->calls), number(shared->slowestMs),
           number(shared->oneWay), shared->keysTaken.load(), number(shared->events),
           mProcesses.kills, mProcesses.stops, number(shared->rogue), number(shared->changes),
           now.descriptors, now.threads, daemonHeap(), mHeapBefore, shared->findings.load());
    fflush(stdout);
}

}  // namespace

// False if something was found.
static bool play(const std::string& directory, uint64_t seed, int64_t ms) {
    constexpr int64_t kRoundMs = 10000;
    Soak soak(directory);
    for (const int64_t end = nowMs() + ms; shared->findings == 0; ++seed) {
        soak.playRound(seed, std::min(ms, kRoundMs));
        if (nowMs() >= end) break;
    }
    return shared->findings == 0;
}

}  // namespace soak

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    std::string directory = "/tmp/soak.XXXXXX";
    if (mkdtemp(directory.data()) == nullptr) soak::giveUp("mkdtemp");
    chmod(directory.c_str(), 0711);  // other users may reach the daemon
    setenv("TARQ_BOARD", directory.c_str(), 1);
    void* const memory = mmap(nullptr, sizeof(soak::Shared), PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) soak::giveUp("mmap");
    soak::shared = new (memory) soak::Shared{};
    const auto ms = static_cast<int64_t>(atof(argv[1]) * 60000);
    if (soak::play(directory, strtoull(argv[2], nullptr, 10), ms)) {
        return system(("rm -rf " + directory).c_str()) == 0 ? 0 : 1;
    }
    printf("soak: the last round's seed plays it again; the daemon's log: %s/log\n",
           directory.c_str());
    return 1;
}
