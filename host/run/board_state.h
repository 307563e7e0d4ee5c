// What a running board plays at present: its answer to "board", one line of JSON.
//
//     {"played_by":"fuse","reason":null,"nodes":[{"name":"touch_panel",
//      "path":"/sys/class/tpinfo/tpinfo_ic_info","state":"there","fault":"none","held":false},…]}
//
// Without FUSE it is played by "plain_files", and the reason is the system's.
#pragma once

#include <string>
#include <vector>

namespace tarq::host {

// A file of the hardware, or a part that is no file.
struct NodeState {
    std::string name;  // what people call it; "" where they have no name
    std::string path;  // on the device; "" for what is no file
    std::string state;
    std::string fault = "none";
    bool isHeld = false;
};

// The states.
constexpr char kThere[] = "there";
constexpr char kNotThere[] = "absent";
constexpr char kNotPlayed[] = "not played";  // fitted, but plain files cannot stand in for it

struct BoardState {
    std::string withoutFuse = {};  // why there are plain files only; "" when the hardware is played
    std::vector<NodeState> nodes = {};
};

// Without a newline, and back again. False when the line is none.
std::string boardStateLine(const BoardState& board);
bool parseBoardState(const std::string& line, BoardState* board);

}  // namespace tarq::host
