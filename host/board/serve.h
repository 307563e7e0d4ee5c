#pragma once

#include <filesystem>

namespace tarq::board {

// Plays the board that the folder describes, in the directory, until SIGTERM, SIGINT or SIGHUP
// comes, or whoever started this process ends. Prints "ready" once programs can be started on it.
// For a process that has no other thread. Throws std::exception when the board cannot be started.
void serve(const std::filesystem::path& folder, const std::filesystem::path& directory,
           bool shared);

}  // namespace tarq::board
