// What is written is what tells: a file system may keep back room for others, or have none left for
// a new file. With plenty of room nothing is written, so that it costs nothing to ask often.
#include "host/run/disk.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/statvfs.h>
#include <unistd.h>

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

}  // namespace tarq::host
