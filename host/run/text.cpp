// Each reading is strict: the whole text, or what is wrong with it in words that tell what to write
// instead. No reading has a second meaning for a prefix, since "010" is ten to people.
#include "host/run/text.h"

#include <ctype.h>
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

namespace tarq::host {

// Letters behind a backslash, and the bytes at the same places that they stand for.
static constexpr char kLetters[] = "nrt\\";
static constexpr char kMeanings[] = "\n\r\t\\";

static std::string quoted(const std::string& text) {
    return "\"" + text + "\"";
}

// The byte that two hexadecimal digits at the place make. False for anything else.
static bool hexByte(const std::string& text, size_t place, char* byte) {
    const std::string digits = text.substr(place, 2);
    const auto isDigit = [](char c) { return isxdigit(static_cast<unsigned char>(c)) != 0; };
    if (digits.size() != 2 || !isDigit(digits[0]) || !isDigit(digits[1])) return false;
    *byte = static_cast<char>(strtoul(digits.c_str(), nullptr, 16));
    return true;
}

// The result is made aside, so that *bytes stays as it was where something is wrong.
std::string unescape(const std::string& text, std::string* bytes) {
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        char byte = text[i];
        if (byte == '\\') {
            const char letter = text[++i];  // the terminator behind the last
            const char* known = strchr(kLetters, letter);
            if (letter != '\0' && known != nullptr) {
                byte = kMeanings[known - kLetters];
            } else if (letter == 'x' && hexByte(text, i + 1, &byte)) {
                i += 2;
            } else {
                return quoted(text) + ": only \\n \\r \\t \\\\ \\xHH are known";
            }
        }
        result += byte;
    }
    *bytes = result;
    return "";
}

std::string parseHex(const std::string& digits, std::string* bytes) {
    std::string result(digits.size() / 2, '\0');
    bool isGood = digits.size() % 2 == 0;
    for (size_t i = 0; isGood && i < result.size(); ++i) {
        isGood = hexByte(digits, 2 * i, &result[i]);
    }
    if (!isGood) return quoted(digits) + ": not two hexadecimal digits for each byte";
    *bytes = result;
    return "";
}

// "; write 16" for 0x10, which is no decimal number but easily meant as one.
static std::string hexHint(const std::string& text, size_t sign) {
    char* end = nullptr;
    errno = 0;
    const int64_t value = strtoll(text.c_str(), &end, 16);
    const bool isHex = text.compare(sign, 2, "0x") == 0 && text.size() > sign + 2;
    return isHex && *end == '\0' && errno == 0 ? "; write " + std::to_string(value) : "";
}

std::string parseDecimal(const std::string& text, int64_t least, int64_t most, int64_t* number) {
    const size_t sign = text.rfind('-', 0) == 0 ? 1 : 0;
    if (text.size() == sign || text.find_first_not_of("0123456789", sign) != std::string::npos) {
        return quoted(text) + " is no decimal number" + hexHint(text, sign);
    }
    errno = 0;
    const int64_t value = strtoll(text.c_str(), nullptr, 10);
    if (errno != 0 || value < least || value > most) {
        return quoted(text) + " is not from " + std::to_string(least) + " to " +
               std::to_string(most);
    }
    *number = value;
    return "";
}

std::string parseInt32(const std::string& text, int32_t* number) {
    int64_t value = 0;
    const std::string why = parseDecimal(text, INT32_MIN, INT32_MAX, &value);
    if (why.empty()) *number = static_cast<int32_t>(value);
    return why;
}

std::string hexOf(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes) {
        char digits[3];
        snprintf(digits, sizeof(digits), "%02x", static_cast<unsigned char>(byte));
        text += digits;
    }
    return text;
}

// How many bytes the character there has; 0 when they are no UTF-8. Overlong forms, surrogates and
// what is beyond 10ffff are no UTF-8; control characters of either set count as such here, too.
static size_t characterAt(const std::string& bytes, size_t place) {
    const auto at = [&](size_t i) {
        return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0u;
    };
    const unsigned first = at(place);
    if (first < 0x80) return 1;
    const size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    unsigned code = first & (0x7F >> size);
    for (size_t i = 1; i < size; ++i) {
        if ((at(place + i) & 0xC0) != 0x80) return 0;
        code = code << 6 | (at(place + i) & 0x3F);
    }
    constexpr unsigned kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isGood =
            code >= kLeast[size] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
    const bool isControl = code < 0xA0;  // the second set of control characters
    return isGood && first >= 0xC2 && first < 0xF8 && !isControl ? size : 0;
}

std::string escaped(const std::string& bytes) {
    std::string text;
    for (size_t i = 0; i < bytes.size();) {
        const char byte = bytes[i];
        const size_t size = characterAt(bytes, i);
        const char* known = byte != '\0' && byte != '\\' ? strchr(kMeanings, byte) : nullptr;
        if (known != nullptr) {
            text += {'\\', kLetters[known - kMeanings]};
        } else if (size == 0 || (size == 1 && iscntrl(static_cast<unsigned char>(byte)) != 0)) {
            text += "\\x" + hexOf(std::string(1, byte));
        } else {
            text.append(bytes, i, size);
        }
        i += size > 0 ? size : 1;
    }
    return text;
}

}  // namespace tarq::host
