// The sentences of an explanation. The first says what came of it: the parts, then the fallback if
// that was asked. The notes are about a yes that rests on less than one might think, and about
// what is probably not meant.
#include "tools/tarqctl/match/explanation.h"

#include <algorithm>

namespace tarq::tools {

namespace {

struct FallbackWords {
    std::string clause;  // behind the count of the parts
    std::string row;
};

// The clause goes on with the sentence, the row stands below the table.
FallbackWords wordsFor(const FallbackFinding& fallback) {
    if (!fallback.end) return {};
    const FactLine& end = *fallback.end;
    const std::string of = fallback.earliestKind.empty() ? "" : " of " + fallback.earliestKind;
    const std::string package = "the package's time, " + std::to_string(fallback.packageTime);
    const std::string earliest =
            " later than the earliest time" + of + ", " + std::to_string(fallback.earliestTime);
    switch (end.fact) {
        case Fact::kFallbackOff:
            return {", and the timestamp fallback is off",
                    "off: " + end.arguments[0] + " is not \"true\""};
        case Fact::kOtherCamera:
            return {", and the timestamp fallback is not for this camera",
                    "refused: it is only for boards with camera gc5035, or without one"};
        case Fact::kNoPackageTime:
            return {", and there is no package time for the fallback",
                    "refused: nobody has handed over the package's time"};
        case Fact::kNotListed:
            return {", but the timestamp file lists none of them",
                    "passed: the timestamp file lists none of the board's parts"};
        case Fact::kTooEarly:
            return {", and the package is not late enough for the fallback",
                    "refused: " + package + ", is not" + earliest};
        case Fact::kLater:
            return {", but the package is late enough for the fallback",
                    "passed: " + package + ", is" + earliest};
        default:
            return {", and the timestamp file is of no use", "refused: \"" + end.text + "\""};
    }
}

bool endedWith(Fact fact, const FallbackFinding& fallback) {
    return fallback.end && fallback.end->fact == fact;
}

// Parts that the board lists; a package need not name any other.
size_t partCount(const MatchRequest& request) {
    return static_cast<size_t>(
            std::count_if(request.board.begin(), request.board.end(),
                          [](const Item& part) { return part.value != kNoPart; }));
}

// "all 5 board parts fit", "2 of 5 board parts do not fit"; what decides it is not told here but in
// the rows.
std::string partsClause(const MatchRequest& request) {
    const size_t count = partCount(request);
    const size_t unfit = misfits(request).size();
    if (count == 0) return "the board lists no parts";
    const std::string parts = std::to_string(count) + " board part" + (count > 1 ? "s" : "");
    if (unfit == 0) return count > 1 ? "all " + parts + " fit" : parts + " fits";
    return std::to_string(unfit) + " of " + parts + (unfit > 1 ? " do" : " does") + " not fit";
}

// Whether a list says nothing of the overlay id that the board has.
bool lacksOverlay(const MatchRequest& request) {
    return request.overlayId != kNoOverlay && findingOf(request, kOverlayId) == nullptr;
}

// Outcomes that prove nothing come first, since the rest of the request means nothing then.
std::string sentenceFor(const MatchRequest& request) {
    if (!request.skippedBecause.empty()) {
        return "nothing was compared: " + request.skippedBecause;
    }
    if (request.outcome == Outcome::kCutOff) {
        return "the request was cut off at the end of the log, or lines of it are missing";
    }
    if (request.outcome == Outcome::kBegunBefore) {
        return "the request began before the log does, or its first line is missing";
    }
    if (request.outcome == Outcome::kPruned) {
        return request.dropped + " before the end of the request was seen";
    }
    if (request.outcome == Outcome::kMixed) {
        return "lines are missing, or another request got in between, which only a log with thread "
               "ids can tell apart (logcat -v threadtime)";
    }
    if (request.outcome == Outcome::kBroken) {
        return "lines of the request are missing, or are not what this tool knows";
    }
    if (request.outcome == Outcome::kNotExplained) {
        return "the list holds lines like the daemon's own, so it is not explained";
    }
    if (!request.itemsDone) {
        return "the package is not for overlay id " + request.overlayId +
               ", which ends the check at once";
    }
    const bool isOpen = request.outcome == Outcome::kYes && lacksOverlay(request);
    return partsClause(request) + wordsFor(request.fallback).clause +
           (isOpen ? "; the overlay was not compared" : "") +
           (request.disturbed ? "; another request at the same time got in between, ask again"
                              : "");
}

// What a yes does not rest on. A strict reader refuses a yes for any of these.
std::vector<std::string> notCompared(const MatchRequest& request) {
    if (!request.skippedBecause.empty()) return {sentenceFor(request)};
    std::vector<std::string> texts;
    const ItemFinding* overlay = findingOf(request, kOverlayId);
    if (overlay != nullptr && !overlay->overlayFits) {
        texts.emplace_back("overlay ids were not compared: the board has none");
    } else if (lacksOverlay(request)) {
        texts.push_back("the overlay was not compared: no item is " + std::string(kOverlayId) +
                        ", the board's is " + request.overlayId);
    }
    if (partCount(request) == 0) {
        texts.emplace_back("no part was compared: the board lists none");
    }
    if (endedWith(Fact::kNotListed, request.fallback)) {
        texts.emplace_back(
                "no time was compared: the timestamp file lists none of the board's parts");
    }
    return texts;
}

// Times of one unit lie within a factor of two; seconds and milliseconds do not.
bool haveDifferentUnits(const FallbackFinding& fallback) {
    const auto [less, more] = std::minmax(fallback.packageTime, fallback.earliestTime);
    return less > 0 && more / less >= 100;
}

}  // namespace

// The advice about the time is given only where it alone kept the package from passing, and where a
// greater time exists.
Explanation explain(const MatchRequest& request) {
    Explanation explanation;
    const bool yes = request.outcome == Outcome::kYes;
    explanation.verdict = yes ? "yes" : request.outcome == Outcome::kNo ? "no" : "unknown";
    explanation.sentence = sentenceFor(request);
    explanation.rows = explainedRows(request);
    const FallbackFinding& fallback = request.fallback;
    explanation.fallback = wordsFor(fallback).row;
    if (endedWith(Fact::kTooEarly, fallback) && fallback.earliestTime < INT64_MAX) {
        explanation.requiredTime = fallback.earliestTime + 1;
    }
    if (yes) explanation.notCompared = notCompared(request);
    std::vector<std::string> items;
    for (const ItemFinding& finding : request.items) items.push_back(finding.text);
    explanation.doubts = doubtsAbout(items, request.board);
    if (haveDifferentUnits(fallback)) {
        explanation.doubts.push_back({"the package's time " + std::to_string(fallback.packageTime) +
                                      " and the timestamp file's " +
                                      std::to_string(fallback.earliestTime) +
                                      " seem to have different units, such as s and ms"});
    }
    return explanation;
}

}  // namespace tarq::tools
