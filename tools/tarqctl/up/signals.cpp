// No process can react to its own SIGKILL, so a second one does. It is told by a pipe: each group
// writes its number there before it does anything else, and the pipe ends with the last process
// that has it open, which is `up`. A part that is stopped is made to run, so that it can end.
#include "tools/tarqctl/up/signals.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <initializer_list>
#include <vector>

namespace tarq::tools {

Signals::Signals() {
    signal(SIGCHLD, SIG_DFL);  // whoever ignores it hands that on, and nobody hears of an end then
    sigset_t taken;
    sigemptyset(&taken);
    sigaddset(&taken, SIGCHLD);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action = {};
        sigaction(signal, nullptr, &action);
        if (action.sa_handler != SIG_IGN) sigaddset(&taken, signal);  // not so below nohup
    }
    sigprocmask(SIG_BLOCK, &taken, &mBefore);
    mFd = signalfd(-1, &taken, SFD_CLOEXEC | SFD_NONBLOCK);
}

// They stay as they are: the program ends now, and one that comes late must not change its status.
Signals::~Signals() {
    close(mFd);
}

// A negative descriptor is one that poll passes over.
int Signals::wait(std::chrono::milliseconds time, int readable) const {
    pollfd events[] = {{mFd, POLLIN, 0}, {readable, POLLIN, 0}};
    poll(events, 2, static_cast<int>(time.count()));
    signalfd_siginfo info = {};
    if (read(mFd, &info, sizeof(info)) != sizeof(info)) return 0;
    const int signal = static_cast<int>(info.ssi_signo);
    return signal == SIGCHLD ? 0 : signal;
}

void Signals::restore() const {
    sigprocmask(SIG_SETMASK, &mBefore, nullptr);
}

static void signalAll(const std::vector<pid_t>& groups, int signal) {
    for (const pid_t group : groups) kill(-group, signal);
}

// A group exists as long as one of its processes does.
static bool isAnyLeft(const std::vector<pid_t>& groups) {
    return std::any_of(groups.begin(), groups.end(),
                       [](pid_t group) { return kill(-group, 0) == 0; });
}

// It looks at nothing but its pipe until that ends. Five seconds are what `up` itself leaves to
// each part.
[[noreturn]] static void guard(int pipe) {
    setsid();  // neither the terminal's signals nor those to the group of `up` are for it
    const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(null, fd);
    std::vector<pid_t> groups;
    pid_t group = 0;
    while (read(pipe, &group, sizeof(group)) == sizeof(group)) groups.push_back(group);
    signalAll(groups, SIGTERM);
    signalAll(groups, SIGCONT);
    for (int ms = 0; ms < 5000 && isAnyLeft(groups); ms += 10) usleep(10000);
    signalAll(groups, SIGKILL);
    _exit(0);
}

Guard::Guard() {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    mPid = fork();
    if (mPid == 0) {
        close(ends[1]);
        guard(ends[0]);
    }
    close(ends[0]);
    mPipe = ends[1];
}

Guard::~Guard() {
    if (mPid > 0) {
        kill(mPid, SIGKILL);
        waitpid(mPid, nullptr, 0);
    }
    close(mPipe);
}

void Guard::watchOwnGroup() const {
    const pid_t group = getpid();
    if (write(mPipe, &group, sizeof(group)) != sizeof(group)) _exit(126);
}

}  // namespace tarq::tools
