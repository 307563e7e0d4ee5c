#pragma once

#include <utils/RefBase.h>

namespace android {

// This process's part in the binder. Which part that is, the daemon's or a client's, is decided by
// the library that the program links: host_binder_daemon or host_binder_client.
class ProcessState : public virtual RefBase {
  public:
    // In the daemon the first call opens the board's socket and starts to answer look-ups; without
    // a board it ends the process with a line that says what to do.
    static sp<ProcessState> self();

    // Lets binder threads run: in the daemon up to 17 with the one that joins, in a client one.
    void startThreadPool();
};

}  // namespace android
