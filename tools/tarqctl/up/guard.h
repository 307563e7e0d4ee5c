// What ends the parts when `up` itself was killed.
#pragma once

#include <sys/types.h>

namespace tarq::tools {

// A process beside this one that waits for its end, and then ends the groups of processes that were
// handed to it. To be made before anything is opened that others should see closed at the end.
class Guard {
  public:
    Guard();
    ~Guard();  // lets go of the groups, which have to be gone
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

    // Called by a new process, the first of its group, before it becomes another program.
    void watchOwnGroup() const;

    pid_t pid() const { return mPid; }

  private:
    pid_t mPid = -1;
    int mPipe = -1;
};

}  // namespace tarq::tools
