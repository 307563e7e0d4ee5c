// A log that waits would hold up what is logged about: a daemon whose terminal was stopped, or
// whose pipe nobody reads, serves on. So a descriptor of this process's own is made not to block,
// and the others that share standard error keep theirs as it is.
#include "host/platform/log/destination.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "host/run/descriptors.h"

namespace tarq::host {

LogDestination& LogDestination::self() {
    static LogDestination& instance = *new LogDestination;
    return instance;
}

// NO_COLOR as at no-color.org: set to anything but nothing it means none.
static bool refusesColour() {
    const char* const noColor = getenv("NO_COLOR");
    return noColor != nullptr && *noColor != '\0';
}

// O_NONBLOCK belongs to what is opened, not to the descriptor: set on standard error itself it
// would be everybody's who has it. What cannot be opened anew, such as a socket, is asked for room.
LogDestination::LogDestination() : mFd(STDERR_FILENO), mColoured(false) {
    constexpr int kFlags = O_WRONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    const char* const path = getenv("TARQ_LOG");
    if (path != nullptr && *path != '\0') {
        mFd = aboveStandard(open(path, kFlags | O_CREAT | O_APPEND, 0644));
        if (mFd >= 0) return;
        dprintf(STDERR_FILENO, "log: cannot append to %s (%s), logging here\n", path,
                strerror(errno));
        mFd = STDERR_FILENO;
    }
    mColoured = !refusesColour() && isatty(STDERR_FILENO) == 1;
    struct stat status = {};
    if (fstat(STDERR_FILENO, &status) != 0 || S_ISREG(status.st_mode)) return;
    const int own = aboveStandard(open("/proc/self/fd/2", kFlags));
    mMayWait = own < 0;
    if (own >= 0) mFd = own;
}

// One write, so that lines of several threads and processes never mix. On a full disk it may take
// a part of them: what comes next then begins a line of its own.
int LogDestination::putUncounted(const std::string& lines) {
    pollfd room = {mFd, POLLOUT, 0};
    if (mMayWait && poll(&room, 1, 0) == 0) return -EAGAIN;
    const bool wasTorn = mIsTorn.exchange(false);
    const std::string text = (wasTorn ? "\n" : "") + lines;
    const ssize_t written = write(mFd, text.data(), text.size());
    if (written == static_cast<ssize_t>(text.size())) return 0;
    const int error = written < 0 ? errno : ENOSPC;
    if (written > 0 || wasTorn) mIsTorn = true;
    return -error;
}

// Lines of other threads wait for the lock here, so that none gets in front of the notice.
int LogDestination::tellLost(const Notice& notice) {
    const std::lock_guard<std::mutex> guard(mTelling);
    const unsigned count = mLost;
    const int result = count > 0 ? putUncounted(notice(count)) : 0;
    if (result == 0) mLost -= count;
    return result;
}

int LogDestination::put(const std::string& lines, const Notice& notice) {
    int result = mLost > 0 ? tellLost(notice) : 0;
    if (result == 0) result = putUncounted(lines);
    if (result != 0) mLost += static_cast<unsigned>(std::count(lines.begin(), lines.end(), '\n'));
    return result;
}

}  // namespace tarq::host
