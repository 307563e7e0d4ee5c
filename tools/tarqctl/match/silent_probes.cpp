// A probe that finds nothing says so to the daemon's log, and the daemon goes on as if nothing were
// fitted. On a board that has ended, or that plays plain files where a probe needs more, that is no
// finding. So those answers that rest on it are taken back, and only those: of any other part the
// words of the list have decided.
#include "tools/tarqctl/match/silent_probes.h"

#include <ctype.h>

#include <algorithm>

#include "tools/tarqctl/ask/board.h"

namespace tarq::tools {

// The kind of part that a section of the timestamp file names, and the hardware did not tell. The
// section of a part has the part's name in capitals.
static std::string silentSection(const FallbackFinding& fallback) {
    if (!fallback.end || fallback.end->fact != Fact::kTimestampFileWrong) return "";
    if (fallback.end->arguments.empty()) return "";
    const std::string& section = fallback.end->arguments[0];
    for (const char* part : {kTouchPanel, kDisplay, kCamera}) {
        std::string kind = part;  // in capitals there
        std::transform(kind.begin(), kind.end(), kind.begin(), toupper);
        if (section.rfind(kind + " ", 0) == 0) return part;
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

// What the probe of a part needs besides files that can be plain.
struct Needs {
    const char* part;
    const char* path;  // how the paths begin
};
static constexpr Needs kNeeds[] = {
        {kDisplay, "/sys/class/gpio/"},
        {kCamera, "/dev/v4l-subdev"},
};

static bool isNeeded(const host::NodeState& node, const std::vector<std::string>& parts) {
    return std::any_of(std::begin(kNeeds), std::end(kNeeds), [&](const Needs& needs) {
        return node.path.rfind(needs.path, 0) == 0 &&
               std::count(parts.begin(), parts.end(), needs.part) > 0;
    });
}

// A board with a fault on a node plays that as it should, so the answer counts: only what cannot be
// played does not.
std::string whyNotAsked(const Session& session, const std::vector<std::string>& parts,
                        std::string* hint) {
    if (parts.empty()) return "";
    host::BoardState board;
    std::string why = askState(session, &board, hint);
    if (!why.empty()) return why;
    *hint = session.next("board");
    for (const host::NodeState& node : board.nodes) {
        if (node.state == host::kNotPlayed && isNeeded(node, parts)) {
            return "the board plays plain files without " + node.path + ": " + board.withoutFuse;
        }
    }
    return "";
}

// Where the answer would be the same without those probes it stays, and only the rows are taken
// back.
void withhold(const SilentProbes& silent, const std::string& why, Explanation* explanation) {
    std::string names;
    for (const std::string& part : silent.parts) names += (names.empty() ? "" : ", ") + part;
    const std::string cause = "could not ask what is fitted as " + names + ": " + why;
    if (silent.decide) {
        const std::string& service = explanation->service.value_or("");
        explanation->sentence =
                cause + "; the service says " + service + ": " + explanation->sentence;
        explanation->verdict = "unknown";
    } else {
        explanation->sentence += "; " + cause + ", so that counts as no";
    }
    for (ExplainedRow& row : explanation->rows) {
        const bool isSilent = std::count(silent.parts.begin(), silent.parts.end(), row.name) > 0;
        if (!isSilent || row.verdict != Verdict::kMisfit) continue;
        row.verdict = Verdict::kUnknown;
        row.better.clear();
    }
}

}  // namespace tarq::tools
