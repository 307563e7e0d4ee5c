// The virtual board of this process. Host only: no file that goes on the device includes this.
#pragma once

#include "host/run/board.h"

namespace tarq::host {

// Binder, properties and the device's paths have the genuine signatures, which name no board. So a
// process has one; whoever asks several boards starts a process for each. It is the one that was
// set; in the daemon, which knows nothing of boards, that of the environment variable TARQ_BOARD.
const Board& processBoard();

// To be called before the first use and before there are other threads.
void setProcessBoard(const Board& board);

}  // namespace tarq::host
