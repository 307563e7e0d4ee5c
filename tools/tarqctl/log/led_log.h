// What the LED service writes into the daemon's log while it answers a call: the only place in the
// tools that knows those texts.
#pragma once

#include <optional>
#include <vector>

#include "host/run/growing_file.h"

namespace tarq::tools {

// What went wrong in one call, without its result being told.
struct LedCall {
    std::vector<std::string> notOpened;  // paths of attributes, once each
    bool fileUnreadable = false;         // the effect file, of which nothing was sent then
    std::vector<std::string> leftOut;    // of the effect file
};

// Follows the log from the moment on at which it is made.
class LedLog {
  public:
    explicit LedLog(const std::string& path);

    // The last call of that operation with those arguments, as the log prints them, that went wrong
    // in any way, else any. Nothing when the log does not tell of it. Call it after the call: the
    // answer comes when all has been written.
    std::optional<LedCall> find(const std::string& operation,
                                const std::vector<std::string>& arguments);

  private:
    host::GrowingFile mFile;
};

}  // namespace tarq::tools
