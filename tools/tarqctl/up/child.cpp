// A child is another program from its first instruction that matters: it has the signals, the
// descriptors and the environment that it is to have, and ends with `up`, also when that is killed
// before the child could ask for it.
#include "tools/tarqctl/up/child.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <thread>

#include "tools/tarqctl/ask/why_silent.h"
#include "tools/tarqctl/session.h"

namespace tarq::tools {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// A shell has the same.
static constexpr int kNotExecutable = 126;
static constexpr int kNotFound = 127;

// Between fork and exec only this thread exists, which is why `up` has no other one.
Child::Child(Program program, const Signals& signals, const Guard& guard)
    : mProgram(std::move(program)) {
    const pid_t parent = getpid();
    mPid = fork();
    if (mPid == 0) become(signals, guard, parent);
    if (mPid < 0) {
        throw Failure{"no_process", mProgram.name, strerror(errno), "ulimit -u"};
    }
}

// The guard is told first, so that there is no moment at which a part could outlive a killed `up`.
void Child::become(const Signals& signals, const Guard& guard, pid_t parent) const {
    if (mProgram.isPart) {
        setsid();
        guard.watchOwnGroup();
    } else {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent) _exit(kNotExecutable);
    }
    for (const auto& [name, value] : mProgram.environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    dup2(mProgram.in >= 0 ? mProgram.in : open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    dup2(mProgram.out >= 0 ? mProgram.out : STDERR_FILENO, STDOUT_FILENO);
    std::vector<char*> words;
    for (const std::string& word : mProgram.words) words.push_back(strdup(word.c_str()));
    words.push_back(nullptr);
    signals.restore();
    execvp(words[0], words.data());
    const int error = errno;
    dprintf(STDERR_FILENO, "tarqctl: up: %s: %s\nhint: tarqctl up --help\n", words[0],
            strerror(error));
    _exit(error == ENOENT ? kNotFound : kNotExecutable);
}

// It is only looked at: until it is gone its number is nobody else's, and may be sent to.
bool Child::hasEnded() {
    siginfo_t end = {};
    if (!mEnded && waitid(P_PID, static_cast<id_t>(mPid), &end, WEXITED | WNOHANG | WNOWAIT) == 0 &&
        end.si_pid == mPid) {
        mEnded = true;
        (end.si_code == CLD_EXITED ? mExitCode : mSignal) = end.si_status;
    }
    return mEnded;
}

// A program that a signal has ended has no exit code of its own.
int Child::status() const {
    return mSignal != 0 ? 128 + mSignal : mExitCode;
}

std::string Child::howItEnded() const {
    if (mSignal == 0) return "ended with status " + std::to_string(mExitCode);
    return "ended: signal " + std::to_string(mSignal) + " (" + strsignal(mSignal) + ")";
}

bool Child::isStopped() const {
    const char state = stateOf(mPid);
    return !mEnded && (state == 'T' || state == 't');
}

void Child::signal(int signal) {
    if (!mIsGone) kill(mProgram.isPart ? -mPid : mPid, signal);
}

// A process that has ended counts as one of its group until somebody has asked for its status.
bool Child::isGone() {
    if (mIsGone || !hasEnded()) return mIsGone;
    while (waitpid(mProgram.isPart ? -mPid : mPid, nullptr, WNOHANG) > 0) continue;
    mIsGone = !mProgram.isPart || kill(-mPid, 0) != 0;
    return mIsGone;
}

// ---- the end of all ----

// Nothing that was started may stay, whatever state it is in. What is stopped, by a signal or a
// debugger, does not hear that it is to end: it has as long as all others, since somebody may look
// at it, and is killed then. The user is never kept: who asks once more has it at once.

using Children = std::vector<std::unique_ptr<Child>>;

static void killNow(Child& child) {
    child.signal(SIGKILL);
    child.signal(SIGCONT);
}

// False when the time was over, or the user asks for a quick end, which counts from the moment at
// which all began to end. After two seconds tell says what is waited for.
static bool waitFor(Child& child, const Signals& signals, steady_clock::time_point ending,
                    bool* isUrgent, std::function<void()> tell) {
    const auto begin = steady_clock::now();
    while (!child.isGone()) {
        const auto elapsed = steady_clock::now() - begin;
        if (*isUrgent || elapsed > kPatience) return false;
        if (tell && elapsed > std::chrono::seconds(2)) std::exchange(tell, nullptr)();
        const int signal = signals.wait(milliseconds(10));
        const bool isAgain = steady_clock::now() - ending > kOneWish;
        if ((signal == SIGINT || signal == SIGTERM) && isAgain) *isUrgent = true;
    }
    return true;
}

static std::string whyKilled(Child& child) {
    const std::string time = "within " + std::to_string(kPatience.count()) + " s";
    if (child.hasEnded()) return "what " + child.name() + " has started did not end " + time;
    return child.name() + (child.isStopped() ? " is stopped and" : "") + " did not end " + time;
}

bool endAll(const Children& children, const Signals& signals, bool isUrgent,
            const std::function<void(const std::string&)>& say) {
    const auto ending = steady_clock::now();
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
        (*child)->signal(SIGTERM);
        const auto tell = [&] {
            say("waiting for " + (*child)->name() + " to end; Ctrl-C ends all at once");
        };
        if (waitFor(**child, signals, ending, &isUrgent, tell)) continue;
        if (isUrgent) {
            for (const auto& each : children) killNow(*each);
        } else {
            say(whyKilled(**child) + ", and is killed");
            killNow(**child);
        }
        bool isKilled = false;  // nothing to be waited for but the kernel
        waitFor(**child, signals, ending, &isKilled, nullptr);
    }
    return isUrgent;
}

// Each one that ends may leave others, which come next.
void killOrphans(pid_t except) {
    const auto end = steady_clock::now() + kPatience;
    for (bool isAny = true; isAny && steady_clock::now() < end;) {
        isAny = false;
        std::ifstream children("/proc/thread-self/children");
        for (pid_t child = 0; children >> child;) {
            if (child == except) continue;
            isAny = true;
            kill(child, SIGKILL);
            waitpid(child, nullptr, WNOHANG);
        }
        if (isAny) std::this_thread::sleep_for(milliseconds(1));
    }
}

}  // namespace tarq::tools
