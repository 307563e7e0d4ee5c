#include "tools/tarqctl/text.h"

#include <stdio.h>

namespace tarq::tools {

std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        char escape[5];
        snprintf(escape, sizeof(escape), "\\x%02x", byte);
        result += byte < ' ' || byte == 0x7f ? escape : std::string(1, c);
    }
    return result;
}

}  // namespace tarq::tools
