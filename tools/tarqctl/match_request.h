// A match request, as the daemon's log tells it.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <optional>
#include <string>
#include <vector>

namespace tarq::tools {

constexpr char kOverlayId[] = "overlay_id";  // the item that names no part

// In bytes. The daemon counts longer texts as not fitting.
constexpr size_t kMaxItemSize = 101;
constexpr size_t kMaxOverlayIdsSize = 63;

// name:value, as the daemon reads it: split at the first colon, else all name.
struct Item {
    std::string name;
    std::string value;
};

Item itemFrom(const std::string& text);

// What the hardware itself told of a part.
struct ProbeFinding {
    bool answered = true;
    std::optional<std::string> part = {};  // if the log tells it, which it does not for a camera
    std::string how = {};                  // such as "panel id 3 by hwid-flag"; may be empty
    std::optional<bool> listed = {};       // in the item's value, if that can be known
};

// How an item fared.
struct ItemFinding {
    std::string text;
    Item item;
    bool examined = false;
    bool tooLong = false;
    std::optional<bool> overlayFits = {};        // set for an overlay id that was compared
    std::vector<std::string> missingWords = {};  // the board's that the package does not have
    std::optional<ProbeFinding> probe = {};
};

// What became of a package that does not fit by its parts.
enum class Fallback {
    NOT_REACHED,
    OFF,
    OTHER_CAMERA,
    NO_PACKAGE_TIME,
    FILE_UNREADABLE,
    FILE_WRONG,
    NOT_LISTED,  // passes
    TOO_EARLY,
    LATER,  // passes
};

struct FallbackFinding {
    Fallback outcome = Fallback::NOT_REACHED;
    std::string told = {};          // the property, or the daemon's word on the file
    int64_t packageTime = 0;        // both for TOO_EARLY and LATER
    int64_t earliestTime = 0;       // the package's must be greater
    std::string earliestKind = {};  // of part, to which that time belongs
};

enum class Outcome {
    YES,
    NO,
    CUT_OFF,  // the thread's log ends in the middle
    BROKEN,   // lines do not follow each other as the daemon writes them
};

struct MatchRequest {
    std::string time;  // of its first line
    int pid = 0;
    int tid = 0;
    Outcome outcome = Outcome::CUT_OFF;
    std::string skippedBecause = {};  // not empty: nothing was compared, nor even listed
    std::vector<ItemFinding> items = {};
    std::vector<Item> board = {};  // the parts, "null" where it has none
    std::string overlayId = {};    // "-1" for none
    bool itemsDone = false;        // all were examined
    // Requests at the same time write the same states: the daemon found another state than this
    // request's items had left.
    bool disturbed = false;
    FallbackFinding fallback = {};
};

// Whether the item supports the board's part, or includes its overlay id.
bool fits(const ItemFinding& finding);

// The board's part of that name; null if it has no such row.
const Item* partOf(const MatchRequest& request, const std::string& name);

// What the last item of that name came to; null when there is none.
const ItemFinding* findingOf(const MatchRequest& request, const std::string& name);

// The parts that the board has, whatever the package names, which do not fit.
std::vector<const Item*> misfits(const MatchRequest& request);

}  // namespace tarq::tools
