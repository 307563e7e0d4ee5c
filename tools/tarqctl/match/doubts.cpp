// Warnings about a package's list: what the daemon takes without a word though it is probably not
// meant. Names that the board does not know are held against those it does.
#include <algorithm>
#include <map>

#include "hardware_info/text.h"
#include "host/run/nearest.h"
#include "tools/tarqctl/match/explanation.h"

namespace tarq::tools {

namespace {

// A name that is part of the other is as near as can be: "camera" means one of the cameras.
size_t apart(const std::string& name, const std::string& known) {
    const bool contained = name.size() > 1 && known.find(name) != std::string::npos;
    return contained ? 0 : host::distance(name, known);
}

std::string nearest(const std::string& name, const std::vector<std::string>& names) {
    return *std::min_element(names.begin(), names.end(),
                             [&name](const std::string& a, const std::string& b) {
                                 return apart(name, a) < apart(name, b);
                             });
}

// A word of the board that is only part of a word of the package.
void addInnerWords(const Item& part, const Item& item, std::vector<std::string>* doubts) {
    const std::vector<std::string> words = tokensOf(item.value);
    for (const std::string& word : tokensOf(part.value)) {
        if (std::count(words.begin(), words.end(), word) > 0) continue;
        const auto inside = std::find_if(words.begin(), words.end(), [&word](const auto& other) {
            return other.find(word) != std::string::npos;
        });
        if (inside == words.end()) continue;
        doubts->push_back(part.name + ": the board's \"" + word + "\" is found only inside \"" +
                          *inside + "\"");
    }
}

// In what form an item is, whatever it is about.
void addFlaws(const std::string& text, std::vector<std::string>* doubts) {
    if (text.size() > kMaxItemLength) {
        doubts->push_back(itemFrom(text).name.substr(0, kMaxItemLength) +
                          ": the item is longer than " + std::to_string(kMaxItemLength) +
                          " bytes and is not compared");
    }
    if (text.find(':') == std::string::npos) {
        doubts->push_back("\"" + text.substr(0, kMaxItemLength) +
                          "\" has no colon, so it is a name without a value");
    }
}

}  // namespace

std::vector<std::string> doubtsAbout(const std::vector<std::string>& items,
                                     const std::vector<Item>& board) {
    std::vector<std::string> doubts;
    std::vector<std::string> names = {kOverlayId};
    for (const Item& part : board) names.push_back(part.name);
    std::map<std::string, int> seen;
    for (const std::string& text : items) {
        const Item item = itemFrom(text);
        addFlaws(text, &doubts);
        if (++seen[item.name] == 2) {
            doubts.push_back(item.name + " is named more than once, " +
                             (item.name == kOverlayId ? "and each has to list the board's"
                                                      : "the last one counts"));
        }
        const auto part = std::find_if(board.begin(), board.end(),
                                       [&item](const Item& p) { return p.name == item.name; });
        if (part != board.end()) {
            if (part->value != "null") addInnerWords(*part, item, &doubts);
        } else if (!board.empty() && item.name != kOverlayId) {
            doubts.push_back("there is no part \"" + item.name.substr(0, kMaxItemLength) +
                             "\", the nearest name is \"" + nearest(item.name, names) + "\"");
        }
    }
    return doubts;
}

}  // namespace tarq::tools
