// No process can react to its own SIGKILL, so a second one does. It is told by a pipe: each group
// writes its number there before it does anything else, and the pipe ends with the last process
// that has it open, which is `up`. A part that is stopped is made to run, so that it can end.
#include "tools/tarqctl/up/guard.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

namespace tarq::tools {

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
