// The board's socket, on which the daemon listens.
#pragma once

#include <sys/un.h>

namespace android::host {

// False if the board's path is too long for a socket address (91 characters).
bool boardSocketAddress(sockaddr_un* address);

// A connected descriptor, close-on-exec, or -errno: -ENOENT and -ECONNREFUSED where no daemon runs.
// Waits while the daemon's queue of connections is full.
int connectToBoard();

}  // namespace android::host
