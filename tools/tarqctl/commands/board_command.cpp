// board: what the board plays at present, and what was done to it. A GPIO line has its files only
// while it is exported, as on a device, so it is absent before that. A part that is no file, such
// as the receiver, has no path.
#include <CLI/App.hpp>
#include <algorithm>
#include <ostream>

#include "host/run/text.h"
#include "tools/tarqctl/ask/board.h"
#include "tools/tarqctl/commands.h"

namespace tarq::tools {

// Two blanks are between columns. Names and paths are ASCII once they are escaped, but for what a
// user has put there.
static std::string cell(const std::string& text, size_t width) {
    return text + std::string(width - text.size() + 2, ' ');
}

// Its title is a row like any other. No state is wider than ten characters. A node without a fault
// has a dash, so that those with one are seen.
static std::string tableOf(std::vector<host::NodeState> nodes) {
    nodes.insert(nodes.begin(), {"node", "path", "state", "fault"});
    for (host::NodeState& node : nodes) {
        for (std::string* text : {&node.name, &node.path}) *text = host::escaped(*text);
    }
    size_t names = 0;
    size_t paths = 0;
    for (const host::NodeState& node : nodes) {
        names = std::max(names, node.name.size());
        paths = std::max(paths, node.path.size());
    }
    std::string text;
    for (const host::NodeState& node : nodes) {
        text += cell(node.name, names) + cell(node.path, paths) + cell(node.state, 10) +
                (node.fault == "none" ? "-" : node.fault) + (node.isHeld ? ", held" : "") + "\n";
    }
    return text;
}

// The JSON is what the board has answered, with its directory in front. Without FUSE the reason is
// the system's, so it may hold anything and is escaped. A board that cannot be asked is exit code
// 2, like any question that has no answer.
static int board(Session& session) {
    openBoard(session);
    host::BoardState state;
    std::string hint;
    const std::string why = askState(session, &state, &hint);
    if (!why.empty()) throw session.failure("no_board", why, hint);
    if (session.json) {
        Json json = {{"directory", session.board.directory}};
        json.update(Json::parse(host::boardStateLine(state)));
        printJson(session.out, json);
        return kDone;
    }
    const std::string played =
            state.withoutFuse.empty()
                    ? "by FUSE"
                    : "by plain files, which play no GPIO, camera or fault: " + state.withoutFuse;
    session.out << host::escaped(session.board.directory) + " is played " + host::escaped(played) +
                           "\n\n" + tableOf(state.nodes)
                << std::flush;
    return kDone;
}

Run declareBoard(CLI::App&) {
    return board;
}

}  // namespace tarq::tools
