// How a command reaches a running board: the socket run/board.sock, which only its owner may use.
// A connection is one command: the user's side sends a packet with its words, each ended by a zero
// byte, and the board one with the answer, "+" and what it tells, or "-" and the reason.
//
// The command "board" is answered with what the board plays at present, one line of JSON:
//
//     {"played_by":"fuse","reason":null,"nodes":[{"name":"touch_panel",
//      "path":"/sys/class/tpinfo/tpinfo_ic_info","state":"there","fault":"none","held":false},…]}
//
// Without FUSE it is played by "plain_files", and the reason is the system's.
#pragma once

#include <string>
#include <vector>

#include "host/run/board.h"

namespace tarq::host {

// What became of a command.
struct Answer {
    int error = 0;        // an errno when the board could not be asked, ECONNRESET when it ended
    bool isDone = false;  // else it was refused
    std::string reason = {};  // of the refusal
    std::string text = {};    // of what was done, where that tells something
};

// Has a board do it: {"set", "gpio42", "1"}. Returns when it is done, or will not be; a board that
// hangs is waited for, unless there is a patience, in s, behind which the error is EAGAIN. The
// error is EMSGSIZE for more than a packet holds, and ECONNREFUSED for a board that was killed,
// which leaves its socket.
Answer askBoard(const Board& board, const std::vector<std::string>& words, int patience = 0);

// ---- the board's side of a connection ----

// The words of the one command that comes; none when none does, be it that the user has gone or
// that the socket's own time is over.
std::vector<std::string> receiveCommand(int fd);
// A user who has gone meanwhile is no error: the command was carried out.
void sendAnswer(int fd, const Answer& answer);

// ---- what a board plays ----

// A file of the hardware, or a part that is no file. Its fault is told by the name that faults.h
// has for it, and "none" is one of them.
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

// Nodes by their paths, and behind them the parts that are no file.
struct BoardState {
    std::string withoutFuse = {};  // why there are plain files only; "" when the hardware is played
    std::vector<NodeState> nodes = {};
};

// Without a newline, and back again. False when the line is none, as of another version's board;
// what *board holds then means nothing.
std::string boardStateLine(const BoardState& board);
bool parseBoardState(const std::string& line, BoardState* board);

}  // namespace tarq::host
