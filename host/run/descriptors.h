// The sockets of a running board, all of them local ones at a path, and the first three descriptors
// of a program, of which no socket may get the number.
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

// Opens /dev/null in the place of each that is closed, so that no file or socket gets its number
// and receives what is printed. Reading such a standard input and writing to such a standard output
// still fails: nothing is no list of nothing, and what could not be printed was not done. To be
// called first of all. It is for a program that was started with some of them closed.
void openStandardDescriptors();

// For a program that has not called it: the same descriptor with a number above them. The one
// given is closed then; a negative one is returned as it is. Close-on-exec.
int aboveStandard(int fd);

}  // namespace tarq::host
