// How a command reaches a running board: the socket run/board.sock, which only its owner may use.
// A connection is one command: a packet with its words, each ended by a zero byte, and one with the
// answer, "+", or "-" and the reason.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace tarq::board {

// Performs the commands one after the other, in a thread of its own, as long as it exists.
class ControlServer {
  public:
    // perform throws std::exception with the reason when it does not do what it was told. Throws
    // std::exception when there can be no socket in the board's directory.
    using Perform = std::function<void(const std::vector<std::string>& words)>;
    ControlServer(const std::filesystem::path& board, Perform perform);
    ~ControlServer();
    ControlServer(const ControlServer&) = delete;
    ControlServer& operator=(const ControlServer&) = delete;

  private:
    void serve() const;
    void answer(int connection) const;

    const Perform mPerform;
    const int mListener;
    std::thread mThread;
};

// Has a board do it. True, or false and the reason why it refused. Throws std::exception when it
// could not be asked.
bool ask(const std::filesystem::path& board, const std::vector<std::string>& words,
         std::string* reason);

}  // namespace tarq::board
