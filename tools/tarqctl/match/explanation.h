// Why a package fits or does not: what is to be printed.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/tarqctl/match/facts.h"
#include "tools/tarqctl/print_json.h"

namespace tarq::tools {

enum class Verdict { kFits, kMisfit, kIgnored, kNotExamined };

// One part, overlay id or other item.
struct ExplainedRow {
    std::string name;
    std::optional<std::string> board;    // nothing when the board has none
    std::optional<std::string> package;  // nothing when the package does not name it
    Verdict verdict;
    std::string reason;                    // the rule that decided
    std::vector<std::string> better = {};  // items of which each would fit
};

struct Explanation {
    std::string verdict;   // yes, no or unknown
    std::string sentence;  // what led to it
    std::vector<ExplainedRow> rows;
    std::string fallback;                  // empty when it was not asked
    std::optional<int64_t> requiredTime;   // of a package that would pass by it, at least
    std::vector<std::string> notCompared;  // what a yes does not rest on, though one might think so
    std::vector<std::string> doubts;       // what is probably not meant
};

Explanation explain(const MatchRequest& request);

// The overlay ids, the board's parts in its order, then what else the package names.
std::vector<ExplainedRow> explainedRows(const MatchRequest& request);

// What is probably not meant, from the list and the board's parts alone.
std::vector<std::string> doubtsAbout(const std::vector<std::string>& items,
                                     const std::vector<Item>& board);

// For people: the verdict, the table, and what would make it fit.
std::string asText(const Explanation& explanation);

// {"verdict", "sentence", "items": [{"name", …}], "fallback", …}: the members' names stay.
Json asJson(const Explanation& explanation);

}  // namespace tarq::tools
