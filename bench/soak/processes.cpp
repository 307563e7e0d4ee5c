// Processes are forked from a process without threads and without a binder. Time is cut into ticks:
// at each of them it is looked who has ended, who goes on, and what has excused calls since the
// last one.
#include "bench/soak/processes.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

namespace soak {

static constexpr int kTickMs = 20;

// Root may be all of them; whoever else runs the soak is one user.
static uid_t userOf(int role) {
    constexpr uid_t kUsers[kClients + 1] = {0, 0, 1000, 1000, 2000, 10005, 10005, 101000, 3000};
    return geteuid() == 0 && role <= kRogue ? kUsers[role] : geteuid();
}

void giveUp(const char* what) {
    perror(what);
    _exit(2);
}

// A process of its own group: when the shell that started the soak ends, its group is hung up if
// one of it is stopped just then.
static pid_t forkAlone() {
    const pid_t pid = fork();
    if (pid < 0) giveUp("fork");
    if (pid == 0) setpgid(0, 0);
    return pid;
}

// saysReady: its first output is waited for.
static pid_t spawn(std::vector<std::string> command, bool saysReady) {
    std::vector<char*> argv;
    for (std::string& word : command) argv.push_back(word.data());
    argv.push_back(nullptr);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) giveUp("pipe");
    const pid_t pid = forkAlone();
    if (pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (saysReady) dup2(ends[1], STDOUT_FILENO);
        execv(argv[0], argv.data());
        giveUp(argv[0]);
    }
    close(ends[1]);
    char byte;
    errno = ESRCH;
    if (saysReady && read(ends[0], &byte, 1) != 1) giveUp(argv[0]);
    close(ends[0]);
    return pid;
}

Processes::Processes(const std::string& directory, const std::string& log)
    : board(spawn({VIRTUAL_BOARD, "serve", "--shared", "--require-fuse", BOARD, directory}, true)) {
    setenv("TARQ_LOG", log.c_str(), 1);
    setenv("GLIBC_TUNABLES", "glibc.malloc.tcache_count=0", 1);  // what is free counts as free
    daemon = spawn({TARQD}, false);
    unsetenv("TARQ_LOG");
}

Processes::~Processes() {
    end();
}

// The disturber may have stopped one of the two.
void Processes::end() {
    killAll();
    for (const pid_t process : {daemon, board}) {  // the board unmounts its hardware
        kill(process, SIGCONT);
        kill(process, SIGTERM);
        waitpid(process, nullptr, 0);
    }
}

void Processes::startRole(int role, int life, const std::function<int(Random)>& body) {
    fflush(stdout);
    const pid_t pid = forkAlone();
    if (pid == 0) {
        const uid_t user = userOf(role);
        if (user != geteuid() && (setgid(user) != 0 || setuid(user) != 0)) giveUp("setuid");
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        prctl(PR_SET_DUMPABLE, 1);  // it looks at its own /proc
        // Not exit(): it destroys the descriptors of the interfaces, which events still need.
        _exit(body(Random(mSeed, role, life)));
    }
    mRoles[pid] = role;
}

void Processes::startClient(int client) {
    shared->waiting[client].call = nullptr;
    const int life = ++mClients[client].life;
    mClients[client].isKilled = false;
    startRole(client, life, [client](const Random& random) { return runClient(client, random); });
}

// The LED service has its callback before anybody uses it.
void Processes::startRoles(uint64_t seed) {
    mSeed = seed;
    kills = stops = 0;
    std::fill(std::begin(mClients), std::end(mClients), Client{});
    startClient(0);
    await("the first client", [] { return shared->ready == 1; });
    for (int i = 1; i < kClients; ++i) startClient(i);
    startRole(kRogue, 0, runRogue);
    startRole(kKeys, 0, runKeys);
    startRole(kDisturber, 0,
              [this](const Random& random) { return runDisturber(random, daemon, board); });
}

// Kills one client or stops one, now and then.
void Processes::harass(Random& random) {
    tick();
    const int client = random.number(0, kClients - 1);
    const bool isDeadly = random.oneIn(2);
    const int ms = random.number(10, 500);
    if (!random.oneIn(8)) return;
    const auto entry = std::find_if(mRoles.begin(), mRoles.end(),
                                    [&](const auto& role) { return role.second == client; });
    if (entry == mRoles.end() || mClients[client].isKilled) return;
    if (isDeadly && !isKept(client)) {
        mClients[client].isKilled = true;
        kill(entry->first, SIGKILL);
        ++kills;
    } else if (!isDeadly && mClients[client].stoppedUntil == 0) {
        mClients[client].stoppedUntil = nowMs() + ms;
        kill(entry->first, SIGSTOP);
        ++stops;
    }
}

void Processes::resume(int client) {
    mClients[client].stoppedUntil = 0;
    for (const auto& [pid, role] : mRoles) {
        if (role == client) kill(pid, SIGCONT);
    }
}

void Processes::excuse(int64_t ms) {
    const int64_t passed = ms * 1000;
    const int64_t starved = mStarvation[0].waitedUs(daemon) + mStarvation[1].waitedUs(board);
    const int64_t forAll = shared->disturbances > 0 ? passed : std::min(starved, passed);
    shared->excusedUs[kClients] += forAll;
    for (int i = 0; i < kClients; ++i) {
        if (mClients[i].stoppedUntil != 0) shared->excusedUs[i] += passed - forAll;
    }
}

void Processes::tick() {
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

void Processes::reap(pid_t process, int status) {
    if (process == daemon || process == board) {
        finding("driver", "%s ended, status %x, as waitpid tells it",
                process == daemon ? "the daemon" : "the board", status);
        end();
        exit(1);
    }
    const int role = mRoles[process];
    mRoles.erase(process);
    if (role < kClients && mClients[role].isKilled) {
        mClients[role].stoppedUntil = 0;
        startClient(role);
    } else if (status != 0) {
        finding("driver", "role %d ended, status %x, as waitpid tells it", role, status);
    }
}

// False, with a finding for each client that waits, when what nothing needs so long has passed.
bool Processes::await(const char* what, const std::function<bool()>& condition) {
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

void Processes::killAll() {
    for (const auto& [pid, role] : mRoles) kill(pid, SIGKILL);
    for (const auto& [pid, role] : mRoles) waitpid(pid, nullptr, 0);
    mRoles.clear();
}

}  // namespace soak
