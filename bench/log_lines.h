// The floor of what logs.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

// The log lines of an operation of this process, to be written again with nothing around the
// writes: that is what any log has to do that puts each entry into a file at once.
class LogLines {
  public:
    // Runs the operation once, and keeps what it logs.
    explicit LogLines(const std::function<void()>& operation);
    ~LogLines();
    LogLines(const LogLines&) = delete;
    LogLines& operator=(const LogLines&) = delete;

    // One writev an entry, to a file beside the board's log.
    void write() const;

  private:
    std::vector<std::string> mTexts;
    int mFd;
};

}  // namespace bench
