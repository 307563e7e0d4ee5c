#include "host/run/standard_descriptors.h"

#include <fcntl.h>
#include <unistd.h>

namespace tarq::host {

void openStandardDescriptors() {
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
        if (fcntl(fd, F_GETFD) >= 0) continue;
        open("/dev/null", fd == STDOUT_FILENO ? O_RDONLY : O_RDWR);  // gets the lowest number, fd
    }
}

int aboveStandard(int fd) {
    if (fd < 0 || fd > STDERR_FILENO) return fd;
    const int moved = fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(fd);
    return moved;
}

}  // namespace tarq::host
