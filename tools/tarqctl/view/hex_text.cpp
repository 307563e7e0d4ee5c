#include "tools/tarqctl/view/hex_text.h"

#include <ctype.h>
#include <string.h>

#include <algorithm>
#include <stdexcept>

namespace tarq::tools {

static std::invalid_argument wrong(const std::string& text, size_t place, const std::string& what) {
    const auto end = text.begin() + static_cast<ptrdiff_t>(place);
    const auto line = std::count(text.begin(), end, '\n') + 1;
    const size_t newline = place == 0 ? std::string::npos : text.rfind('\n', place - 1);
    const size_t column = newline == std::string::npos ? place + 1 : place - newline;
    return std::invalid_argument(std::to_string(line) + ":" + std::to_string(column) + ": " + what);
}

static bool isDigit(const std::string& text, size_t place) {
    return place < text.size() && isxdigit(static_cast<unsigned char>(text[place])) != 0;
}

board::ash::Bytes bytesFromText(const std::string& text) {
    board::ash::Bytes bytes;
    bool isAfterDigits = false;
    for (size_t i = 0; i < text.size();) {
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        if (text[i] == '0' && (next == 'x' || next == 'X') && !isAfterDigits) {
            if (!isDigit(text, i + 2)) throw wrong(text, i, "no digits follow");
            i += 2;
        } else if (isDigit(text, i)) {
            if (!isDigit(text, i + 1)) throw wrong(text, i, "a byte is two digits");
            bytes.push_back(static_cast<uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
            i += 2;
            isAfterDigits = true;
            continue;
        } else if (text[i] != '\0' && strchr(" \t\r\n,", text[i]) != nullptr) {
            ++i;
        } else {
            throw wrong(text, i, "only hexadecimal digits, 0x, blanks and commas are expected");
        }
        isAfterDigits = false;
    }
    return bytes;
}

}  // namespace tarq::tools
