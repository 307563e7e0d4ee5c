#include "host/run/nearest.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace tarq::host {

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

}  // namespace tarq::host
