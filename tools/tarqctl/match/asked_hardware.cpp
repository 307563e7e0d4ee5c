#include "tools/tarqctl/match/asked_hardware.h"

#include <algorithm>

#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/match/facts.h"

namespace tarq::tools {

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

}  // namespace tarq::tools
