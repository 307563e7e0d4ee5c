// Lines of the log, as `logcat -v threadtime` writes them, and texts in them by the pattern with
// which the daemon's printf made them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarq::tools {

// As it stands there, with nothing escaped: whoever prints it has to do that.
struct LogLine {
    std::string time;  // "01-02 03:04:05.006", of the board
    int pid;
    int tid;
    char priority;    // one of V D I W E F S ?
    std::string tag;  // without the blanks that fill it up to eight characters
    std::string text;
};

// Nothing if the line is of another shape: a reader passes such a line on as it is. A sanitizer's
// report and the output of a child of the daemon are in the same file.
std::optional<LogLine> parseLogLine(const std::string& line);

bool isPriority(char letter);
// Where the tag ends in what follows the priority and a blank: at ": ". A tag is filled up to eight
// characters, among which there may be one. npos when it does not end.
size_t endOfTag(std::string_view text);

// The escape sequence that the log itself uses for the priority; empty for the terminal's colour.
const char* colourOf(char priority);

// The arguments if the text was printed with the pattern, each as short as it can be. The pattern's
// conversions are %s, %d, %u and %x, with or without a length such as z. Nothing for any other
// text. Where two readings are possible, as with a %s that may hold what follows it, the first
// place counts, but for the literal at the very end, for which the last does.
std::optional<std::vector<std::string>> printedArguments(const char* pattern,
                                                         const std::string& text);

// The lines that the log makes of a text: it cuts a long one and begins a line behind a newline. Of
// an empty text it makes one empty line. A text ends at its first NUL, as printf takes it.
std::vector<std::string> asLogged(const std::string& text);

}  // namespace tarq::tools
