// How a command reaches a running board: the socket run/board.sock, which only its owner may use.
// A connection is one command: the user's side sends a packet with its words, each ended by a zero
// byte, and the board one with the answer, "+" and what it tells, or "-" and the reason.
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

// Has a board do it: {"set", "gpio42", "1"}; {"board"} tells its state, see board_state.h. Returns
// when it is done, or will not be. EMSGSIZE for more than a packet holds; EAGAIN when no answer
// came within the patience, in s, 0 being none.
Answer askBoard(const Board& board, const std::vector<std::string>& words, int patience = 0);

// ---- the board's side of a connection ----

// No words when none come.
std::vector<std::string> receiveCommand(int fd);
void sendAnswer(int fd, const Answer& answer);

}  // namespace tarq::host
