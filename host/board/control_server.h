// The board's end of its control socket, see host/run/control.h.
#pragma once

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "host/run/board.h"

namespace tarq::board {

// Performs the commands one after the other, in a thread of its own, as long as it exists.
class ControlServer {
  public:
    // perform returns what there is to tell, and throws std::exception with the reason when it does
    // not do what it was told. Throws std::runtime_error when there can be no socket in the board's
    // directory.
    using Perform = std::function<std::string(const std::vector<std::string>& words)>;
    ControlServer(const host::Board& board, Perform perform);
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

}  // namespace tarq::board
