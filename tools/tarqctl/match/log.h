// The match requests in a log.
#pragma once

#include <map>
#include <utility>

#include "tools/tarqctl/match/facts.h"

namespace tarq::tools {

// Takes the lines of a log, of any number of daemons and threads, from any place on.
class MatchLog {
  public:
    // False if the line is no threadtime line. Those with other tags are not kept.
    bool add(const std::string& line);

    // In the order of their beginnings. Each echoed line is taken for an item: one with a newline
    // in it cannot be told from two.
    std::vector<MatchRequest> all() const;

    // Those whose items are exactly these; without any, those that were skipped, which do not tell
    // their items. For who has sent them himself, and sees the log whole.
    std::vector<MatchRequest> with(const std::vector<std::string>& items) const;

    struct Line {
        size_t number;  // its place in the whole log
        std::string time;
        std::string text;
        std::optional<FactLine> fact;
    };
    using Lines = std::vector<Line>;

  private:
    std::vector<MatchRequest> read(const std::vector<std::string>* items) const;

    size_t mLines = 0;
    std::map<std::pair<int, int>, Lines> mThreads;  // by pid and tid
};

}  // namespace tarq::tools
