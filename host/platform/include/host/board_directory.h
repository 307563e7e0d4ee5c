// Where a running virtual board lives. Host only: no file that goes on the device includes this.
#pragma once

#include <string>

namespace tarq::host {

// The directory named by the environment variable TARQ_BOARD; empty when it is not set. Read once
// a process. It holds root/ (the device's tree) and run/ (socket, properties, log).
const std::string& boardDirectory();

// "run/binder.sock" -> "$TARQ_BOARD/run/binder.sock"
std::string boardPath(const std::string& relative);

}  // namespace tarq::host
