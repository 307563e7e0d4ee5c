// The sockets of a running board, all of them SOCK_SEQPACKET.
#pragma once

#include <filesystem>
#include <string>

namespace tarq::board {

// name: below the board's directory. Both return a descriptor. Throw std::runtime_error when the
// path is too long or there can be no socket.
int listenAt(const std::filesystem::path& board, const std::string& name);  // for the owner only
// -1 with errno when nobody listens.
int connectTo(const std::filesystem::path& board, const std::string& name);

}  // namespace tarq::board
