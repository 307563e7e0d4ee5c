// Where the log of this process goes.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>

namespace tarq::host {

// The file that TARQ_LOG names, which is appended to, or standard error. Any thread may write, and
// none ever waits: where there is no room lines are left out and counted.
class LogDestination {
  public:
    // Settled by the first call. Never destroyed: threads log while the process ends.
    static LogDestination& self();

    // Whether lines are to have colours: on a terminal, unless NO_COLOR asks for none.
    bool isColoured() const { return mColoured; }

    // Says how many lines were lost, as whole lines.
    using Notice = std::function<std::string(unsigned count)>;

    // Whole lines, in one write. 0, or -errno if they are lost: -EAGAIN where a pipe or a terminal
    // takes nothing now. The notice of what was lost comes before whatever is written next, so a
    // reader knows between which lines the gap is.
    int put(const std::string& lines, const Notice& notice);

  private:
    LogDestination();
    int tellLost(const Notice& notice);
    int putUncounted(const std::string& lines);

    int mFd;
    bool mColoured;
    bool mMayWait = false;             // a write could: it is asked beforehand
    std::atomic<bool> mIsTorn{false};  // the last write ended within a line
    std::atomic<unsigned> mLost{0};
    std::mutex mTelling;
};

}  // namespace tarq::host
