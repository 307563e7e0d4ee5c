// Which board a command is about, and having it do something. What cannot be done has a cause and a
// hint that can be typed, so that a command says only what it wants.
#pragma once

#include <string>
#include <vector>

#include "host/run/control.h"
#include "tools/tarqctl/session.h"

namespace tarq::tools {

// The command that starts a board, after the error with which none could be reached. error: an
// errno, of which EACCES means a board of another user that is not shared; 0 for none at all.
const char* howToStart(int error);

// The board ended while something went on that needs it.
Failure boardEnded(const Session& session);

// Settles on the board that was given or else the only one that the user runs, and makes it this
// process's board. To be called before anything that reads properties or calls the daemon. Throws a
// Failure when there is none, or more than one. It may be called again for the same board, but not
// for another one: the platform has one a process. That the directory is there is all that is
// looked at: a board that has ended is found out by whoever asks it.
void openBoard(Session& session);

// Has the opened board do it, within --timeout: {"set", "gpio42", "1"}. Returns why it refused, or
// "". Throws a Failure when it could not be asked. The words are not looked at here: the board
// knows what they mean.
std::string askBoard(const Session& session, const std::vector<std::string>& words);

// The board's state. Why it could not be asked, with what to type then in the hint; "" when it
// could. Throws a Failure when the board hangs.
std::string askState(const Session& session, host::BoardState* state, std::string* hint);

}  // namespace tarq::tools
