// What became of a call of the LED service, beyond its answer: what the service writes into the
// daemon's log meanwhile, and what the board's LED driver did not take. This is the only place in
// the tools that knows those texts of the log. Both are to be made before the call and asked after
// it; for one thread.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/run/growing_file.h"
#include "host/run/records.h"

namespace tarq::tools {

// What went wrong in one call, without its result being told.
struct LedCall {
    std::vector<std::string> notOpened;  // paths of attributes, once each
    bool fileUnreadable = false;         // the effect file, of which nothing was sent then
    std::vector<std::string> leftOut;    // of the effect file
};

// Follows the log from the moment on at which it is made. A board that writes no log tells of
// nothing, which is not the same as that all went well.
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

// Follows the records of the board from the moment on at which it is made. A board that has none,
// as on plain files, tells of no refusal.
class LedRefusals {
  public:
    explicit LedRefusals(const std::string& records);

    // The records that were refused since then and that the caller takes for its own, others may
    // write as well. Call it after the call to the daemon: the driver had all before the answer.
    using IsOurs = std::function<bool(const host::LedRecord&)>;
    std::vector<host::LedRecord> find(const IsOurs& isOurs);

  private:
    host::GrowingFile mRecords;
};

}  // namespace tarq::tools
