// The sockets of a running board.
#pragma once

#include <sys/socket.h>
#include <sys/types.h>

#include <string>

namespace tarq::host {

// All return a descriptor, close-on-exec, or -errno: -ENAMETOOLONG for a path that no socket
// address holds, see kMaxBoardPath; -ECONNREFUSED when no process has that socket open.
int connectTo(const std::string& path, int type = SOCK_SEQPACKET);
int bindTo(const std::string& path, int type);
// Waits for connections (SOCK_SEQPACKET), in the place of a socket that is there already. mode: who
// may connect, such as 0600.
int listenAt(const std::string& path, mode_t mode);

// The errno of one of them in words.
std::string socketError(int error);

}  // namespace tarq::host
