// Warnings about a package's list: what the daemon takes without a word though it is probably not
// meant. Names that the board does not know are held against those it does.
#include <string.h>

#include <algorithm>
#include <map>

#include "hardware_info/text.h"
#include "host/run/nearest.h"
#include "tools/tarqctl/match/explanation.h"
#include "tools/tarqctl/user_input.h"

namespace tarq::tools {

namespace {

// A name that is part of the other is as near as can be: "camera" means one of the cameras.
size_t apart(const std::string& name, const std::string& known) {
    const bool contained = name.size() > 1 && known.find(name) != std::string::npos;
    return contained ? 0 : host::distance(name, known);
}

// There is always one, since overlay_id is among them.
std::string nearest(const std::string& name, const std::vector<std::string>& names) {
    return *std::min_element(names.begin(), names.end(),
                             [&name](const std::string& a, const std::string& b) {
                                 return apart(name, a) < apart(name, b);
                             });
}

// A word of the board that is only part of a word of the package. The daemon looks for the board's
// word anywhere in the value, so a longer word that holds it fits as well, which may be an
// accident.
void addInnerWords(const Item& part, const Item& item, size_t index, std::vector<Doubt>* doubts) {
    const std::vector<std::string> words = tokensOf(item.value);
    for (const std::string& word : tokensOf(part.value)) {
        if (std::count(words.begin(), words.end(), word) > 0) continue;
        const auto inside = std::find_if(words.begin(), words.end(), [&word](const auto& other) {
            return other.find(word) != std::string::npos;
        });
        if (inside == words.end()) continue;
        doubts->push_back({part.name + ": the board's \"" + word + "\" is found only inside \"" +
                                   *inside + "\"",
                           index});
    }
}

// In what form an item is, whatever it is about.
void addFlaws(const std::string& text, size_t index, std::vector<Doubt>* doubts) {
    const Item item = itemFrom(text);
    const bool isOverlay = item.name == kOverlayId;
    if (isOverlay ? item.value.size() > kMaxOverlayValueLength : text.size() > kMaxItemLength) {
        const std::string limit =
                isOverlay ? "its value is longer than " + std::to_string(kMaxOverlayValueLength)
                          : "the item is longer than " + std::to_string(kMaxItemLength);
        doubts->push_back(
                {item.name.substr(0, kMaxItemLength) + ": " + limit + " bytes and is not compared",
                 index, true});
    }
    if (text.find(':') == std::string::npos) {
        doubts->push_back({"\"" + text.substr(0, kMaxItemLength) +
                                   "\" has no colon, so it is a name without a value",
                           index});
    }
}

// A mark cannot be seen, so it is told apart from the name.
std::string unknownName(const std::string& name, const std::vector<std::string>& names) {
    const bool hasMark = name.rfind(kByteOrderMark, 0) == 0;
    const std::string seen = hasMark ? name.substr(strlen(kByteOrderMark)) : name;
    const std::string quoted = "\"" + seen.substr(0, kMaxItemLength) + "\"";
    if (hasMark) return "a byte order mark in front of " + quoted + " makes it another name";
    return "there is no part " + quoted + ", the nearest name is \"" + nearest(name, names) + "\"";
}

}  // namespace

// All of them are about what the daemon does take, so none of them changes the verdict.
std::vector<Doubt> doubtsAbout(const std::vector<std::string>& items,
                               const std::vector<Item>& board) {
    std::vector<Doubt> doubts;
    std::vector<std::string> names = {kOverlayId};
    for (const Item& part : board) names.push_back(part.name);
    std::map<std::string, int> seen;
    for (size_t i = 0; i < items.size(); ++i) {
        const Item item = itemFrom(items[i]);
        addFlaws(items[i], i, &doubts);
        if (++seen[item.name] == 2) {
            doubts.push_back({item.name + " is named more than once, " +
                                      (item.name == kOverlayId ? "and each has to list the board's"
                                                               : "the last one counts"),
                              i, true});
        }
        const auto part = std::find_if(board.begin(), board.end(),
                                       [&item](const Item& p) { return p.name == item.name; });
        if (part != board.end()) {
            if (part->value != kNoPart && items[i].size() <= kMaxItemLength) {
                addInnerWords(*part, item, i, &doubts);
            }
        } else if (!board.empty() && item.name != kOverlayId) {
            doubts.push_back({unknownName(item.name, names), i, true});
        }
    }
    return doubts;
}

}  // namespace tarq::tools
