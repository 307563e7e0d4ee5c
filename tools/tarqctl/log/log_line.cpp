#include "tools/tarqctl/log/log_line.h"

#include <stdio.h>
#include <string.h>

#include <algorithm>

namespace tarq::tools {

bool isPriority(char letter) {
    return letter != '\0' && strchr("VDIWEFS?", letter) != nullptr;
}

size_t endOfTag(std::string_view text) {
    constexpr size_t kTagWidth = 8;
    return text.find(": ", std::min(kTagWidth, text.size()));
}

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
        !isPriority(parsed.priority)) {
        return std::nullopt;
    }
    // What follows the priority is looked at by hand: a tag may hold blanks, and be empty.
    const size_t start = static_cast<size_t>(tag) + 1;
    const std::string rest = line.substr(start);
    const size_t end = endOfTag(rest);
    if (end == std::string::npos) return std::nullopt;
    parsed.time = std::string(date) + " " + clock;
    parsed.tag = rest.substr(0, end);
    parsed.tag.erase(parsed.tag.find_last_not_of(' ') + 1);
    parsed.text = rest.substr(end + 2);
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
