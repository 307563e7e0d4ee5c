// What a probe found is not in its result: it stands in the lines before that, in words of its own
// for each kind of part. It is read from there and then held against the list and the board, as the
// daemon did it, so that a line which belongs to another request is found out.
#include <stdlib.h>

#include <algorithm>
#include <string_view>

#include "hardware_info/text.h"
#include "tools/tarqctl/match/facts.h"

namespace tarq::tools {

using Texts = std::vector<std::string>;

void require(bool holds) {
    if (!holds) throw Outcome::kBroken;
}

namespace {

// The arguments of all such lines.
std::vector<Texts> told(const FactLines& lines, Fact fact) {
    std::vector<Texts> arguments;
    for (const FactLine& line : lines) {
        if (line.fact == fact) arguments.push_back(line.arguments);
    }
    return arguments;
}

// As the daemon takes lists apart: an empty element counts, one behind the last separator does not.
Texts elementsOf(const std::string& list, char separator) {
    Texts elements;
    std::string_view element;
    for (Pieces pieces(list, separator); pieces.next(&element);) elements.emplace_back(element);
    return elements;
}

// Where the panel stands in the board's list, of which each entry is IC-ID; the end if nowhere.
size_t positionOf(int panelId, const Texts& entries) {
    size_t position = 0;
    for (; position < entries.size(); ++position) {
        const Texts fields = elementsOf(entries[position], '-');
        if (fields.size() > 1 && atoi(fields[1].c_str()) == panelId) break;
    }
    return position;
}

// Nothing where it is not told: by reg, or in a log without debug lines. A panel tells its id by a
// flag, or by the levels of two pins, of which the first counts two.
std::optional<int> panelIdIn(const FactLines& probing, const std::string& by) {
    const std::vector<Texts> flags = told(probing, Fact::kPanelFlag);
    const std::vector<Texts> pins = told(probing, Fact::kPanelPin);
    if (by == "hwid-flag" && !flags.empty()) return strtoul(flags[0][0].c_str(), nullptr, 16);
    if (by == "dsi-id" && pins.size() == 2)
        return 2 * atoi(pins[0][1].c_str()) + atoi(pins[1][1].c_str());
    return std::nullopt;
}

// The panel found is the entry behind those that were passed over. Its id must say the same.
void findPanel(const FactLines& probing, const std::string& list, ProbeFinding* found) {
    const std::vector<Texts> ways = told(probing, Fact::kPanelIdBy);
    require(ways.size() == 1);
    if (ways[0].empty()) return require(!found->answered);
    const Texts entries = elementsOf(list, ',');
    const size_t position = told(probing, Fact::kPanelPassedOver).size();
    const std::optional<int> id = panelIdIn(probing, ways[0][0]);
    require(!id || positionOf(*id, entries) == position);
    require(found->answered == (position < entries.size()));
    if (found->answered) found->part = entries[position];
    found->how = "panel id " + (id ? std::to_string(*id) + " " : "") + "by " + ways[0][0];
}

}  // namespace

// A camera's name is not in the log, so whether the list has it follows from the result alone, and
// only where no words decide.
ProbeFinding probeFinding(const Item& part, const ItemFinding& finding, const FactLines& probing,
                          bool match) {
    ProbeFinding found;
    found.answered = told(probing, Fact::kProbeFailed).empty();
    if (part.name == kTouchPanel) {
        const std::vector<Texts> parts = told(probing, Fact::kTouchPanelFound);
        require(found.answered == !parts.empty());
        if (found.answered) found.part = parts[0][0];
    } else if (part.name == kDisplay) {
        findPanel(probing, part.value, &found);
    }
    const bool wordsFit = part.value != kNoPart && finding.missingWords.empty();
    if (found.part) {
        const Texts elements = elementsOf(finding.item.value, ',');
        found.listed = std::count(elements.begin(), elements.end(), *found.part) > 0;
    } else if (!wordsFit) {
        found.listed = match;  // nothing else can have made it one
    }
    require(match == (wordsFit || found.listed.value_or(false)));
    return found;
}

}  // namespace tarq::tools
