#include "tools/tarqctl/user_input.h"

#include <errno.h>
#include <string.h>
#include <utils/String16.h>
#include <utils/String8.h>

#include <CLI/App.hpp>
#include <charconv>
#include <fstream>

namespace tarq::tools {

using android::String16;
using android::String8;

std::string checkUtf8(const std::string& text) {
    const String8 back{String16(text.data(), text.size())};
    return text == std::string(back.string(), back.size()) ? "" : "it is not UTF-8";
}

template <typename Number>
static bool isWhole(const std::string& text, Number* value, int base) {
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, *value, base);
    return result.ec == std::errc() && result.ptr == end;
}

std::string parseOtaTime(const std::string& text, int64_t* value) {
    if (isWhole(text, value, 10)) return "";
    return "\"" + text + "\" is no decimal number of 64 bits, sign included";
}

std::string parseInt32(const std::string& text, int32_t* value) {
    if (isWhole(text, value, 10)) return "";
    return "\"" + text + "\" is no decimal number of 32 bits, sign included";
}

std::string parseColour(const std::string& text, int32_t* value) {
    const std::string digits = text.substr(text[0] == '#' ? 1 : 0);
    if (digits.size() == 6 && digits[0] != '-' && isWhole(digits, value, 16)) return "";
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

void readLines(const Session& session, const std::string& file,
               const std::function<void(const std::string&)>& take) {
    std::ifstream opened;
    errno = 0;
    if (file != "-") opened.open(file, std::ios::binary);
    std::istream& in = file == "-" ? session.in : opened;
    bool isRead = file == "-" || opened.is_open();
    for (std::string line; isRead && std::getline(in, line);) take(line);
    if (isRead && !in.bad()) return;
    throw session.failure("cannot_read", file + ": " + strerror(errno != 0 ? errno : EIO),
                          "tarqctl " + session.line.substr(0, session.line.find(' ')) + " --help");
}

}  // namespace tarq::tools
