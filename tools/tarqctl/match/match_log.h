// The match requests in a log. They are cut out when they are asked for, and explained by others.
#pragma once

#include <map>
#include <utility>

#include "tools/tarqctl/log/log_line.h"
#include "tools/tarqctl/match/request_span.h"

namespace tarq::tools {

// Takes the lines of a log, of any number of daemons and threads, from any place on. Lines with
// other tags are not kept, nor are those of another shape. Nothing is decided while lines are
// added, so a log may be added in any number of steps. For one thread.
class MatchLog {
  public:
    void add(const LogLine& line);
    // A line of the daemon's own log. Another one is passed over.
    void add(const std::string& line);

    // In the order of their beginnings. Each echoed line is taken for an item: one with a newline
    // in it cannot be told from two. For a log that was saved anywhere: parts of it may be missing.
    std::vector<MatchRequest> all() const;

    // Those whose items are exactly these; without any, those that were skipped, which do not tell
    // their items. For who has sent them himself, and sees the log whole.
    std::vector<MatchRequest> with(const std::vector<std::string>& items) const;

  private:
    // What a thread has logged without a gap that is known of.
    struct Stretch {
        std::string dropped = {};  // what is missing in front of it, a clause
        RequestLines lines = {};
    };
    using Requests = std::map<size_t, MatchRequest>;  // by the number of the first line

    std::vector<MatchRequest> read(const std::vector<std::string>* items) const;
    static Requests readThread(const std::vector<Stretch>& stretches,
                               const std::vector<std::string>* items);
    static void readStretch(const RequestLines& lines, const std::vector<std::string>* items,
                            bool isDoubtful, Requests* requests);

    size_t mLines = 0;
    std::map<std::pair<int, int>, std::vector<Stretch>> mThreads;  // by pid and tid
};

}  // namespace tarq::tools
