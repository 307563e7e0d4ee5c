#include "tools/tarqctl/up/signals.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <initializer_list>

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

}  // namespace tarq::tools
