// How a process takes part in the binder.
#pragma once

#include <utils/RefBase.h>

namespace android {

// This process's part in the binder. Which part that is, the daemon's or a client's, is decided by
// the library that the program links: host_binder_daemon or host_binder_client.
class ProcessState : public virtual RefBase {
  public:
    // The one object of this process. In the daemon the first call opens the board's socket and
    // starts to answer look-ups; without a board, beside another daemon and on any other failure it
    // ends the process with a line that says why. In a client it does nothing yet: it has one
    // connection to the daemon, and one or two for each thread that calls. A user has 4,096 of them
    // at most, of a daemon with fewer descriptors than 8,192 half of these.
    static sp<ProcessState> self();

    // Lets calls run: in the daemon 16 at once, and one more for each thread that joins, as on the
    // device; those that came before it waited. In a client a thread handles its callbacks' calls
    // and deaths from now on; without it a client can call, but hears nothing. Call it once.
    void startThreadPool();
};

}  // namespace android
