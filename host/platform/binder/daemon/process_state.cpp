// The daemon's role in the binder: it owns the board's socket and serves. A board has one daemon,
// which holds a lock of it for its life. What makes serving impossible ends the process at the
// start, with a line that says what to do.
#include <android/log.h>
#include <binder/IPCThreadState.h>
#include <binder/ProcessState.h>
#include <errno.h>
#include <fcntl.h>
#include <host/process_board.h>
#include <string.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "host/platform/binder/daemon/handlers.h"
#include "host/platform/binder/daemon/one_way.h"
#include "host/platform/binder/daemon/registry.h"
#include "host/platform/binder/daemon/shares.h"
#include "host/platform/binder/notices.h"
#include "host/run/descriptors.h"

namespace android {

using tarq::host::Board;

// Nothing that was started needs to be ended in order, hence _exit.
[[noreturn]] static void fail(const char* what, const char* why) {
    __android_log_print(ANDROID_LOG_FATAL, "binder", "%s: %s", what, why);
    _exit(1);
}

// A board is opened to other users by making run/ accessible to them.
static bool isShared(const Board& board) {
    struct stat run;
    return stat(board.run().c_str(), &run) == 0 && (run.st_mode & S_IXOTH) != 0;
}

// Held until the process ends, however that happens. Close-on-exec: what the daemon starts does not
// hold it on.
static void takeBoard(const Board& board) {
    const int fd = tarq::host::aboveStandard(
            open(board.daemonLock().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    if (fd < 0) fail(board.daemonLock().c_str(), strerror(errno));
    if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
        fail(board.directory.c_str(), "another daemon serves this board");
    }
}

// The socket of a daemon that was killed is in the way; that of a living one must stay.
static int listenOnBoard() {
    const Board& board = tarq::host::processBoard();
    if (board.isNone()) {
        fail("no board", "TARQ_BOARD is not set; scripts/run starts a board and the daemon");
    }
    const char* directory = board.directory.c_str();
    takeBoard(board);
    const bool shared = isShared(board);
    const int fd = tarq::host::listenAt(board.binderSocket(), shared ? 0666 : 0600);
    if (fd < 0) fail(directory, tarq::host::socketError(-fd).c_str());
    fcntl(fd, F_SETFL, O_NONBLOCK);
    if (shared && geteuid() == 0) {
        __android_log_print(ANDROID_LOG_WARN, "binder",
                            "shared board, daemon runs as root: local users with uid 0 or 1000 may "
                            "run commands as root through the shell service");
    }
    return fd;
}

// Each thread of a client that calls holds a descriptor here, and the usual limit is low.
static void raiseDescriptorLimit() {
    rlimit limit;
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, host::kMaxDescriptors);
    setrlimit(RLIMIT_NOFILE, &limit);
}

// Look-ups are answered from here on, calls only when the pool has started.
sp<ProcessState> ProcessState::self() {
    static const sp<ProcessState>& state = *new sp<ProcessState>([] {
        raiseDescriptorLimit();
        const int listener = listenOnBoard();
        if (!host::startNotices() || !host::startOneWayCalls()) fail("threads", strerror(EAGAIN));
        host::Registry::start(listener);
        return new ProcessState;
    }());
    return state;
}

void ProcessState::startThreadPool() {
    host::addHandlers(host::kPoolHandlers);
}

// The calls run on their connections' threads: what a thread that joins adds is its share.
void IPCThreadState::joinThreadPool(bool /*isMain*/) {
    host::addHandlers(1);
    for (;;) pause();
}

}  // namespace android
