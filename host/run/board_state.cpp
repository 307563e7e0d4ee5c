#include "host/run/board_state.h"

#include <nlohmann/json.hpp>

namespace tarq::host {

using Json = nlohmann::ordered_json;

static Json orNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

static std::string orEmpty(const Json& json) {
    return json.is_null() ? "" : json.get<std::string>();
}

std::string boardStateLine(const BoardState& board) {
    Json nodes = Json::array();
    for (const NodeState& node : board.nodes) {
        nodes.push_back({{"name", orNull(node.name)},
                         {"path", orNull(node.path)},
                         {"state", node.state},
                         {"fault", node.fault},
                         {"held", node.isHeld}});
    }
    const Json json = {{"played_by", board.withoutFuse.empty() ? "fuse" : "plain_files"},
                       {"reason", orNull(board.withoutFuse)},
                       {"nodes", nodes}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

bool parseBoardState(const std::string& line, BoardState* board) {
    try {
        const Json json = Json::parse(line);
        *board = {orEmpty(json.at("reason"))};
        for (const Json& node : json.at("nodes")) {
            board->nodes.push_back({orEmpty(node.at("name")), orEmpty(node.at("path")),
                                    node.at("state").get<std::string>(),
                                    node.at("fault").get<std::string>(),
                                    node.at("held").get<bool>()});
        }
        return true;
    } catch (const Json::exception&) {
        return false;
    }
}

}  // namespace tarq::host
