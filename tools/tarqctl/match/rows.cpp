// The rows of an explanation: one item or part each, with the rule that decided. A part that does
// not fit has items that would: with the words that are missing, or with what the probe found. Some
// of what was not examined may not fit either.
#include <algorithm>

#include "hardware_info/text.h"
#include "tools/tarqctl/match/explanation.h"

namespace tarq::tools {

namespace {

using Texts = std::vector<std::string>;

std::string listOf(const Texts& texts) {
    std::string list;
    for (const std::string& text : texts) list += (list.empty() ? "\"" : ", \"") + text + "\"";
    return list;
}

// Empty where the log does not tell what the hardware said.
std::string probeReason(const ProbeFinding& probe, const std::string& package) {
    const std::string how = probe.how.empty() ? "" : " (" + probe.how + ")";
    if (!probe.answered) {
        return how.empty() ? "the probe found nothing usable"
                           : "the probe" + how + " found no entry of the board's list";
    }
    if (!probe.listed) return "";
    const std::string listed = *probe.listed ? "listed" : "not listed";
    if (!probe.part) return "what the probe found is " + listed;
    // A blank behind a comma belongs to the element.
    const bool nearly = !*probe.listed && package.find(*probe.part) != std::string::npos;
    return "probe says " + *probe.part + how + ", " + listed + (nearly ? " exactly so" : "");
}

// Of words that are missing those are told, else the ones that were found.
std::string wordsReason(const Item& part, const ItemFinding& finding) {
    if (!finding.missingWords.empty()) {
        return "no " + listOf(finding.missingWords) + " in \"" + finding.item.value + "\"";
    }
    const Texts words = tokensOf(part.value);
    return words.empty() ? "the board's value has no word" : "has " + listOf(words);
}

// Either is enough: words that do not fit are no reason where the probe does.
std::string comparedReason(const Item& part, const ItemFinding& finding) {
    const std::string probe = finding.probe ? probeReason(*finding.probe, finding.item.value) : "";
    if (!finding.missingWords.empty() && fits(finding)) return probe;
    return wordsReason(part, finding) + (probe.empty() ? "" : "; " + probe);
}

// The item with more in its value; alone where both would be too much, or "null" is the value.
std::string itemWith(const std::string& name, const std::string& value, const Texts& added,
                     size_t maxSize) {
    std::string addition;
    for (const std::string& text : added) addition += (addition.empty() ? "" : ",") + text;
    const bool replaced = value.empty() || value == kNoPart;
    const std::string item = name + ":" + (replaced ? "" : value + ",") + addition;
    return item.size() <= maxSize ? item : name + ":" + addition;
}

// Empty for a value of the board that no item can hold. Each of them alone would make the part fit.
Texts betterItems(const Item& part, const ItemFinding* finding) {
    const bool starts = finding == nullptr || finding->tooLong;
    const Texts words = starts ? tokensOf(part.value) : finding->missingWords;
    const std::string value = starts ? "" : finding->item.value;
    Texts better = {itemWith(part.name, value, words, kMaxItemLength)};
    if (finding != nullptr && finding->probe && finding->probe->part) {
        better.push_back(itemWith(part.name, value, {*finding->probe->part}, kMaxItemLength));
    }
    // One panel is fitted, however many the board lists.
    if (words.size() > 1) std::reverse(better.begin(), better.end());
    better.erase(std::unique(better.begin(), better.end()), better.end());
    const auto isTooLong = [](const auto& item) { return item.size() > kMaxItemLength; };
    better.erase(std::remove_if(better.begin(), better.end(), isTooLong), better.end());
    return better;
}

// Of what the daemon has not come to, or the log does not show.
Verdict notSeen(const MatchRequest& request) {
    return request.outcome == Outcome::kNo ? Verdict::kNotExamined : Verdict::kUnknown;
}

// The daemon looks at each overlay id of the list, so each has a row.
ExplainedRow overlayRow(const MatchRequest& request, const ItemFinding& finding) {
    const std::string& ids = finding.item.value;
    ExplainedRow row = {kOverlayId, request.overlayId, ids, notSeen(request), ""};
    if (request.overlayId == kNoOverlay) row.board.reset();
    if (!finding.examined) return row;
    if (!finding.overlayFits) {
        row.verdict = Verdict::kIgnored;
        row.reason = "the board has no overlay id";
    } else if (*finding.overlayFits) {
        row.verdict = Verdict::kFits;
        row.reason = request.overlayId + " is listed";
    } else {
        row.verdict = Verdict::kMisfit;
        row.reason = finding.tooLong ? "more than " + std::to_string(kMaxOverlayValueLength) +
                                               " bytes are not compared"
                                     : request.overlayId + " is not listed";
        row.better = {itemWith(kOverlayId, finding.tooLong ? "" : ids, {request.overlayId},
                               sizeof(kOverlayId) + kMaxOverlayValueLength)};
    }
    return row;
}

// A part that the board has. A part that no item names does not fit, but only once all items were
// seen.
ExplainedRow partRow(const MatchRequest& request, const Item& part, const ItemFinding* finding) {
    ExplainedRow row = {part.name, part.value, {}, notSeen(request), ""};
    if (finding != nullptr) row.package = finding->item.value;
    // Of a request that was not seen whole, the line of that item may be missing.
    if (finding == nullptr && row.verdict == Verdict::kUnknown &&
        request.outcome != Outcome::kYes) {
        row.reason = "no item of that name was seen";
        return row;
    }
    if (finding == nullptr ? !request.itemsDone : !finding->examined) return row;
    row.verdict = Verdict::kMisfit;
    if (finding == nullptr) {
        row.reason = "a package must name every part of the board";
    } else if (finding->tooLong) {
        row.reason =
                "an item of more than " + std::to_string(kMaxItemLength) + " bytes is not compared";
    } else {
        if (fits(*finding)) row.verdict = Verdict::kFits;
        row.reason = comparedReason(part, *finding);
    }
    if (row.verdict == Verdict::kMisfit) row.better = betterItems(part, finding);
    return row;
}

// The daemon passes over it, whatever its value is.
ExplainedRow ignoredRow(const MatchRequest& request, const ItemFinding& finding,
                        const std::string& reason) {
    ExplainedRow row = {finding.item.name, {}, finding.item.value, Verdict::kIgnored, reason};
    if (!finding.examined) row = {row.name, {}, row.package, notSeen(request), ""};
    return row;
}

}  // namespace

std::vector<ExplainedRow> explainedRows(const MatchRequest& request) {
    std::vector<ExplainedRow> rows;
    for (const ItemFinding& finding : request.items) {
        if (finding.item.name == kOverlayId) rows.push_back(overlayRow(request, finding));
    }
    for (const Item& part : request.board) {
        const ItemFinding* finding = findingOf(request, part.name);
        if (part.value != kNoPart) {
            rows.push_back(partRow(request, part, finding));
        } else if (finding != nullptr) {
            const bool isNeither = finding->item.value == kNoPart;
            rows.push_back(
                    ignoredRow(request, *finding,
                               isNeither ? "neither has one" : "the board lists no " + part.name));
        }
    }
    for (const ItemFinding& finding : request.items) {
        const std::string& name = finding.item.name;
        if (name == kOverlayId || partOf(request, name) != nullptr) continue;
        rows.push_back(ignoredRow(request, finding, "there is no such part"));
    }
    return rows;
}

}  // namespace tarq::tools
