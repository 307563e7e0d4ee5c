// The daemon's log tells what it does in texts that printf made, so who reads it takes them apart
// by the same patterns. A pattern is a literal, then conversions with a literal behind each.
#include "tools/tarqctl/log/log_pattern.h"

#include <string.h>

#include <algorithm>

namespace tarq::tools {

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
