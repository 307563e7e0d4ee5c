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

// Of these parts the daemon asks the hardware as well, whatever the words of the list say, and logs
// the result on a line of its own.
constexpr Probe kProbes[] = {
        {kTouchPanel, Fact::kTouchPanelResult},
        {kDisplay, Fact::kDisplayResult},
        {kCamera, Fact::kCameraResult},
};

int64_t numberFrom(const std::string& text) {
    return strtoll(text.c_str(), nullptr, 10);
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
        while (!isOver() && isOfProbe(mFacts[mNext].fact)) lines.push_back(mFacts[mNext++]);
        return lines;
    }

  private:
    const FactLines& mFacts;
    const bool mIsLast;
    size_t mNext = 0;
};

// Words are compared as parts of the text, as the daemon does it: "gt" is found in "gt9xx".
void examinePart(const Item& part, FactWalk& walk, ItemFinding& finding) {
    const std::string& package = finding.item.value;
    bool differs = package != kNoPart;
    if (part.value != kNoPart) {
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

// An overlay id that is not listed ends the request; a part that does not fit does not.
void examine(const MatchRequest& request, FactWalk& walk, ItemFinding& finding) {
    const auto& [name, value] = finding.item;
    finding.tooLong = finding.text.size() > kMaxItemLength;
    if (finding.tooLong) walk.expect(Fact::kItemTooLong);
    if (finding.text.find(':') == std::string::npos) walk.expect(Fact::kItemWithoutColon);
    const Item* part = partOf(request, name);
    if (name == kOverlayId && request.overlayId != kNoOverlay) {
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

// True for a package that passes. A time is told for each part that the timestamp file lists; the
// latest of them counts. An end that is no fact of the fallback means that a line is lost.
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

// No line says that all parts fit. A yes ends with the last item, so it is proved by what does not
// follow.
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

// In the order of the board, of which the daemon names the first.
std::vector<const Item*> misfits(const MatchRequest& request) {
    std::vector<const Item*> parts;
    for (const Item& part : request.board) {
        if (part.value == kNoPart) continue;
        const ItemFinding* finding = findingOf(request, part.name);
        if (finding == nullptr || !fits(*finding)) parts.push_back(&part);
    }
    return parts;
}

}  // namespace tarq::tools
