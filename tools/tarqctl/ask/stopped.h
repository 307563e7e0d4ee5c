// Why nobody answers, where the kernel knows it: a stopped process takes calls and does nothing.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "host/run/board.h"

namespace tarq::tools {

struct Stopped {
    std::string why;   // "the daemon is stopped (process 12)"
    std::string hint;  // the command line that makes it go on, or tells who holds it
};

// The board's process if it is stopped, by a signal or in a debugger, else its daemon if that is:
// a daemon that asks a stopped board waits as well. Nothing where neither is, or it cannot be told.
std::optional<Stopped> findStopped(const host::Board& board);

}  // namespace tarq::tools
