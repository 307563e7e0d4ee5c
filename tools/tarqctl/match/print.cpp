// An explanation for people: a sentence, a table as wide as its cells need, and what would fit.
// What stands in a log or a list is escaped here, the last place before a terminal.
#include <algorithm>
#include <array>

#include "host/run/text.h"
#include "tools/tarqctl/match/explanation.h"

namespace tarq::tools {

namespace {

using Cells = std::array<std::string, 4>;

// These words are also those of the JSON, with underscores.
std::string wordFor(Verdict verdict) {
    constexpr const char* words[] = {"fits", "does not fit", "ignored", "not examined", "unknown"};
    return words[static_cast<size_t>(verdict)];
}

// In characters: the bytes of UTF-8 that go on with one do not count.
size_t width(const std::string& text) {
    return static_cast<size_t>(
            std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xc0) != 0x80; }));
}

Cells cellsOf(const ExplainedRow& row) {
    const std::string reason = row.reason.empty() ? "" : ": " + row.reason;
    return {host::escaped(row.name), host::escaped(row.board.value_or("(none)")),
            host::escaped(row.package.value_or("(not named)")),
            host::escaped(wordFor(row.verdict) + reason)};
}

// Filled with blanks.
std::string cell(const std::string& text, size_t wanted) {
    return "  " + text + std::string(wanted - width(text), ' ');
}

// The fallback is a row without a board and a package.
std::string tableOf(const Explanation& explanation) {
    const std::string fallback = explanation.fallback.empty() ? "" : "fallback";
    std::vector<Cells> table = {{"part", "board", "package", "verdict"}};
    for (const ExplainedRow& row : explanation.rows) table.push_back(cellsOf(row));
    std::array<size_t, 3> widths = {fallback.size(), 0, 0};
    for (const Cells& cells : table) {
        for (size_t i = 0; i < 3; ++i) widths[i] = std::max(widths[i], width(cells[i]));
    }
    std::string text;
    for (const Cells& cells : table) {
        for (size_t i = 0; i < 3; ++i) text += cell(cells[i], widths[i]);
        text += "  " + cells[3] + "\n";
    }
    if (fallback.empty()) return text;
    return text + cell(fallback, widths[0]) + "  " + host::escaped(explanation.fallback) + "\n";
}

// What an overlay id that is not listed keeps from being compared may not fit either.
bool isUnfinished(const Explanation& explanation) {
    return explanation.verdict == "no" &&
           std::any_of(explanation.rows.begin(), explanation.rows.end(),
                       [](const auto& row) { return row.verdict == Verdict::kNotExamined; });
}

// What is to be written instead is quoted for a shell, since match takes items as words.
std::string howToFit(const Explanation& explanation) {
    std::string text;
    for (const ExplainedRow& row : explanation.rows) {
        for (size_t i = 0; i < row.better.size(); ++i) {
            text += i > 0 ? " or " : row.package ? "\n  write " : "\n  add ";
            text += host::escaped(shellQuoted(row.better[i]));
        }
    }
    if (explanation.requiredTime) {
        text += "\n  or give a package time of " + std::to_string(*explanation.requiredTime) +
                " or later";
    }
    if (isUnfinished(explanation)) text += "\n  then ask again: not all has been examined";
    return text.empty() ? "" : "\nto make it fit:" + text + "\n";
}

Json asJson(const ExplainedRow& row) {
    std::string verdict = wordFor(row.verdict);
    std::replace(verdict.begin(), verdict.end(), ' ', '_');
    return {{"name", row.name},   {"board", orNull(row.board)}, {"package", orNull(row.package)},
            {"verdict", verdict}, {"reason", row.reason},       {"better", row.better}};
}

}  // namespace

std::string asText(const Explanation& explanation) {
    std::string text = explanation.verdict + ": " + host::escaped(explanation.sentence) + "\n";
    if (!explanation.rows.empty()) text += "\n" + tableOf(explanation);
    return explanation.verdict == "yes" ? text : text + howToFit(explanation);
}

std::string asText(const Session& session, const Explanation& explanation) {
    const std::string& verdict = explanation.verdict;
    const bool isYes = verdict == "yes";
    const std::string word = isYes || verdict == "no" ? painted(session, verdict, isYes) : verdict;
    return word + asText(explanation).substr(verdict.size());
}

// service is there only where a service was asked.
Json asJson(const Explanation& explanation) {
    Json items = Json::array();
    for (const ExplainedRow& row : explanation.rows) items.push_back(asJson(row));
    Json doubts = Json::array();
    for (const Doubt& doubt : explanation.doubts) doubts.push_back(doubt.text);
    Json json = {{"verdict", explanation.verdict}};
    if (explanation.service) json["service"] = *explanation.service;
    json.update({{"sentence", explanation.sentence},
                 {"items", items},
                 {"fallback", orNull(explanation.fallback)},
                 {"required_time", nullptr},
                 {"not_compared", explanation.notCompared},
                 {"doubts", doubts}});
    if (explanation.requiredTime) json["required_time"] = *explanation.requiredTime;
    return json;
}

}  // namespace tarq::tools
