// What a user sees of the LEDs of a running board, whose directory is given. All of it throws
// std::exception with the reason when there is nothing to show.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace tarq::board {

// What was asked for is known well, and the driver does not do it.
class Refusal : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Prints the records: "set_color 3 ff8000", or the lines of the file as they are. follows: goes on
// until the process is told to end.
void printTrace(const std::filesystem::path& board, bool follows, bool asJson);

// Shows the colours until the process is told to end: blocks on a terminal, which is left as it
// was; without one, or with NO_COLOR, a line of text for each change.
void watchLeds(const std::filesystem::path& board);

// Draws an effect: that of the file, which is one of the device or any other, or the one that is
// played, if no file is given. Throws Refusal for one that the driver does not take.
void drawEffect(const std::filesystem::path& board, const std::string& effectFile,
                const std::string& gif);

}  // namespace tarq::board
