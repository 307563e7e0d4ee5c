// The daemon's log tells what it does in texts that printf made, behind the columns that every line
// has. Who reads it takes both apart: the columns by their widths, and the texts by the same
// patterns with which they were made. A pattern is a literal, then conversions with a literal
// behind each.
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

// What fits into the buffer of __android_log_print, which has 1024 bytes with the terminator.
static constexpr size_t kMaxLogText = 1023;  // bytes

static bool isPrintedBy(char conversion, const std::string& text) {
    if (conversion == 's') return true;
    const char* digits = conversion == 'x' ? "0123456789abcdef" : "-0123456789";
    return text.find_first_not_of(digits) == std::string::npos;
}

std::optional<std::vector<std::string>> printedArguments(const char* pattern,
                                                         const std::string& text) {
    size_t begin = strcspn(pattern, "%");
    if (text.compare(0, begin, pattern, begin) != 0) return std::nullopt;
    std::vector<std::string> arguments;
    for (const char* next = pattern + begin; *next != '\0';) {
        const char* letter = strpbrk(next, "sdux");
        next = letter + 1 + strcspn(letter + 1, "%");
        const std::string literal(letter + 1, next);
        const size_t end = *next == '\0' ? text.rfind(literal) : text.find(literal, begin);
        if (end == std::string::npos || end < begin) return std::nullopt;
        arguments.push_back(text.substr(begin, end - begin));
        if (!isPrintedBy(*letter, arguments.back())) return std::nullopt;
        begin = end + literal.size();
    }
    if (begin != text.size()) return std::nullopt;
    return arguments;
}

std::vector<std::string> asLogged(const std::string& text) {
    std::vector<std::string> lines;
    std::string rest = text.substr(0, std::min(text.find('\0'), kMaxLogText));
    do {
        const size_t end = std::min(rest.find('\n'), rest.size());
        lines.push_back(rest.substr(0, end));
        rest.erase(0, end + 1);
    } while (!rest.empty());
    return lines;
}

}  // namespace tarq::tools
