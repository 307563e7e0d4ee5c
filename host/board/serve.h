#pragma once

#include <filesystem>

namespace tarq::board {

// Plays the board that the folder describes, in the directory, until a signal ends it: SIGTERM,
// SIGINT or SIGHUP, which the caller has blocked from the start, so that none comes too early.
// Throws std::exception when the board cannot be started.
void serve(const std::filesystem::path& folder, const std::filesystem::path& directory,
           bool shared);

// The signals that end it.
void blockEndings();

}  // namespace tarq::board
