#include "host/board/attributes.h"

#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <charconv>

namespace tarq::board {

static constexpr char kLetters[] = "nrt\\";
static constexpr char kMeanings[] = "\n\r\t\\";

// The byte that two hexadecimal digits at the place make.
static char hexByte(const std::string& text, size_t place) {
    const std::string digits = text.substr(place, 2);
    if (digits.size() != 2 || !isxdigit(digits[0]) || !isxdigit(digits[1])) {
        throw std::invalid_argument("\"" + text + "\": not two hexadecimal digits for each byte");
    }
    return static_cast<char>(strtoul(digits.c_str(), nullptr, 16));
}

std::string unescaped(const std::string& text) {
    std::string bytes;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            bytes += text[i];
        } else if (const char letter = text[++i]; letter == 'x') {
            bytes += hexByte(text, i + 1);
            i += 2;
        } else if (const char* known = strchr(kLetters, letter); known != nullptr && letter != 0) {
            bytes += kMeanings[known - kLetters];
        } else {
            throw std::invalid_argument("\"" + text + "\": only \\n \\r \\t \\\\ \\xHH are known");
        }
    }
    return bytes;
}

std::string escaped(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes) {
        if (const char* known = strchr(kMeanings, byte); known != nullptr && byte != 0) {
            text += {'\\', kLetters[known - kMeanings]};
        } else if (byte >= ' ' && byte <= '~') {
            text += byte;
        } else {
            char code[5];
            snprintf(code, sizeof(code), "\\x%02x", static_cast<unsigned char>(byte));
            text += code;
        }
    }
    return text;
}

std::string fromHex(const std::string& digits) {
    std::string bytes;
    for (size_t i = 0; i < digits.size(); i += 2) bytes += hexByte(digits, i);
    return bytes;
}

int32_t toInt32(const std::string& text) {
    int32_t number = 0;
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    if (result.ec == std::errc() && result.ptr == end) return number;
    throw std::invalid_argument("\"" + text + "\" is no decimal number of 32 bits");
}

off_t Attribute::size() const {
    return mKind == kProperty ? static_cast<off_t>(mBytes.size()) : Node::size();
}

int Attribute::read(std::string* content) {
    *content = mBytes;
    return 0;
}

void Attribute::set(const std::string& value) {
    mBytes = mKind == kProperty ? fromHex(value) : unescaped(value);
}

}  // namespace tarq::board
