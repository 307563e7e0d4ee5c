// Drives a soak in rounds: a board and a daemon that stay, and in each round processes that come,
// are stopped and killed, and at its end let go of everything. Each round has a seed of its own,
// one more than that of the round before, so that the round that failed is played again alone. This
// process has one thread and no binder, as it forks.
//
// Usage: soak MINUTES SEED. Exit code: 0 nothing was found, 1 something was, 2 could not start.
#include <fcntl.h>
#include <host/process_board.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <map>

#include "bench/soak/soak.h"

namespace soak {

namespace {

constexpr int kTickMs = 20;
constexpr int kRogue = kClients;  // roles that are no client, behind them
constexpr int kKeys = kClients + 1;
constexpr int kDisturber = kClients + 2;
constexpr int kDriver = kClients + 3;
constexpr int kWitness = kClients + 4;

// Root may be all of them; whoever else runs the soak is one user.
uid_t userOf(int role) {
    constexpr uid_t kUsers[kClients + 1] = {0, 0, 1000, 1000, 2000, 10005, 10005, 101000, 3000};
    return geteuid() == 0 && role <= kRogue ? kUsers[role] : geteuid();
}

[[noreturn]] void giveUp(const char* what) {
    perror(what);
    _exit(2);
}

// ready: waits for its first output.
pid_t spawn(std::vector<std::string> command, bool ready) {
    std::vector<char*> argv;
    for (std::string& word : command) argv.push_back(word.data());
    argv.push_back(nullptr);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) giveUp("pipe");
    const pid_t pid = fork();
    if (pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (ready) dup2(ends[1], STDOUT_FILENO);
        execv(argv[0], argv.data());
        giveUp(argv[0]);
    }
    close(ends[1]);
    char byte;
    if (ready && read(ends[0], &byte, 1) != 1) giveUp(argv[0]);
    close(ends[0]);
    return pid;
}

class Soak {
  public:
    void start();
    void playRound(uint64_t seed, int64_t ms);
    void end() const;

  private:
    struct Client {
        int life = 0;
        int64_t stoppedUntil = 0;  // 0: it runs
        bool isKilled = false;
    };

    pid_t startRole(int role, int life, const std::function<int(Random)>& body);
    void startClient(int client);
    void startAll();
    void harass(Random& random);
    void resume(int client);
    // Adds to what excuses calls that take long.
    void excuse(int64_t ms);
    void tick();
    void reap(pid_t process, int status);
    bool await(const char* what, const std::function<bool()>& condition);
    void killAll();
    void settle();
    void checkLeds();
    void checkDaemon();
    bool isAlone() const { return mRoles.empty(); }

