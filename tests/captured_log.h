// What is logged while a test's object of this class lives, each entry as "E tag: text".
#pragma once

#include <host/log_sink.h>

#include <mutex>
#include <string>
#include <utility>
#include <vector>

class CapturedLog {
  public:
    CapturedLog() {
        tarq::host::setLogSink([this](int priority, const char* tag, const std::string& text) {
            constexpr char letters[] = "?DVDIWEFS";  // by priority; 0 and 1 stand for a default
            const std::lock_guard<std::mutex> guard(mLock);
            mEntries.push_back(letters[priority] + (" " + std::string(tag ? tag : "(null)")) +
                               ": " + text);
        });
    }
    ~CapturedLog() { tarq::host::setLogSink(nullptr); }
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    // The entries since the last call.
    std::vector<std::string> take() {
        const std::lock_guard<std::mutex> guard(mLock);
        return std::exchange(mEntries, {});
    }

  private:
    std::mutex mLock;
    std::vector<std::string> mEntries;
};
