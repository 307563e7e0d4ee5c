// The daemon's binder threads.
#pragma once

#include <memory>

#include "host/platform/binder/daemon/connection.h"

namespace android::host {

// As on the device: 15 that the driver may ask for, the pool's first, and main.
constexpr int kPoolHandlers = 16;

// Lets so many more calls run at once. At first none may: what arrives before the pool starts
// waits.
void addHandlers(int count);

// Serves a call connection until it closes, on a thread of its own that waits in recv: that is
// one thread for each client thread that calls, and no hand-over from one to another on a call's
// way. How many run a call at the same time is limited by the handlers.
void serveOnThread(std::unique_ptr<Connection> connection);

}  // namespace android::host
