#include "host/platform/binder/socket.h"

#include <errno.h>
#include <host/board_directory.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

namespace android::host {

// The path has to leave room for its terminator in the kernel's 108 bytes.
bool boardSocketAddress(sockaddr_un* address) {
    const std::string path = tarq::host::boardPath("run/binder.sock");
    *address = {};
    address->sun_family = AF_UNIX;
    if (path.size() >= sizeof(address->sun_path)) return false;
    memcpy(address->sun_path, path.c_str(), path.size());
    return true;
}

// The kernel notes who connects, at this moment: that is whom the daemon takes for the caller.
int connectToBoard() {
    sockaddr_un address;
    if (!boardSocketAddress(&address)) return -ENAMETOOLONG;
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (fd < 0) return -errno;
    if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0) return fd;
    const int error = errno;
    close(fd);
    return -error;
}

}  // namespace android::host
