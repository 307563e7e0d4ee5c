// Lines of the log, as `logcat -v threadtime` writes them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarq::tools {

struct LogLine {
    std::string time;  // "01-02 03:04:05.006", of the board
    int pid;
    int tid;
    char priority;    // one of V D I W E F S ?
    std::string tag;  // without the blanks that fill it up to eight characters
    std::string text;
};

// Nothing if the line is of another shape: a reader passes such a line on as it is.
std::optional<LogLine> parseLogLine(const std::string& line);

bool isPriority(char letter);
// Where the tag ends in what follows the priority and a blank: at ": ". A tag is filled up to eight
// characters, among which there may be one. npos when it does not end.
size_t endOfTag(std::string_view text);

// The escape sequence that the log itself uses for the priority; empty for the terminal's colour.
const char* colourOf(char priority);

}  // namespace tarq::tools
