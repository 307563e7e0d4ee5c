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

#include "tools/tarqctl/session.h"

namespace tarq::tools {

// A shell has the same.
static constexpr int kNotExecutable = 126;
static constexpr int kNotFound = 127;

Child::Child(Program program, const Signals& signals, const Guard& guard)
    : mProgram(std::move(program)) {
    const pid_t parent = getpid();
    mPid = fork();
    if (mPid == 0) become(signals, guard, parent);
    if (mPid < 0) {
        throw Failure{"no_process", mProgram.name, strerror(errno), "ulimit -u"};
    }
}

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
    dprintf(STDERR_FILENO, "tarqctl: up: %s: %s\n", words[0], strerror(error));
    _exit(error == ENOENT ? kNotFound : kNotExecutable);
}

bool Child::hasEnded() {
    if (!mEnded) mEnded = waitpid(mPid, &mStatus, WNOHANG) == mPid;
    return mEnded;
}

int Child::status() const {
    return WIFSIGNALED(mStatus) ? 128 + WTERMSIG(mStatus) : WEXITSTATUS(mStatus);
}

std::string Child::howItEnded() const {
    if (!WIFSIGNALED(mStatus)) return "ended with status " + std::to_string(WEXITSTATUS(mStatus));
    const int signal = WTERMSIG(mStatus);
    return "ended: signal " + std::to_string(signal) + " (" + strsignal(signal) + ")";
}

// The state is the word behind the name, which is in parentheses and may hold any.
bool Child::isStopped() const {
    std::ifstream in("/proc/" + std::to_string(mPid) + "/stat");
    std::string line;
    std::getline(in, line);
    const size_t name = line.rfind(')');
    const char state = name != std::string::npos && name + 2 < line.size() ? line[name + 2] : ' ';
    return !mEnded && (state == 'T' || state == 't');
}

void Child::signal(int signal) {
    if (mProgram.isPart) {
        kill(-mPid, signal);
    } else if (!hasEnded()) {
        kill(mPid, signal);
    }
}

// A process that has ended counts as one of its group until somebody has asked for its status.
bool Child::isGone() {
    if (!hasEnded()) return false;
    if (!mProgram.isPart) return true;
    while (waitpid(-mPid, nullptr, WNOHANG) > 0) continue;
    return kill(-mPid, 0) != 0;
}

}  // namespace tarq::tools
