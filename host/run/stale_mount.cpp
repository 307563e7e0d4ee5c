#include "host/run/stale_mount.h"

#include <errno.h>
#include <spawn.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

namespace tarq::host {

static bool isMountPoint(const std::filesystem::path& path) {
    struct stat own;
    struct stat parent;
    if (stat(path.c_str(), &own) != 0) return errno == ENOTCONN || errno == ECONNABORTED;
    return stat(path.parent_path().c_str(), &parent) == 0 && own.st_dev != parent.st_dev;
}

void clearStaleMount(const std::filesystem::path& mountPoint) {
    if (!isMountPoint(mountPoint) || umount2(mountPoint.c_str(), MNT_DETACH) == 0) return;
    // Only this program may take away an ordinary user's mount.
    std::string path = mountPoint;
    char program[] = "fusermount3";
    char options[] = "-uzq";
    char* words[] = {program, options, path.data(), nullptr};
    pid_t child = 0;
    if (posix_spawnp(&child, program, nullptr, nullptr, words, environ) == 0) {
        waitpid(child, nullptr, 0);
    }
}

}  // namespace tarq::host
