#include "host/run/socket.h"

#include <errno.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "host/run/board.h"

namespace tarq::host {

// A socket and its address, for one of the two calls that want both. A descriptor or -errno.
static int openSocket(const std::string& path, sockaddr_un* address) {
    *address = {};
    address->sun_family = AF_UNIX;
    if (path.size() >= sizeof(address->sun_path)) return -ENAMETOOLONG;
    memcpy(address->sun_path, path.c_str(), path.size());
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    return fd >= 0 ? fd : -errno;
}

static int closeFailed(int fd) {
    const int error = errno;
    close(fd);
    return -error;
}

int connectTo(const std::string& path) {
    sockaddr_un address;
    const int fd = openSocket(path, &address);
    if (fd < 0) return fd;
    const bool done = connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
    return done ? fd : closeFailed(fd);
}

int listenAt(const std::string& path, mode_t mode) {
    sockaddr_un address;
    const int fd = openSocket(path, &address);
    if (fd < 0) return fd;
    unlink(address.sun_path);
    // Nobody can connect before the mode is right, because nobody listens.
    const bool done = bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0 &&
                      chmod(address.sun_path, mode) == 0 && listen(fd, SOMAXCONN) == 0;
    return done ? fd : closeFailed(fd);
}

std::string socketError(int error) {
    if (error != ENAMETOOLONG) return strerror(error);
    return "the path of a board has at most " + std::to_string(kMaxBoardPath) + " characters";
}

}  // namespace tarq::host
