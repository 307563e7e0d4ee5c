// A match request as the log tells it: the package's list, the board, what the hardware answered
// and how the fallback ended.
#pragma once

#include <stdint.h>

#include <optional>
#include <string>
#include <vector>

#include "tools/tarqctl/match/fact_texts.h"

namespace tarq::tools {

// Words of the daemon's lists.
constexpr char kOverlayId[] = "overlay_id";  // the item that names no part
constexpr char kNoPart[] = "null";           // the value of a part that is not there
constexpr char kNoOverlay[] = "-1";          // the overlay id of a board that has none
// The parts of which a probe asks the hardware itself.
constexpr char kTouchPanel[] = "tp";
constexpr char kDisplay[] = "lcd";
constexpr char kCamera[] = "internal_camera";

// name:value, as the daemon reads it: split at the first colon, else all name.
struct Item {
    std::string name;
    std::string value;
};

// It does not fail: a text without a colon has no value.
Item itemFrom(const std::string& text);

// What the hardware itself told of a part.
struct ProbeFinding {
    bool answered = true;
    std::optional<std::string> part = {};  // if the log tells it, which it does not for a camera
    std::string how = {};                  // such as "panel id 3 by hwid-flag"; may be empty
    std::optional<bool> listed = {};       // in the item's value, if that can be known
};

// How an item fared. In the order of the list. An item that the daemon has not come to is not
// examined, and the rest of it means nothing then.
struct ItemFinding {
    std::string text;
    Item item;
    bool examined = false;
    bool tooLong = false;
    std::optional<bool> overlayFits = {};        // set for an overlay id that was compared
    std::vector<std::string> missingWords = {};  // the board's that the package does not have
    std::optional<ProbeFinding> probe = {};
};

// What became of a package that does not fit by its parts. Its times are in the unit of the board's
// timestamp file.
struct FallbackFinding {
    std::optional<FactLine> end = {};  // from kFallbackOff on; nothing when it was not asked
    // Both for kTooEarly and kLater: the package's must be greater.
    int64_t packageTime = 0;
    int64_t earliestTime = INT64_MIN;
    std::string earliestKind = {};  // of part, to which that time belongs
};

// The first two are proved by the log; of the others nothing but what they say is known.
enum class Outcome {
    kYes,
    kNo,
    kCutOff,        // the thread's log ends in the middle
    kBegunBefore,   // the thread's log begins in the middle
    kPruned,        // lines are missing in the middle, and the log says so
    kBroken,        // lines are missing, or contradict each other: nothing is known for certain
    kNotExplained,  // the list itself looks like a log
    kMixed,         // one of the two, in a log that does not tell threads apart
};

// One request, from its first line on. Pointers into it that the functions below return are good as
// long as it is not changed.
struct MatchRequest {
    std::string time;  // of its first line; this and the next two may not be told
    int pid = 0;
    int tid = 0;
    Outcome outcome = Outcome::kCutOff;
    std::string dropped = {};         // for kPruned, a clause that says by whom, and how many lines
    std::string skippedBecause = {};  // not empty: nothing was compared, nor even listed
    bool listIsKnown = false;         // from its sender: none of its items can be missing
    // The next three are empty unless both the list and the board were told whole.
    std::vector<ItemFinding> items = {};
    std::vector<Item> board = {};  // all parts, kNoPart where it has none
    std::string overlayId = {};    // or kNoOverlay
    bool itemsDone = false;        // all were examined
    // Requests at the same time write the same states: the daemon found another state than this
    // request's items had left.
    bool disturbed = false;
    FallbackFinding fallback = {};
};

// Works out from the facts behind the board how the request went. isLast: the thread's log has
// nothing more. The request has its items, its board and its overlay id by then; what is set is its
// outcome, and how each item fared.
void readFacts(const FactLines& facts, bool isLast, MatchRequest* request);

// What the hardware itself told of the part that an item is about, from the lines of its probe and
// its result. Throws Outcome::kBroken where they contradict each other, or the list and the board.
ProbeFinding probeFinding(const Item& part, const ItemFinding& finding, const FactLines& probing,
                          bool match);

// Throws Outcome::kBroken unless it holds.
void require(bool holds);

// Whether the item supports the board's part, or includes its overlay id.
bool fits(const ItemFinding& finding);

// The board's part of that name; null if it has no such row.
const Item* partOf(const MatchRequest& request, const std::string& name);

// What the last item of that name came to; null when there is none. Of items with one name the
// daemon lets the last one count, but for overlay ids.
const ItemFinding* findingOf(const MatchRequest& request, const std::string& name);

// The parts that the board has, whatever the package names, which do not fit.
std::vector<const Item*> misfits(const MatchRequest& request);

}  // namespace tarq::tools
