// The signals of `up`, taken one at a time and at one place. They are blocked and read from a
// descriptor, so that nothing is ever interrupted in the middle.
#pragma once

#include <signal.h>

#include <chrono>

namespace tarq::tools {

// From its construction to the program's end SIGINT, SIGTERM and SIGHUP, unless the program was
// started with them ignored, and SIGCHLD do nothing but end a wait. One a process, which has no
// other thread.
class Signals {
  public:
    Signals();
    ~Signals();
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

    // Waits for a signal, a child that changes its state, something to read from the descriptor, or
    // the time. The signal, or 0 for all else. One signal a call: another one that has come as well
    // ends the next wait at once.
    int wait(std::chrono::milliseconds time, int readable = -1) const;

    // In a child, before it becomes another program.
    void restore() const;

  private:
    sigset_t mBefore = {};
    int mFd = -1;
};

}  // namespace tarq::tools
