// The sockets of a running board, all of them local ones at a path. They get no descriptor below 3,
// so that nothing which a program prints can end up in them.
#pragma once

#include <sys/socket.h>
#include <sys/types.h>

#include <string>

namespace tarq::host {

// All return a descriptor, close-on-exec, or -errno: -ENAMETOOLONG for a path that no socket
// address holds, see kMaxBoardPath; -ECONNREFUSED when no process has that socket open.
int connectTo(const std::string& path, int type = SOCK_SEQPACKET);
// Fails with -EADDRINUSE where a socket is already, also one that nobody has open.
int bindTo(const std::string& path, int type);
// Waits for connections (SOCK_SEQPACKET), in the place of a socket that is there already. mode: who
// may connect, such as 0600.
int listenAt(const std::string& path, mode_t mode);

// The errno of one of them in words: that a path is too long is told by what it may be at most.
std::string socketError(int error);

}  // namespace tarq::host
