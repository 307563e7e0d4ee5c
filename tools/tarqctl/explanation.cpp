#include "tools/tarqctl/explanation.h"

#include <algorithm>

namespace tarq::tools {

namespace {

std::string quoted(const std::string& text) {
    return "\"" + text + "\"";
}

std::string times(const FallbackFinding& finding) {
    const std::string of = finding.earliestKind.empty() ? "" : " of " + finding.earliestKind;
    return "the earliest time" + of + ", " + std::to_string(finding.earliestTime);
}

// What the fallback came to, for its row.
std::string fallbackRow(const FallbackFinding& finding) {
    const std::string package = "the package's time, " + std::to_string(finding.packageTime) + ", ";
    switch (finding.outcome) {
        case Fallback::NOT_REACHED:
            return "";
        case Fallback::OFF:
            return "off: " + finding.told + " is not \"true\"";
        case Fallback::OTHER_CAMERA:
            return "refused: it is only for boards with camera gc5035, or without one";
        case Fallback::NO_PACKAGE_TIME:
            return "refused: nobody has handed over the package's time";
        case Fallback::FILE_UNREADABLE:
        case Fallback::FILE_WRONG:
            return "refused: " + quoted(finding.told);
        case Fallback::NOT_LISTED:
            return "passed: the timestamp file lists none of the board's parts";
        case Fallback::TOO_EARLY:
            return "refused: " + package + "is not later than " + times(finding);
        case Fallback::LATER:
            return "passed: " + package + "is later than " + times(finding);
    }
    return "";
}

// The same in short, behind the count of the parts. By Fallback.
constexpr const char* kFallbackClauses[] = {
        "",
        ", and the timestamp fallback is off",
        ", and the timestamp fallback is not for this camera",
        ", and there is no package time for the fallback",
        ", and the timestamp file is of no use",
        ", and the timestamp file is of no use",
        ", but the timestamp file lists none of them",
        ", and the package is not late enough for the fallback",
        ", but the package is late enough for the fallback",
};

size_t partCount(const MatchRequest& request) {
    return static_cast<size_t>(
            std::count_if(request.board.begin(), request.board.end(),
                          [](const Item& part) { return part.value != "null"; }));
}

std::string partsClause(const MatchRequest& request) {
    const size_t count = partCount(request);
    const size_t unfit = misfits(request).size();
    if (count == 0) return "the board lists no parts";
    const std::string parts = std::to_string(count) + " board part" + (count > 1 ? "s" : "");
    if (unfit == 0) return count > 1 ? "all " + parts + " fit" : parts + " fits";
    return std::to_string(unfit) + " of " + parts + (unfit > 1 ? " do" : " does") + " not fit";
}

std::string sentenceFor(const MatchRequest& request) {
    if (!request.skippedBecause.empty()) {
        return "nothing was compared: " + request.skippedBecause;
    }
    if (request.outcome == Outcome::CUT_OFF) {
        return "the request was cut off at the end of the log";
    }
    if (request.outcome == Outcome::BROKEN) {
        return "lines of the request are missing, or are not what this tool knows";
    }
    if (!request.itemsDone) {
        return "the package is not for overlay id " + request.overlayId +
               ", which ends the check at once";
    }
    return partsClause(request) + kFallbackClauses[static_cast<size_t>(request.fallback.outcome)] +
           (request.disturbed ? "; another request at the same time got in between, ask again"
                              : "");
}

// Of a yes.
std::vector<std::string> notCompared(const MatchRequest& request) {
    if (!request.skippedBecause.empty()) return {sentenceFor(request)};
    std::vector<std::string> texts;
    const ItemFinding* overlay = findingOf(request, kOverlayId);
    if (overlay != nullptr && !overlay->overlayFits) {
        texts.emplace_back("overlay ids were not compared: the board has none");
    }
    if (partCount(request) == 0) {
        texts.emplace_back("no part was compared: the board lists none");
    }
    if (request.fallback.outcome == Fallback::NOT_LISTED) {
        texts.emplace_back(
                "no time was compared: the timestamp file lists none of the board's parts");
    }
    return texts;
}

// Times of one unit lie within a factor of two; seconds and milliseconds do not.
bool haveDifferentUnits(const FallbackFinding& finding) {
    const auto [less, more] = std::minmax(finding.packageTime, finding.earliestTime);
    return less > 0 && more / less >= 100;
}

}  // namespace

Explanation explain(const MatchRequest& request) {
    Explanation explanation;
    const bool yes = request.outcome == Outcome::YES;
    explanation.verdict = yes ? "yes" : request.outcome == Outcome::NO ? "no" : "unknown";
    explanation.sentence = sentenceFor(request);
    explanation.rows = explainedRows(request);
    const FallbackFinding& fallback = request.fallback;
    explanation.fallback = fallbackRow(fallback);
    if (fallback.outcome == Fallback::TOO_EARLY && fallback.earliestTime < INT64_MAX) {
        explanation.requiredTime = fallback.earliestTime + 1;
    }
    if (yes) explanation.notCompared = notCompared(request);
    std::vector<std::string> items;
    for (const ItemFinding& finding : request.items) items.push_back(finding.text);
    explanation.doubts = doubtsAbout(items, request.board);
    if (haveDifferentUnits(fallback)) {
        explanation.doubts.push_back("the package's time " + std::to_string(fallback.packageTime) +
                                     " and the timestamp file's " +
                                     std::to_string(fallback.earliestTime) +
                                     " seem to have different units, such as s and ms");
    }
    return explanation;
}

}  // namespace tarq::tools
