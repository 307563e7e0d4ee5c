#include "tools/tarqctl/session.h"

#include <ostream>

namespace tarq::tools {

void Session::notice(const std::string& text) const {
    err << "tarqctl: " + line + ": " + text + "\n" << std::flush;
}

std::string Session::next(const std::string& command) const {
    return "tarqctl --board " + shellQuoted(board.directory) + " " + command;
}

std::string shellQuoted(const std::string& word) {
    static const char kPlain[] =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-@:.,/+=%";
    if (!word.empty() && word.find_first_not_of(kPlain) == std::string::npos) return word;
    std::string quoted = "'";
    // Nothing has a meaning between single quotes but the quote itself.
    for (const char c : word) {
        if (c == '\'') {
            quoted += "'\\''";
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

}  // namespace tarq::tools
