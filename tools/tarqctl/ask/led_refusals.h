// What the board's LED driver did not take: the daemon does not ask, so only the board can tell.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/run/growing_file.h"
#include "host/run/records.h"

namespace tarq::tools {

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
