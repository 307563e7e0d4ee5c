// The sockets of a running board, all of them SOCK_SEQPACKET: connection and packet in one.
#pragma once

#include <sys/types.h>

#include <string>

namespace tarq::host {

// Both return a descriptor, close-on-exec, or -errno: -ENAMETOOLONG for a path that no socket
// address holds, see kMaxBoardPath.
int connectTo(const std::string& path);
// In the place of a socket that is there already. mode: who may connect, such as 0600.
int listenAt(const std::string& path, mode_t mode);

// The errno of one of both in words.
std::string socketError(int error);

}  // namespace tarq::host
