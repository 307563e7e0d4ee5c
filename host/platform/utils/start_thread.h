#pragma once

#include <functional>

namespace android::host {

// Runs body on a new detached thread; false if there can be none.
bool startThread(std::function<void()> body);

}  // namespace android::host