    const std::string mLog = tarq::host::processBoard().directory + "/log";  // of one round
    pid_t mBoard = -1, mDaemon = -1;
    std::map<pid_t, int> mRoles;
    Client mClients[kClients];
    uint64_t mSeed = 0;
    int64_t mLastTick = nowMs();
    int mKills = 0, mStops = 0;
    Starvation mStarvation[2];
    Holdings mBefore = {};
    size_t mHeapBefore = 0, mHeapAfterFirst = 0;
};

void Soak::start() {
    const tarq::host::Board& board = tarq::host::processBoard();
    mBoard = spawn({VIRTUAL_BOARD, "serve", "--shared", "--require-fuse", BOARD, board.directory},
                   true);
    setenv("TARQ_LOG", mLog.c_str(), 1);
    setenv("GLIBC_TUNABLES", "glibc.malloc.tcache_count=0", 1);  // what is free counts as free
    mDaemon = spawn({TARQD}, false);
    unsetenv("TARQ_LOG");
    startRole(kWitness, 0, [](const Random& /*random*/) { return runWitness(); });
    await("the daemon", [this] { return isAlone(); });
    if (!becomes([this] { return holdingsOf(mDaemon).threads > 0 && daemonHeap() > 0; }))
        giveUp("the daemon");
    pauseMs(500);
    mBefore = holdingsOf(mDaemon);
    mHeapBefore = daemonHeap();
}

pid_t Soak::startRole(int role, int life, const std::function<int(Random)>& body) {
    fflush(stdout);
    const pid_t pid = fork();
    if (pid == 0) {
        const uid_t user = userOf(role);
        if (user != geteuid() && (setgid(user) != 0 || setuid(user) != 0)) giveUp("setuid");
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        prctl(PR_SET_DUMPABLE, 1);  // it looks at its own /proc
        exit(body(Random(mSeed, role, life)));
    }
    mRoles[pid] = role;
    return pid;
}

void Soak::startClient(int client) {
    shared->waiting[client].call = nullptr;
    const int life = ++mClients[client].life;
    mClients[client].isKilled = false;
    startRole(client, life, [client](const Random& random) { return runClient(client, random); });
}

// The LED service has its callback before anybody uses it.
void Soak::startAll() {
    startClient(0);
    await("the first client", [] { return shared->ready == 1; });
    for (int i = 1; i < kClients; ++i) startClient(i);
    startRole(kRogue, 0, runRogue);
    startRole(kKeys, 0, runKeys);
    startRole(kDisturber, 0,
              [this](const Random& random) { return runDisturber(random, mDaemon, mBoard); });
}

// Kills one client or stops one, now and then.
void Soak::harass(Random& random) {
    const int client = random.number(0, kClients - 1);
    const bool kills = random.oneIn(2);
    const int ms = random.number(10, 500);
    if (!random.oneIn(8)) return;
    const auto entry = std::find_if(mRoles.begin(), mRoles.end(),
                                    [&](const auto& role) { return role.second == client; });
    if (entry == mRoles.end() || mClients[client].isKilled) return;
    if (kills && !isKept(client)) {
        mClients[client].isKilled = true;
        kill(entry->first, SIGKILL);
        ++mKills;
    } else if (!kills && mClients[client].stoppedUntil == 0) {
        mClients[client].stoppedUntil = nowMs() + ms;
        kill(entry->first, SIGSTOP);
        ++mStops;
    }
}

void Soak::resume(int client) {
    mClients[client].stoppedUntil = 0;
    for (const auto& [pid, role] : mRoles) {
        if (role == client) kill(pid, SIGCONT);
    }
}

void Soak::excuse(int64_t ms) {
    const int64_t passed = ms * 1000;
    const int64_t starved = mStarvation[0].waitedUs(mDaemon) + mStarvation[1].waitedUs(mBoard);
    const int64_t forAll = shared->disturbances > 0 ? passed : std::min(starved, passed);
    shared->excusedUs[kClients] += forAll;
    for (int i = 0; i < kClients; ++i) {
        if (mClients[i].stoppedUntil != 0) shared->excusedUs[i] += passed - forAll;
    }
}

void Soak::tick() {
    pauseMs(kTickMs);
    const int64_t now = nowMs();
    excuse(now - mLastTick);
    mLastTick = now;
    for (int i = 0; i < kClients; ++i) {
        const int64_t until = mClients[i].stoppedUntil;
        if (until != 0 && now >= until) resume(i);
    }
    int status = 0;
    for (pid_t process; (process = waitpid(-1, &status, WNOHANG)) > 0;) reap(process, status);
}

void Soak::reap(pid_t process, int status) {
    if (process == mDaemon || process == mBoard) {
        finding("driver", "%s ended, status %x", process == mDaemon ? "the daemon" : "the board",
                status);
        end();
        exit(1);
    }
    const int role = mRoles[process];
    mRoles.erase(process);
    if (role < kClients && mClients[role].isKilled) {
        mClients[role].stoppedUntil = 0;
        startClient(role);
    } else if (status != 0) {
        finding("driver", "role %d ended, status %x", role, status);
    }
}

// False, with a finding for each client that waits, when what nothing needs so long has passed.
bool Soak::await(const char* what, const std::function<bool()>& condition) {
    constexpr int64_t kPatienceMs = 40000;
    for (const int64_t begun = nowMs(); !condition(); tick()) {
        if (nowMs() - begun < kPatienceMs) continue;
        finding("driver", "%s: waited for in vain", what);
        for (int i = 0; i < kClients; ++i) {
            const char* const call = shared->waiting[i].call;
            if (call == nullptr) continue;
            finding("driver", "no answer: client %d waits for %s since %lld ms", i, call,
                    static_cast<long long>(nowMs() - shared->waiting[i].sinceMs));
        }
        killAll();
        return false;
    }
    return true;
}

void Soak::killAll() {
    for (const auto& [pid, role] : mRoles) kill(pid, SIGKILL);
    for (const auto& [pid, role] : mRoles) waitpid(pid, nullptr, 0);
    mRoles.clear();
}

void Soak::settle() {
    shared->phase = Phase::kSettle;
    for (int i = 0; i < kClients; ++i) resume(i);
    const bool isSettled = await(
            "quiet", [this] { return shared->idle == kClients && mRoles.size() == kClients; });
    shared->phase = Phase::kCount;
    const bool isCounted =
            isSettled && await("the keys", [] { return shared->idle == 2 * kClients; });
    if (isCounted) checkLeds();
    shared->phase = Phase::kLeave;
    await("the clients' end", [this] { return isAlone(); });
}

// What a killed client began may come, or not; what was done must.
void Soak::checkLeds() {
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

// Of the first round tables stay that have grown, and one callback. What stays of later ones is a
// leak, even if it is a few bytes of each client.
void Soak::checkDaemon() {
    constexpr size_t kFirst = size_t{64} * 1024;
    constexpr size_t kLater = size_t{4} * 1024;
    if (!becomes([this] { return holdingsOf(mDaemon) == mBefore; })) {
        const Holdings now = holdingsOf(mDaemon);
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
    mSeed = seed;
    const std::string hardware = shared->hardware;
    new (shared) Shared{};
    hardware.copy(shared->hardware, hardware.size());
    if (truncate(mLog.c_str(), 0) != 0) giveUp(mLog.c_str());
    shared->slotIsFree = seed % 4 == 3;
    mKills = mStops = 0;
    Random random(seed, kDriver, 0);
    startAll();
    for (const int64_t end = nowMs() + ms; nowMs() < end; tick()) harass(random);
    settle();
    startRole(kWitness, 0, [](const Random& /*random*/) { return runWitness(); });
    await("the witness", [this] { return isAlone(); });
    checkDaemon();
    const Holdings now = holdingsOf(mDaemon);
    printf("seed %llu: %lld calls, slowest %lld ms, %lld one-way, %d keys, %lld events, %d kills, "
           "%d stops, %lld rogue connections, %lld changes; daemon: %zu descriptors, %zu threads, "
           "%zu bytes, %zu at the start; %d findings\n",
           static_cast<unsigned long long>(seed), static_cast<long long>(shared->calls),
           static_cast<long long>(shared->slowestMs), static_cast<long long>(shared->oneWay),
           shared->keysTaken.load(), static_cast<long long>(shared->events), mKills, mStops,
           static_cast<long long>(shared->rogue), static_cast<long long>(shared->changes),
           now.descriptors, now.threads, daemonHeap(), mHeapBefore, shared->findings.load());
    fflush(stdout);
}

void Soak::end() const {
    kill(mDaemon, SIGTERM);
    waitpid(mDaemon, nullptr, 0);
    kill(mBoard, SIGTERM);  // it unmounts its hardware
    waitpid(mBoard, nullptr, 0);
}

}  // namespace

}  // namespace soak

int main(int argc, char** argv) {
    using namespace soak;
    if (argc != 3) return 2;
    constexpr int64_t kRoundMs = 10000;
    const auto ms = static_cast<int64_t>(atof(argv[1]) * 60000);
    uint64_t seed = strtoull(argv[2], nullptr, 10);
    std::string directory = "/tmp/soak.XXXXXX";
    if (mkdtemp(directory.data()) == nullptr || chmod(directory.c_str(), 0711) != 0)
        giveUp("mkdtemp");
    setenv("TARQ_BOARD", directory.c_str(), 1);
    void* const memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) giveUp("mmap");
    shared = new (memory) Shared{};
    Soak soak;
    soak.start();
    for (const int64_t end = nowMs() + ms; shared->findings == 0; ++seed) {
        soak.playRound(seed, std::min(ms, kRoundMs));
        if (nowMs() >= end) break;
    }
    soak.end();
    if (shared->findings > 0) {
        printf("soak: failed; the daemon's log: %s/log\n", directory.c_str());
        return 1;
    }
    return system(("rm -rf " + directory).c_str()) == 0 ? 0 : 1;
}
