// The signals that tell a program of the board to end: SIGINT, SIGTERM and SIGHUP.
#pragma once

#include <signal.h>

#include <chrono>

namespace tarq::board {

// From its construction on they are taken here and nowhere else. To be made before other threads
// are started.
class Endings {
  public:
    Endings();
    void wait() const;
    // True as soon as one came, false after that time.
    bool comeWithin(std::chrono::milliseconds time) const;

  private:
    sigset_t mSignals;
};

}  // namespace tarq::board
