// Which virtual boards run on this machine. Host only.
#pragma once

#include <string>
#include <vector>

namespace tarq::host {

// Where scripts/run keeps the boards of this user, each in a directory of its own.
std::string usersBoards();

// The boards below the directory that run: somebody holds the lock on BOARD/run/lock. Sorted.
std::vector<std::string> runningBoards(const std::string& directory);

}  // namespace tarq::host
