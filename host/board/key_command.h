// virtual_board key: keys of a remote control.
#pragma once

#include <CLI/App.hpp>
#include <filesystem>
#include <functional>

namespace tarq::board {

// Adds the command. When it is given, *play plays the keys on a running board, whose directory it
// is given. That throws Refusal when one was not heard, and std::exception when it could not ask.
void declareKey(CLI::App& app, std::function<void(const std::string& board)>* play);

}  // namespace tarq::board
