// Telling those who linked to an object's death.
#pragma once

#include <vector>

#include <binder/BpBinder.h>

namespace android::host {

// The thread that tells them, made once a process: when the daemon opens its binder, in a client at
// the first link. False if there can be none, and then nobody may link. Any thread.
bool startNotices();

// Tells the recipients of all of them, one after the other, on that thread: they may take locks
// that the caller holds. One that never returns keeps the notices behind it.
void sendObituaries(std::vector<sp<BpBinder>> proxies);

}  // namespace android::host
