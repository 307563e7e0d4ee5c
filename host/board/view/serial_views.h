// What a user sees of the serial line. All of it throws std::exception with the reason when there
// is nothing to show.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace tarq::board {

// Prints the frames of the running board's line, then how many there were each way. follows: goes
// on instead, until the process is told to end.
void printSerial(const std::filesystem::path& board, bool follows, bool asJson);

// The same for hexadecimal text, in a file or, for "-", from standard input. Throws
// std::runtime_error, "FILE:LINE:COLUMN: what is wrong", before anything is printed.
void printAsh(const std::string& file, bool asJson);

// Adds both to the program's commands. showBoard and show are set when one was given.
void declareSerialViews(CLI::App& app, std::function<void(const std::string& board)>* showBoard,
                        std::function<void()>* show);

}  // namespace tarq::board
