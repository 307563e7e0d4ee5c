// What users write, checked before it goes to the daemon.
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
// then.
std::string parseOtaTime(const std::string& text, int64_t* value);

// From 1 on, in the same way.
std::string parseCount(const std::string& text, int32_t* value);

// Six hexadecimal digits of a colour, with or without "#", in the same way.
std::string parseColour(const std::string& text, int32_t* value);

// Reads the word into the number, or tells what is wrong with it.
using Parse = std::string (*)(const std::string& text, int32_t* value);

// In words of a command line: throws the parser's error with what is wrong.
void parseOrThrow(Parse parse, const std::string& name, const std::string& text, int32_t* value);

// Declares an option that is read so. The value has to live as long as the app.
CLI::Option* addNumber(CLI::App& app, const std::string& name, const std::string& description,
                       Parse parse, int32_t* value);
// The same for any number of decimal ones.
CLI::Option* addNumbers(CLI::App& app, const std::string& name, const std::string& description,
                        std::vector<int32_t>* values);

// Declares an option of so many seconds, from 0.001 to a day.
CLI::Option* addSeconds(CLI::App& app, const std::string& name, const std::string& description,
                        double* value);

// What is declared in this group is read, but told to nobody.
constexpr char kHidden[] = "";

// "FILE: WHY" of a file that the command was given, or WHY alone where it has just been named.
std::string ofFile(const Session& session, const std::string& file, const std::string& why);

// Hands over the lines of the file, or of standard input for "-", without their newlines. Throws a
// Failure if it cannot be read.
void readLines(const Session& session, const std::string& file,
               const std::function<void(const std::string&)>& take);
// The same for its characters, as they come.
void readCharacters(const Session& session, const std::string& file,
                    const std::function<void(char)>& take);

}  // namespace tarq::tools
