// Why a package fits or does not: what is to be printed. It is made of the facts of a request in
// one step, and printed in another.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/tarqctl/match/facts.h"
#include "tools/tarqctl/session.h"

namespace tarq::tools {

// In the order of their words in print.cpp. Not examined is what the daemon did not come to;
// unknown is what the log does not prove.
enum class Verdict { kFits, kMisfit, kIgnored, kNotExamined, kUnknown };

// One part, overlay id or other item.
struct ExplainedRow {
    std::string name;
    std::optional<std::string> board;    // nothing when the board has none
    std::optional<std::string> package;  // nothing when the package does not name it
    Verdict verdict;
    std::string reason;                    // the rule that decided
    std::vector<std::string> better = {};  // items of which each would fit
};

// What is probably not meant.
struct Doubt {
    std::string text;
    std::optional<size_t> item = {};  // which one of the list it is about
    bool isMistake = false;           // hardly ever meant: a strict reader refuses the list for it
};

// What is in it comes from logs and lists, and is not escaped.
struct Explanation {
    std::string verdict;                 // yes, no or unknown
    std::optional<std::string> service;  // yes or no, as the service said it, if it was asked
    std::string sentence;                // what led to it
    std::vector<ExplainedRow> rows;
    std::string fallback;                  // empty when it was not asked
    std::optional<int64_t> requiredTime;   // of a package that would pass by it, at least
    std::vector<std::string> notCompared;  // what a yes does not rest on, though one might think so
    std::vector<Doubt> doubts;
};

// service is left to whoever has asked the service.
Explanation explain(const MatchRequest& request);

// The overlay ids, the board's parts in its order, then what else the package names.
std::vector<ExplainedRow> explainedRows(const MatchRequest& request);

// From the list and the board's parts alone. It needs no log, so it holds for a list that was never
// sent as well. Without a board nothing is said of unknown names.
std::vector<Doubt> doubtsAbout(const std::vector<std::string>& items,
                               const std::vector<Item>& board);

// For people: the verdict, the table, and what would make it fit. It is escaped; cells are padded
// and never cut, however long a value is.
std::string asText(const Explanation& explanation);
// The same with a yes or no that is painted.
std::string asText(const Session& session, const Explanation& explanation);

// {"verdict", "sentence", "items": [{"name", …}], "fallback", …}: the members' names stay.
Json asJson(const Explanation& explanation);

}  // namespace tarq::tools
