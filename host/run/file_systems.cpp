// What is written is what tells whether there is room: a file system may keep back room for others,
// or have none left for a new file. With plenty of room nothing is written, so that it costs
// nothing to ask often. A mount whose process was killed is told by what stat says of it.
#include "host/run/file_systems.h"

#include <errno.h>
#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <system_error>

namespace tarq::host {

int writeError(const Board& board) {
    constexpr unsigned long kPlenty = 1 << 20;  // bytes
    struct statvfs room = {};
    if (statvfs(board.run().c_str(), &room) != 0) return errno;
    if (room.f_bavail * room.f_frsize >= kPlenty && room.f_favail > 0) return 0;
    std::string probe = board.run() + "/.XXXXXX";
    const int fd = mkostemp(probe.data(), O_CLOEXEC);
    if (fd < 0) return errno;
    const std::string page(4096, '\0');
    const ssize_t size = write(fd, page.data(), page.size());
    const int error = size < 0 ? errno : size < static_cast<ssize_t>(page.size()) ? ENOSPC : 0;
    close(fd);
    unlink(probe.c_str());
    return error;
}

void requireRoom(const Board& board) {
    const int error = writeError(board);
    if (error == 0 || error == ENOENT) return;
    throw std::system_error(error, std::system_category(), board.directory);
}

std::string cannotBeWritten(const Board& board, int error) {
    const std::string why = board.directory + " cannot be written: " + strerror(error);
    const bool isFull = error == ENOSPC || error == EDQUOT;
    return why + (isFull ? "; make room, or name another directory in TMPDIR" : "");
}

// A FUSE mount whose process is gone answers nothing but these two errors. One that still answers,
// such as another board's, is on another device than the directory around it.
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
