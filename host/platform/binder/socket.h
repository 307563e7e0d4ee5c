// The board's socket.
#pragma once

#include <sys/un.h>

namespace android::host {

// False if the board's path is too long for a socket address (91 characters).
bool boardSocketAddress(sockaddr_un* address);

// A connected descriptor, close-on-exec, or -errno.
int connectToBoard();

}  // namespace android::host
