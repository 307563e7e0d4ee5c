// How people write bytes and numbers, and read them: in commands to a board, in its description,
// and on the command line of the tools.
#pragma once

#include <stdint.h>

#include <string>

namespace tarq::host {

// Those that may fail return what is wrong with the text, which they quote as it is: whoever prints
// that has to escape it. "" when nothing is wrong; the result is set only then.

// A text with \n \r \t \\ \xHH in it, of which the bytes may be any, zeros too.
std::string unescape(const std::string& text, std::string* bytes);
// "00000003": two digits for each byte.
std::string parseHex(const std::string& digits, std::string* bytes);
// The whole text, such as "-60", from least to most; no plus sign and no blanks. "010" is ten, and
// "0x10" is refused with the number to write instead.
std::string parseDecimal(const std::string& text, int64_t least, int64_t most, int64_t* number);
std::string parseInt32(const std::string& text, int32_t* number);

// Two lower-case digits for each byte, with nothing in between.
std::string hexOf(const std::string& bytes);

// For a line or a terminal, which it can neither break nor command: control characters, and bytes
// that are no UTF-8, are written as above. A backslash stays one, so this cannot be read back.
std::string escaped(const std::string& bytes);

}  // namespace tarq::host
