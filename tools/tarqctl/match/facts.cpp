// The list and the board say what the daemon must tell of each item, so those facts are awaited in
// their order: another one means that lines are lost, or that the list was not seen whole. All else
// is worked out again as the daemon does it. What the log does not prove stays unknown. A yes has
// no line of its own: it takes every fact, and no word of a part that is unmatched.
#include "tools/tarqctl/match/facts.h"

#include <stdlib.h>

#include <algorithm>

#include "hardware_info/text.h"

namespace tarq::tools {

namespace {

using Texts = std::vector<std::string>;

struct Probe {
    const char* part;
    Fact result;
};

constexpr Probe kProbes[] = {
        {kTouchPanel, Fact::kTouchPanelResult},
        {kDisplay, Fact::kDisplayResult},
        {kCamera, Fact::kCameraResult},
};

bool isProbing(Fact fact) {
    return fact >= Fact::kProbeFailed && fact <= Fact::kPanelPassedOver;
}

int64_t numberFrom(const std::string& text) {
    return strtoll(text.c_str(), nullptr, 10);
}

void require(bool holds) {
    if (!holds) throw Outcome::kBroken;
}

// Walks through the facts of a request. Throws an Outcome where they end, or are others than they
// have to be.
class FactWalk {
  public:
    FactWalk(const FactLines& facts, bool isLast) : mFacts(facts), mIsLast(isLast) {}

    bool isOver() const { return mNext == mFacts.size(); }
    const FactLine& take() {
        if (isOver()) throw mIsLast ? Outcome::kCutOff : Outcome::kBroken;
        return mFacts[mNext++];
    }
    const FactLine& expect(Fact fact) {
        const FactLine& line = take();
        require(line.fact == fact);
        return line;
    }
    // What a probe tells, if it goes on here.
    FactLines takeProbing() {
        FactLines lines;
        while (!isOver() && isProbing(mFacts[mNext].fact)) lines.push_back(mFacts[mNext++]);
        return lines;
    }

  private:
    const FactLines& mFacts;
    const bool mIsLast;
    size_t mNext = 0;
};

// The arguments of all such lines.
std::vector<Texts> told(const FactLines& lines, Fact fact) {
    std::vector<Texts> arguments;
    for (const FactLine& line : lines) {
        if (line.fact == fact) arguments.push_back(line.arguments);
    }
    return arguments;
}

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

// Nothing where it is not told: by reg, or in a log without debug lines.
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
    const bool wordsFit = part.value != "null" && finding.missingWords.empty();
    if (found.part) {
        const Texts elements = elementsOf(finding.item.value, ',');
        found.listed = std::count(elements.begin(), elements.end(), *found.part) > 0;
    } else if (!wordsFit) {
        found.listed = match;  // nothing else can have made it one
    }
    require(match == (wordsFit || found.listed.value_or(false)));
    return found;
}

void examinePart(const Item& part, FactWalk& walk, ItemFinding& finding) {
    const std::string& package = finding.item.value;
    bool differs = package != "null";
    if (part.value != "null") {
        for (const std::string& word : tokensOf(part.value)) {
            if (package.find(word) == std::string::npos) finding.missingWords.push_back(word);
        }
        differs = !finding.missingWords.empty();
    }
    if (differs) walk.expect(Fact::kPartDiffers);
    for (const Probe& probe : kProbes) {
        if (part.name != probe.part) continue;
        const FactLines probing = walk.takeProbing();
        const bool match = walk.expect(probe.result).arguments[0] == "match";
        finding.probe = probeFinding(part, finding, probing, match);
    }
}

void examine(const MatchRequest& request, FactWalk& walk, ItemFinding& finding) {
    const auto& [name, value] = finding.item;
    finding.tooLong = finding.text.size() > kMaxItemLength;
    if (finding.tooLong) walk.expect(Fact::kItemTooLong);
    if (finding.text.find(':') == std::string::npos) walk.expect(Fact::kItemWithoutColon);
    const Item* part = partOf(request, name);
    if (name == kOverlayId && request.overlayId != "-1") {
        finding.tooLong = value.size() > kMaxOverlayValueLength;
        finding.overlayFits =
                !finding.tooLong && includesId(value, atoi(request.overlayId.c_str()));
        const std::string included = walk.expect(Fact::kOverlayResult).arguments[0];
        require((included == "1") == finding.overlayFits);
    } else if (part != nullptr && !finding.tooLong) {
        examinePart(*part, walk, finding);
    }
    finding.examined = true;
}

// True for a package that passes.
bool readFallback(FactWalk& walk, FallbackFinding* fallback) {
    walk.takeProbing();
    FactLine line = walk.take();
    while (line.fact == Fact::kTimestampKind) {
        const int64_t time = numberFrom(walk.expect(Fact::kTimestampEarliest).arguments[0]);
        if (time > fallback->earliestTime) {
            fallback->earliestTime = time;
            fallback->earliestKind = line.arguments[0];
        }
        line = walk.take();
    }
    require(line.fact >= Fact::kFallbackOff);
    fallback->end = line;
    if (line.fact == Fact::kTooEarly || line.fact == Fact::kLater) {
        fallback->packageTime = numberFrom(line.arguments[0]);
        require(fallback->earliestTime == numberFrom(line.arguments[1]));
    }
    return line.fact == Fact::kNotListed || line.fact == Fact::kLater;
}

Outcome follow(FactWalk& walk, MatchRequest* request) {
    for (ItemFinding& finding : request->items) {
        examine(*request, walk, finding);
        if (!finding.overlayFits.value_or(true)) return Outcome::kNo;
    }
    request->itemsDone = true;
    const std::vector<const Item*> unfit = misfits(*request);
    if (walk.isOver() && (unfit.empty() || request->listIsKnown)) {
        request->disturbed = !unfit.empty();
        return Outcome::kYes;
    }
    const std::string& unmatched = walk.expect(Fact::kPartUnmatched).arguments[0];
    request->disturbed = unfit.empty() || unfit[0]->name != unmatched;
    // Where it is only not the first, the line of an item may be lost that names the first.
    const bool isUnfit = std::any_of(unfit.begin(), unfit.end(),
                                     [&](const Item* part) { return part->name == unmatched; });
    require(!request->disturbed || !isUnfit || request->listIsKnown);
    return readFallback(walk, &request->fallback) ? Outcome::kYes : Outcome::kNo;
}

}  // namespace

