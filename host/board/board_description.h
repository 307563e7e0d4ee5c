// board.xml: what is fitted to a board.
#pragma once

#include <filesystem>

#include "host/board/hardware.h"

namespace tarq::board {

// Adds the nodes of all parts that the file names; none without a file. Throws std::runtime_error,
// "FILE:LINE: what is wrong", for anything in it that is not understood.
void fit(const std::filesystem::path& file, Hardware& hardware);

}  // namespace tarq::board
