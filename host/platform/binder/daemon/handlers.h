// The daemon's binder threads: how many calls run at once, and on which threads.
#pragma once

#include <memory>

#include "host/platform/binder/daemon/connection.h"

namespace android::host {

// The number is the device's: 15 threads that the driver may ask for, and the pool's first. The
// main thread joins as the 17th.
constexpr int kPoolHandlers = 16;

// Lets so many more calls run at once. At first none may: what arrives before the pool starts
// waits. Any thread.
void addHandlers(int count);

// While it exists its thread is one of those that may run a call: the constructor waits for that.
struct HandlerTurn {
    HandlerTurn();
    ~HandlerTurn();
    HandlerTurn(const HandlerTurn&) = delete;
    HandlerTurn& operator=(const HandlerTurn&) = delete;
};

// Serves a call connection until it closes, on a thread of its own that waits in recv: that is
// one thread for each client thread that calls, and no hand-over from one to another on a call's
// way. How many run a call at the same time is limited by the handlers.
void serveOnThread(std::unique_ptr<Connection> connection);

}  // namespace android::host