void readFacts(const FactLines& facts, bool isLast, MatchRequest* request) {
    FactWalk walk(facts, isLast);
    try {
        request->outcome = follow(walk, request);
    } catch (const Outcome outcome) {
        request->outcome = outcome;
    }
}

Item itemFrom(const std::string& text) {
    const size_t colon = text.find(':');
    return {text.substr(0, colon), colon == std::string::npos ? "" : text.substr(colon + 1)};
}

bool fits(const ItemFinding& finding) {
    if (finding.tooLong) return false;
    if (finding.overlayFits) return *finding.overlayFits;
    return finding.missingWords.empty() || (finding.probe && finding.probe->listed.value_or(false));
}

const Item* partOf(const MatchRequest& request, const std::string& name) {
    const auto part = std::find_if(request.board.begin(), request.board.end(),
                                   [&name](const Item& item) { return item.name == name; });
    return part == request.board.end() ? nullptr : &*part;
}

const ItemFinding* findingOf(const MatchRequest& request, const std::string& name) {
    const auto last =
            std::find_if(request.items.rbegin(), request.items.rend(),
                         [&name](const ItemFinding& finding) { return finding.item.name == name; });
    return last == request.items.rend() ? nullptr : &*last;
}

// The kind of part that a section of the timestamp file names, and the hardware did not tell.
static std::string silentSection(const FallbackFinding& fallback) {
    if (!fallback.end || fallback.end->fact != Fact::kTimestampFileWrong) return "";
    if (fallback.end->arguments.empty()) return "";
    const std::string& section = fallback.end->arguments[0];
    for (const Probe& probe : kProbes) {
        std::string kind = probe.part;  // in capitals there
        std::transform(kind.begin(), kind.end(), kind.begin(), toupper);
        if (section.rfind(kind + " ", 0) == 0) return probe.part;
    }
    return "";
}

// A no takes a part that does not fit and a fallback that refuses; a yes may come of a fallback
// that asks which camera there is, of which the log does not tell whether it answered.
SilentProbes silentProbes(const MatchRequest& request) {
    SilentProbes silent;
    if (!request.itemsDone) return silent;
    const FallbackFinding& fallback = request.fallback;
    const std::vector<const Item*> unfit = misfits(request);
    for (const Item* part : unfit) {
        const ItemFinding* finding = findingOf(request, part->name);
        const bool isSilent = finding != nullptr && finding->probe && !finding->probe->answered;
        if (isSilent) silent.parts.push_back(part->name);
    }
    const bool passed = request.outcome == Outcome::kYes;
    silent.decide = !passed && !unfit.empty() && silent.parts.size() == unfit.size();
    const std::string asked = passed && fallback.end ? kCamera : silentSection(fallback);
    if (!asked.empty()) {
        silent.parts.push_back(asked);
        silent.decide = true;
    }
    return silent;
}

std::vector<const Item*> misfits(const MatchRequest& request) {
    std::vector<const Item*> parts;
    for (const Item& part : request.board) {
        if (part.value == "null") continue;
        const ItemFinding* finding = findingOf(request, part.name);
        if (finding == nullptr || !fits(*finding)) parts.push_back(&part);
    }
    return parts;
}

}  // namespace tarq::tools
