// Whether there is room left where a board runs.
#pragma once

#include <string>

#include "host/run/board.h"

namespace tarq::host {

// 0, or the errno with which the switched on board, its daemon and its properties cannot write any
// more, such as ENOSPC. Leaves nothing behind.
int writeError(const Board& board);

// Throws it as a std::system_error; nothing where a board is being switched off.
void requireRoom(const Board& board);

// What it means: "DIR cannot be written: No space left on device; make room, or …".
std::string cannotBeWritten(const Board& board, int error);

}  // namespace tarq::host
