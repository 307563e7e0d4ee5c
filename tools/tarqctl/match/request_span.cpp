// A request is its start, the package's list, the board, and the facts up to the next start. A list
// is what its sender makes it, and may hold lines like the daemon's own: nothing tells then where
// it ends, so it is not explained, unless it is the sender who asks and has the list.
#include "tools/tarqctl/match/request_span.h"

#include <algorithm>

#include "hardware_info/peripheral_table.h"
#include "tools/tarqctl/log/log_line.h"

namespace tarq::tools {

using Texts = std::vector<std::string>;

bool tells(const RequestLine& line, Fact fact) {
    return line.fact && line.fact->fact == fact;
}

bool beginsRequest(const RequestLine& line) {
    return tells(line, Fact::kSkipped) || tells(line, Fact::kListFollows);
}

// The next line of that kind, or the end.
size_t nextLine(const RequestLines& lines, size_t begin, bool (*is)(const RequestLine&)) {
    while (begin < lines.size() && !is(lines[begin])) ++begin;
    return begin;
}

MatchRequest unknownRequest(Outcome outcome) {
    MatchRequest request;
    request.outcome = outcome;
    return request;
}

namespace {

bool beginsBoard(const RequestLine& line) {
    return tells(line, Fact::kBoardBegins);
}

// Where the board begins behind exactly these items.
std::optional<size_t> boardBehind(const Texts& items, const RequestLines& lines, size_t i) {
    for (const std::string& item : items) {
        for (const std::string& text : asLogged(item)) {
            if (i == lines.size() || lines[i++].text != text) return std::nullopt;
        }
    }
    if (i + 1 >= lines.size() || !beginsBoard(lines[i + 1])) return std::nullopt;
    return i + 1;
}

// Takes the board's lines; where they end. A value may hold newlines: a line without a colon goes
// on with the value before it.
size_t readBoard(const RequestLines& lines, const RequestSpan& span, MatchRequest* request) {
    size_t i = span.board + 1;
    for (; i < span.end && !tells(lines[i], Fact::kBoardEnds); ++i) {
        const std::string& text = lines[i].text;
        if (tells(lines[i], Fact::kBoardsOverlayId)) {
            request->overlayId = lines[i].fact->arguments[0];
        } else if (!request->overlayId.empty()) {
            continue;  // no part any more
        } else if (text.find(':') != std::string::npos) {
            request->board.push_back(itemFrom(text));
        } else if (!request->board.empty()) {
            request->board.back().value += "\n" + text;
        }
    }
    return i;
}

// The daemon compares nothing then and says yes.
MatchRequest skipped(const FactLine& line) {
    MatchRequest request = unknownRequest(Outcome::kYes);
    request.skippedBecause = line.arguments.empty()
                                     ? "the board has no overlay id, which is enough here"
                                     : line.arguments[0] + " is \"true\"";
    return request;
}

// The board is the same for every request, and its number of parts is known: fewer or more mean
// that lines are missing or another's.
MatchRequest readBehindList(const RequestLines& lines, const RequestSpan& span, const Texts& list,
                            bool listIsKnown) {
    MatchRequest request;
    request.listIsKnown = listIsKnown;
    const bool isLast = span.end == lines.size();
    size_t i = readBoard(lines, span, &request);
    if (i == span.end) return unknownRequest(isLast ? Outcome::kCutOff : Outcome::kBroken);
    if (request.board.size() != kPeripheralCount) return unknownRequest(Outcome::kBroken);
    for (const std::string& text : list) request.items.push_back({text, itemFrom(text)});
    FactLines facts;
    while (++i < span.end) {
        if (lines[i].fact) facts.push_back(*lines[i].fact);
    }
    readFacts(facts, isLast, &request);
    return request.outcome == Outcome::kBroken ? unknownRequest(Outcome::kBroken) : request;
}

// The daemon quotes items, so a line of one that has several may come again as it is.
bool hasLineLikeALog(const std::string& item) {
    const Texts texts = asLogged(item);
    return texts.size() > 1 && std::any_of(texts.begin(), texts.end(), factIn);
}

}  // namespace

// A start is an item as long as no board has followed.
std::optional<RequestSpan> spanAt(const RequestLines& lines, size_t start, const Texts* items) {
    if (!beginsRequest(lines[start])) return std::nullopt;
    std::optional<size_t> board = start;
    if (tells(lines[start], Fact::kListFollows)) {
        board = items != nullptr ? boardBehind(*items, lines, start + 1)
                                 : nextLine(lines, start + 1, beginsBoard);
    }
    if (!board) return std::nullopt;
    return RequestSpan{start, *board, nextLine(lines, std::max(start + 1, *board), beginsRequest)};
}

// A board within the request means that the list held the lines of one.
MatchRequest readSpan(const RequestLines& lines, const RequestSpan& span, const Texts* items) {
    const bool looksLikeALog = items != nullptr
                                       ? std::any_of(items->begin(), items->end(), hasLineLikeALog)
                                       : nextLine(lines, span.board + 1, beginsBoard) < span.end;
    if (looksLikeALog) return unknownRequest(Outcome::kNotExplained);
    if (span.board == span.start) return skipped(*lines[span.start].fact);
    if (items != nullptr) return readBehindList(lines, span, *items, true);
    Texts list;
    const bool isWhole = tells(lines[span.board - 1], Fact::kBoardFollows);
    for (size_t i = span.start + 1; i < span.board - (isWhole ? 1 : 0); ++i) {
        if (lines[i].fact) return unknownRequest(Outcome::kNotExplained);
        list.push_back(lines[i].text);
    }
    if (span.board == lines.size()) return unknownRequest(Outcome::kCutOff);
    return isWhole ? readBehindList(lines, span, list, false) : unknownRequest(Outcome::kBroken);
}

}  // namespace tarq::tools
