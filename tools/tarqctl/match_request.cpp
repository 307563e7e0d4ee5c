#include "tools/tarqctl/match_request.h"

#include <algorithm>

namespace tarq::tools {

Item itemFrom(const std::string& text) {
    const size_t colon = text.find(':');
    return {text.substr(0, colon), colon == std::string::npos ? "" : text.substr(colon + 1)};
}

bool fits(const ItemFinding& finding) {
    if (!finding.examined || finding.tooLong) return false;
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
