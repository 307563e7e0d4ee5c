// A name that is near another one was most likely meant to be that. What the parser of a command
// line says of a word that it does not know is of no use to whoever has typed it, so the word is
// looked up again here among all names that would have been good.
#include "host/run/nearest.h"

#include <ctype.h>

#include <CLI/App.hpp>
#include <algorithm>
#include <numeric>
#include <utility>

namespace tarq::host {

// One row of the usual table at a time is enough: row[j] is what the first j bytes of b are away
// from the bytes of a so far, and diagonal what was there before for one byte less of both.
size_t distance(const std::string& a, const std::string& b) {
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < a.size(); ++i) {
        size_t diagonal = std::exchange(row[0], i + 1);
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

std::string nearestName(const std::string& word, const std::vector<std::string>& names) {
    const auto nearest = std::min_element(names.begin(), names.end(), [&](auto& a, auto& b) {
        return distance(word, a) < distance(word, b);
    });
    const bool isNear =
            nearest != names.end() && 3 * distance(word, *nearest) <= nearest->size() + 1;
    return isNear ? *nearest : "";
}

std::string noSuchCommand(const std::string& word, const std::vector<std::string>& names) {
    const std::string meant = nearestName(word, names);
    if (!meant.empty()) return "there is no such command; did you mean " + meant + "?";
    std::string all;
    for (const std::string& name : names) all += " " + name;
    return "there is no such command, only" + all;
}

std::string noSuchOption(const CLI::App& app, const std::vector<std::string>& words) {
    std::vector<std::string> names;
    for (const CLI::App* a = &app; a != nullptr; a = a->get_parent()) {
        for (const CLI::Option* option : a->get_options()) {
            for (const std::string& name : option->get_snames()) names.push_back("-" + name);
            for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
        }
    }
    for (const std::string& word : words) {
        if (word == "--") break;
        const bool isLong = word.rfind("--", 0) == 0;
        const bool isShort = word.size() > 1 && word[0] == '-' && !isLong &&
                             isdigit(static_cast<unsigned char>(word[1])) == 0;
        if (!isLong && !isShort) continue;
        const std::string name = isLong ? word.substr(0, word.find('=')) : word.substr(0, 2);
        if (std::count(names.begin(), names.end(), name) > 0) continue;
        const std::string meant = isLong ? nearestName(name, names) : "";
        const std::string guess = meant.empty() ? "" : "; did you mean " + meant + "?";
        return "there is no option " + (isLong ? name : word) + guess;
    }
    return "";
}

}  // namespace tarq::host
