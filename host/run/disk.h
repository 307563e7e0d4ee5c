// Whether there is room left where a board runs.
#pragma once

#include "host/run/board.h"

namespace tarq::host {

// 0, or the errno with which the switched on board, its daemon and its properties cannot write any
// more, such as ENOSPC. Leaves nothing behind.
int writeError(const Board& board);

}  // namespace tarq::host
