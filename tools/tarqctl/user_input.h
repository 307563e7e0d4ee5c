// What users write, checked before it goes to the daemon. Every reading tells what is wrong in
// words for the user, who may have meant another thing; none of them corrects anything.
#pragma once

#include <stdint.h>

#include <functional>
#include <string>
#include <vector>

#include "tools/tarqctl/session.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace tarq::tools {

// Empty when the text is UTF-8, else what is wrong. The daemon takes UTF-16: another text would
// reach it as a different one, or as none at all.
std::string checkUtf8(const std::string& text);

// U+FEFF in UTF-8: editors and shells of other systems begin files with it.
constexpr char kByteOrderMark[] = "\xef\xbb\xbf";
// By the mark at its start, the encoding of a text that has more than one byte for each character:
// "UTF-16" or "UTF-32", else "".
std::string wideEncodingOf(const std::string& start);

// A package's time. Empty when it is a decimal number, else what is wrong; the value is set only
// then. Its unit is that of the board's timestamp file, which this tool does not know.
std::string parseOtaTime(const std::string& text, int64_t* value);
// What is to be said of a 0.
constexpr char kNoTime[] = "0 is no time to the daemon: no package passes by its time any more";

// From 1 on, in the same way. A number of times, or of keys: up to 2147483647.
std::string parseCount(const std::string& text, int32_t* value);

// Six hexadecimal digits of a colour, with or without "#", in the same way. The number is RRGGBB,
// red in the highest byte.
std::string parseColour(const std::string& text, int32_t* value);

// Reads the word into the number, or tells what is wrong with it. "" is a good word, and the number
// is set only then.
using Parse = std::string (*)(const std::string& text, int32_t* value);

// In words of a command line: throws the parser's error with what is wrong. The parser adds the
// name, and the frame of the tool the usage.
void parseOrThrow(Parse parse, const std::string& name, const std::string& text, int32_t* value);

// Declares an option that is read so. The value has to live as long as the app. What the option is
// called is also what a refusal calls it.
CLI::Option* addNumber(CLI::App& app, const std::string& name, const std::string& description,
                       Parse parse, int32_t* value);
// The same for any number of decimal ones.
CLI::Option* addNumbers(CLI::App& app, const std::string& name, const std::string& description,
                        std::vector<int32_t>* values);

// Declares an option of so many seconds, from 0.001 to a day. Fractions are taken; the help names
// the unit.
CLI::Option* addSeconds(CLI::App& app, const std::string& name, const std::string& description,
                        double* value);

// What is declared in this group is read, but told to nobody. It is for words that are read only to
// be refused with a good reason.
constexpr char kHidden[] = "";

// "FILE: WHY" of a file that the command was given, or WHY alone where it has just been named.
std::string ofFile(const Session& session, const std::string& file, const std::string& why);

// Hands over the lines of the file, or of standard input for "-", without their newlines. Throws a
// Failure if it cannot be read. A line behind the last newline counts as well. That may be in the
// middle of it.
void readLines(const Session& session, const std::string& file,
               const std::function<void(const std::string&)>& take);
// The same for its characters, as they come, until take returns false. For input that is watched
// live, of which a line may take its time.
void readCharacters(const Session& session, const std::string& file,
                    const std::function<bool(char)>& take);

}  // namespace tarq::tools
