// Words of the command line and files that people write are checked before anything is asked: the
// daemon answers what it understood, which for a wrong word is not what was meant.
#include "tools/tarqctl/user_input.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <utils/String16.h>
#include <utils/String8.h>

#include <CLI/App.hpp>
#include <fstream>

#include "host/run/text.h"

namespace tarq::tools {

using android::String16;
using android::String8;

// Whether it is, the platform's own conversion tells: there and back again is the same text only
// for one that is well-formed.
std::string checkUtf8(const std::string& text) {
    const String8 back{String16(text.data(), text.size())};
    return text == std::string(back.string(), back.size()) ? "" : "it is not UTF-8";
}

// In this order: one mark begins like another.
std::string wideEncodingOf(const std::string& start) {
    const std::string first = start.substr(0, 4);
    if (first == std::string("\xff\xfe\0\0", 4) || first == std::string("\0\0\xfe\xff", 4)) {
        return "UTF-32";
    }
    return first.rfind("\xff\xfe", 0) == 0 || first.rfind("\xfe\xff", 0) == 0 ? "UTF-16" : "";
}

// The whole range of the call: the daemon takes any number, and so does this.
std::string parseOtaTime(const std::string& text, int64_t* value) {
    return host::parseDecimal(text, INT64_MIN, INT64_MAX, value);
}

std::string parseCount(const std::string& text, int32_t* value) {
    int64_t count = 0;
    const std::string why = host::parseDecimal(text, 1, INT32_MAX, &count);
    if (why.empty()) *value = static_cast<int32_t>(count);
    return why;
}

// Fewer digits would be another colour, so there are exactly six.
std::string parseColour(const std::string& text, int32_t* value) {
    const std::string digits = text.substr(text[0] == '#' ? 1 : 0);
    const bool isHex = digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    if (digits.size() == 6 && isHex) {
        *value = static_cast<int32_t>(strtol(digits.c_str(), nullptr, 16));
        return "";
    }
    return "\"" + text + "\" is no colour of six hexadecimal digits, such as ff8000";
}

void parseOrThrow(Parse parse, const std::string& name, const std::string& text, int32_t* value) {
    const std::string why = parse(text, value);
    if (!why.empty()) throw CLI::ValidationError(name, why);
}

CLI::Option* addNumber(CLI::App& app, const std::string& name, const std::string& description,
                       Parse parse, int32_t* value) {
    return app.add_option_function<std::string>(
            name, [=](const std::string& text) { parseOrThrow(parse, name, text, value); },
            description);
}

// The vector grows while the words are read, so a number that is refused leaves one behind; the
// command does not run then.
CLI::Option* addNumbers(CLI::App& app, const std::string& name, const std::string& description,
                        std::vector<int32_t>* values) {
    return app.add_option_function<std::vector<std::string>>(
            name,
            [=](const std::vector<std::string>& words) {
                for (const std::string& word : words) {
                    parseOrThrow(host::parseInt32, name, word, &values->emplace_back());
                }
            },
            description);
}

// Written so that "nan" fails, which is neither less nor greater.
static std::string checkSeconds(const std::string& text) {
    double value = 0;
    const bool isNumber = CLI::detail::lexical_cast(text, value);
    if (isNumber && value >= 0.001 && value <= kMaxTimeout) return "";
    return "\"" + text + "\" is no number of seconds from 0.001 to 86400";
}

CLI::Option* addSeconds(CLI::App& app, const std::string& name, const std::string& description,
                        double* value) {
    return app.add_option(name, *value, description)->type_name("S")->check(checkSeconds);
}

// A file that the command line ends with has been named already, and is not named twice.
std::string ofFile(const Session& session, const std::string& file, const std::string& why) {
    if (file == "-") return "standard input: " + why;
    const std::string named = " " + shellQuoted(file);
    const bool isLast = session.line.size() > named.size() &&
                        session.line.substr(session.line.size() - named.size()) == named;
    return isLast ? why : file + ": " + why;
}

// What a stream cannot be read for it does not say; errno is what the system said last, and any
// error where that is nothing.
static void readFrom(const Session& session, const std::string& file,
                     const std::function<void(std::istream&)>& read) {
    std::ifstream opened;
    errno = 0;
    if (file != "-") opened.open(file, std::ios::binary);
    std::istream& in = file == "-" ? session.in : opened;
    const bool isRead = file == "-" || opened.is_open();
    if (isRead) read(in);
    // Of standard input C's own stream knows more than the one that is read.
    const bool isBroken = in.bad() || (file == "-" && ferror(stdin) != 0);
    if (isRead && !isBroken) return;
    const int error = errno != 0 ? errno : EIO;
    throw session.failure("cannot_read",
                          ofFile(session, file, error == EBADF ? "it is closed" : strerror(error)),
                          session.help());
}

void readLines(const Session& session, const std::string& file,
               const std::function<void(const std::string&)>& take) {
    readFrom(session, file, [&take](std::istream& in) {
        for (std::string line; std::getline(in, line);) take(line);
    });
}

void readCharacters(const Session& session, const std::string& file,
                    const std::function<bool(char)>& take) {
    readFrom(session, file, [&take](std::istream& in) {
        for (char c; in.get(c) && take(c);) continue;
    });
}

}  // namespace tarq::tools
