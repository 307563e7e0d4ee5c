// A local user may connect as often as it likes, and a daemon has so many descriptors: without
// shares one user could keep all others out. Counted is by the user and not by the process, of
// which a user can have any number.
#include "host/platform/binder/daemon/shares.h"

#include <android/log.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <mutex>

namespace android::host {

static constexpr rlim_t kReserve = 64;  // of the descriptors; of few a quarter

static std::mutex gLock;
static std::map<uid_t, rlim_t>& gByUser = *new std::map<uid_t, rlim_t>;  // used while exiting too
static rlim_t gAll = 0;

bool takeShare(uid_t user) {
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlim_t reserve = std::min(kReserve, limit.rlim_cur / 4);
    const bool mayUseReserve = user == 0 || user == geteuid();
    const std::lock_guard<std::mutex> guard(gLock);
    if (gByUser[user] >= limit.rlim_cur / 2) return false;
    if (!mayUseReserve && gAll + reserve >= limit.rlim_cur) return false;
    ++gByUser[user];
    ++gAll;
    return true;
}

void giveShareBack(uid_t user) {
    const std::lock_guard<std::mutex> guard(gLock);
    const auto entry = gByUser.find(user);
    if (--entry->second == 0) gByUser.erase(entry);
    --gAll;
}

void complain(const ucred& peer, const char* what) {
    using std::chrono::steady_clock;
    static constexpr int kMostASecond = 10;
    static steady_clock::time_point began;
    static int told = 0;
    static int leftOut = 0;
    const std::lock_guard<std::mutex> guard(gLock);
    const auto now = steady_clock::now();
    if (now - began >= std::chrono::seconds(1)) {
        if (leftOut > 0) {
            __android_log_print(ANDROID_LOG_WARN, "binder", "%d more connections closed", leftOut);
        }
        began = now;
        told = leftOut = 0;
    }
    if (++told > kMostASecond) {
        ++leftOut;
        return;
    }
    __android_log_print(ANDROID_LOG_WARN, "binder", "pid %d, uid %u: %s; connection closed",
                        peer.pid, peer.uid, what);
}

}  // namespace android::host
