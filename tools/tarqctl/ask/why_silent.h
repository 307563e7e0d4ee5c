// Why nobody answers, where somebody knows it: the kernel, of a stopped process, which takes calls
// and does nothing; the board, of a node.
#pragma once

#include <sys/types.h>

#include <string>

#include "tools/tarqctl/session.h"

namespace tarq::tools {

struct Cause {
    std::string why;   // "the daemon is stopped (process 12)"
    std::string hint;  // the command line that ends it, or tells who holds it
};

// The board's process if it is stopped, by a signal or in a debugger, else its daemon if that is:
// a daemon that asks a stopped board waits as well. Else what is likely, whatever that is, and,
// where hardware is asked, a node beside it that the board holds or is slow with.
Cause whyNobodyAnswers(const Session& session, bool isHardware, const Cause& likely);

// The kernel's letter for it, such as T for one that is stopped; '?' when there is none.
char stateOf(pid_t process);

}  // namespace tarq::tools
