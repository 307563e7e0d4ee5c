#include "tools/tarqctl/session.h"

namespace tarq::tools {

std::string Session::next(const std::string& command) const {
    return "tarqctl --board " + shellQuoted(board) + " " + command;
}

std::string shellQuoted(const std::string& word) {
    static const char kPlain[] =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-@:.,/+=%";
    if (!word.empty() && word.find_first_not_of(kPlain) == std::string::npos) return word;
    std::string quoted = "'";
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
