#include "tools/tarqctl/log/log_line.h"

#include <stdio.h>
#include <string.h>

namespace tarq::tools {

// A tag is filled up to eight characters; ": " ends it, and may occur within those eight.
static constexpr size_t kTagWidth = 8;

std::optional<LogLine> parseLogLine(const std::string& line) {
    char date[6];
    char clock[13];
    LogLine parsed = {};
    int tag = 0;
    if (sscanf(line.c_str(), "%5[0-9-] %12[0-9:.] %d %d %c%n", date, clock, &parsed.pid,
               &parsed.tid, &parsed.priority, &tag) != 5) {
        return std::nullopt;
    }
    if (strlen(date) != 5 || strlen(clock) != 12 || line[static_cast<size_t>(tag)] != ' ' ||
        strchr("VDIWEFS?", parsed.priority) == nullptr) {
        return std::nullopt;
    }
    // What follows the priority is looked at by hand: a tag may hold blanks, and be empty.
    const size_t start = static_cast<size_t>(tag) + 1;
    const size_t end = line.find(": ", start + kTagWidth);
    if (end == std::string::npos) return std::nullopt;
    parsed.time = std::string(date) + " " + clock;
    parsed.tag = line.substr(start, end - start);
    parsed.tag.erase(parsed.tag.find_last_not_of(' ') + 1);
    parsed.text = line.substr(end + 2);
    return parsed;
}

const char* colourOf(char priority) {
    switch (priority) {
        case 'D':
            return "\x1b[34m";
        case 'I':
            return "\x1b[32m";
        case 'W':
            return "\x1b[33m";
        case 'E':
            return "\x1b[31m";
        case 'F':
            return "\x1b[1;31m";
        default:
            return "";
    }
}

}  // namespace tarq::tools
