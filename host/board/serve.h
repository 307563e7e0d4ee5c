#pragma once

#include <filesystem>

namespace tarq::board {

struct ServeOptions {
    bool isShared = false;      // other users may talk to the daemon, and look at the files
    bool requiresFuse = false;  // without it the board does not start
};

// Plays the board that the folder describes, in the directory, until SIGTERM, SIGINT or SIGHUP
// comes, or whoever started this process ends. Prints "ready" once programs can be started on it.
// For a process that has no other thread. Throws std::exception when the board cannot be started.
void serve(const std::filesystem::path& folder, const std::filesystem::path& directory,
           const ServeOptions& options);

}  // namespace tarq::board
