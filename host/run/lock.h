// Who has a board: the lock on BOARD/run/lock, which its process holds until it ends, however that
// happens.
#pragma once

#include <string>
#include <vector>

#include "host/run/board.h"

namespace tarq::host {

// Takes it for this process, and makes the directory if need be. A descriptor, close-on-exec, or
// -errno: -EWOULDBLOCK when another process has it.
int lockBoard(const Board& board);

// Whether a process has it.
bool isRunning(const Board& board);

// Where `tarqctl up` keeps the boards of this user, each in a directory of its own.
std::string usersBoards();

// The boards of this user that run, sorted by their directories.
std::vector<Board> runningBoards();

}  // namespace tarq::host
