#pragma once

#include <filesystem>

#include "host/run/board.h"

namespace tarq::board {

// Sets the properties of a board that has just been switched on: first the defaults, KEY=VALUE
// lines and comments that begin with #, then what was saved of the persist. ones. Each line that
// is malformed or refused is named on standard error, and the others count. Called once a process.
// Throws std::exception when the defaults cannot be read or are no text, and when the disk is full.
void loadProperties(const std::filesystem::path& defaults, const host::Board& board);

}  // namespace tarq::board
