// One-way calls that the daemon has accepted.
#pragma once

#include <memory>

#include "host/platform/binder/daemon/connection.h"

namespace android::host {

// Makes the thread that is there when no other can be had. False if it cannot be had either.
bool startOneWayCalls();

// Keeps the call until it is run, whatever becomes of who sent it. Those of one object run one
// after the other in the order in which they came, those of several at once, and each while a
// handler is free.
void queueOneWay(std::unique_ptr<Call> call);

}  // namespace android::host
