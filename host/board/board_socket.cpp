#include "host/board/board_socket.h"

#include <errno.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <stdexcept>
#include <system_error>

namespace tarq::board {

namespace fs = std::filesystem;

static std::system_error failed(const fs::path& path) {
    return {errno, std::system_category(), path};
}

static sockaddr_un addressOf(const fs::path& board, const std::string& name) {
    const std::string path = board / name;
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) {
        throw std::runtime_error(board.string() +
                                 ": the path of a board has at most 91 characters");
    }
    memcpy(address.sun_path, path.c_str(), path.size());
    return address;
}

static int openSocket() {
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (fd < 0) throw failed("socket");
    return fd;
}

int listenAt(const fs::path& board, const std::string& name) {
    const sockaddr_un address = addressOf(board, name);
    const int fd = openSocket();
    // Nobody can connect before the mode is right, because nobody listens.
    if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
        chmod(address.sun_path, 0600) != 0 || listen(fd, SOMAXCONN) != 0) {
        const std::system_error error = failed(address.sun_path);
        close(fd);
        throw error;
    }
    return fd;
}

int connectTo(const fs::path& board, const std::string& name) {
    const sockaddr_un address = addressOf(board, name);
    const int fd = openSocket();
    if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) return fd;
    const int error = errno;
    close(fd);
    errno = error;
    return -1;
}

}  // namespace tarq::board
