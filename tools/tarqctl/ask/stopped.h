// Why nobody answers, where somebody knows it: the kernel, of a stopped process, which takes calls
// and does nothing; the board, of a node. Both are asked only when the time is up, so what they
// cost does not matter, but neither may wait for whoever is stopped.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "host/run/board.h"

namespace tarq::tools {

struct Stopped {
    std::string why;   // "the daemon is stopped (process 12)", "touch_panel is held"
    std::string hint;  // the command line that makes it go on, or tells who holds it
};

// A node that the board holds, or is slow with: who asks the hardware may wait for it. The hint is
// a command of this tool. Nothing when there is none, or the board does not tell within a second.
std::optional<Stopped> findHeld(const host::Board& board);

// The board's process if it is stopped, by a signal or in a debugger, else its daemon if that is:
// a daemon that asks a stopped board waits as well. Nothing where neither is, or it cannot be told.
std::optional<Stopped> findStopped(const host::Board& board);

}  // namespace tarq::tools
