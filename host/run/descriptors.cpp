// A socket of a board is made, or connected to, by its path. Each step may fail, and what has been
// opened is closed then, so that a caller has a good descriptor or none. None of them may have one
// of the first three numbers: whatever the program prints would go there.
#include "host/run/descriptors.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "host/run/board.h"

namespace tarq::host {

// join: connect or bind.
static int openSocket(const std::string& path, int type,
                      int (*join)(int, const sockaddr*, socklen_t)) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) return -ENAMETOOLONG;
    memcpy(address.sun_path, path.c_str(), path.size());
    const int fd = aboveStandard(socket(AF_UNIX, type | SOCK_CLOEXEC, 0));
    if (fd < 0) return -errno;
    if (join(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0) return fd;
    const int error = errno;
    close(fd);
    return -error;
}

int connectTo(const std::string& path, int type) {
    return openSocket(path, type, connect);
}

int bindTo(const std::string& path, int type) {
    return openSocket(path, type, bind);
}

int listenAt(const std::string& path, mode_t mode) {
    unlink(path.c_str());
    const int fd = bindTo(path, SOCK_SEQPACKET);
    if (fd < 0) return fd;
    // Nobody can connect before the mode is right, because nobody listens.
    if (chmod(path.c_str(), mode) == 0 && listen(fd, SOMAXCONN) == 0) return fd;
    const int error = errno;
    close(fd);
    return -error;
}

std::string socketError(int error) {
    if (error != ENAMETOOLONG) return strerror(error);
    return "the path of a board has at most " + std::to_string(kMaxBoardPath) + " characters";
}

void openStandardDescriptors() {
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
        if (fcntl(fd, F_GETFD) >= 0) continue;
        const int flags = fd == STDIN_FILENO ? O_WRONLY : fd == STDOUT_FILENO ? O_RDONLY : O_RDWR;
        open("/dev/null", flags);  // gets the lowest number, which is fd
    }
}

int aboveStandard(int fd) {
    if (fd < 0 || fd > STDERR_FILENO) return fd;
    const int moved = fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(fd);
    return moved;
}

}  // namespace tarq::host
