// The one way in which the platform's own code starts a thread.
#pragma once

#include <functional>

namespace android::host {

// Runs body on a new detached thread; false if there can be none, and then body was not run. What
// body holds is let go of on that thread when it has ended.
bool startThread(std::function<void()> body);

}  // namespace android::host
