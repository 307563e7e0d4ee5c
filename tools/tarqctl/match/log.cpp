// A thread answers one request after the other, so its lines are cut into requests: the start, the
// list, the board, the facts, up to the next start. A list is what its sender makes it. One that
// holds lines like the daemon's own could be cut anywhere, so it is not explained, unless it is the
// sender who asks.
#include "tools/tarqctl/match/log.h"

#include <string.h>

#include <algorithm>

#include "hardware_info/peripheral_table.h"
#include "tools/tarqctl/log/log_pattern.h"

namespace tarq::tools {

namespace {

using Line = MatchLog::Line;
using Lines = MatchLog::Lines;
using Texts = std::vector<std::string>;

// The lines of one request.
struct Span {
    size_t start;
    size_t board;  // the start, or the end, of one that tells none
    size_t end;
};

bool tells(const Line& line, Fact fact) {
    return line.fact && line.fact->fact == fact;
}

bool beginsRequest(const Line& line) {
    return tells(line, Fact::kSkipped) || tells(line, Fact::kListFollows);
}

bool beginsBoard(const Line& line) {
    return tells(line, Fact::kBoardBegins);
}

// The next line of that kind, or the end.
size_t next(const Lines& lines, size_t begin, bool (*is)(const Line&)) {
    while (begin < lines.size() && !is(lines[begin])) ++begin;
    return begin;
}

// Where the board begins behind exactly these items.
std::optional<size_t> boardBehind(const Texts& items, const Lines& lines, size_t i) {
    for (const std::string& item : items) {
        for (const std::string& text : asLogged(item)) {
            if (i == lines.size() || lines[i++].text != text) return std::nullopt;
        }
    }
    if (i + 1 >= lines.size() || !beginsBoard(lines[i + 1])) return std::nullopt;
    return i + 1;
}

// items: null for any. A start is an item as long as no board has followed.
std::optional<Span> spanAt(const Lines& lines, size_t start, const Texts* items) {
    if (!beginsRequest(lines[start])) return std::nullopt;
    std::optional<size_t> board = start;
    if (tells(lines[start], Fact::kListFollows)) {
        board = items != nullptr ? boardBehind(*items, lines, start + 1)
                                 : next(lines, start + 1, beginsBoard);
    }
    if (!board) return std::nullopt;
    return Span{start, *board, next(lines, std::max(start + 1, *board), beginsRequest)};
}

// Takes the board's lines; where they end. A value may hold newlines: a line without a colon goes
// on with the value before it.
size_t readBoard(const Lines& lines, const Span& span, MatchRequest* request) {
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

MatchRequest unknown(Outcome outcome) {
    MatchRequest request;
    request.outcome = outcome;
    return request;
}

MatchRequest skipped(const FactLine& line) {
    MatchRequest request = unknown(Outcome::kYes);
    request.skippedBecause = line.arguments.empty()
                                     ? "the board has no overlay id, which is enough here"
                                     : line.arguments[0] + " is \"true\"";
    return request;
}

MatchRequest readBehindList(const Lines& lines, const Span& span, const Texts& list,
                            bool listIsKnown) {
    MatchRequest request;
    request.listIsKnown = listIsKnown;
    const bool isLast = span.end == lines.size();
    size_t i = readBoard(lines, span, &request);
    if (i == span.end) return unknown(isLast ? Outcome::kCutOff : Outcome::kBroken);
    if (request.board.size() != kPeripheralCount) return unknown(Outcome::kBroken);
    for (const std::string& text : list) request.items.push_back({text, itemFrom(text)});
    FactLines facts;
    while (++i < span.end) {
        if (lines[i].fact) facts.push_back(*lines[i].fact);
    }
    readFacts(facts, isLast, &request);
    return request.outcome == Outcome::kBroken ? unknown(Outcome::kBroken) : request;
}

// The daemon quotes items, so a line of one that has several may come again as it is.
bool hasLineLikeALog(const std::string& item) {
    const Texts texts = asLogged(item);
    return texts.size() > 1 && std::any_of(texts.begin(), texts.end(), factIn);
}

MatchRequest readSpan(const Lines& lines, const Span& span, const Texts* items) {
    const bool looksLikeALog = items != nullptr
                                       ? std::any_of(items->begin(), items->end(), hasLineLikeALog)
                                       : next(lines, span.board + 1, beginsBoard) < span.end;
    if (looksLikeALog) return unknown(Outcome::kNotExplained);
    if (span.board == span.start) return skipped(*lines[span.start].fact);
    if (items != nullptr) return readBehindList(lines, span, *items, true);
    Texts list;
    const bool isWhole = tells(lines[span.board - 1], Fact::kBoardFollows);
    for (size_t i = span.start + 1; i < span.board - (isWhole ? 1 : 0); ++i) {
        if (lines[i].fact) return unknown(Outcome::kNotExplained);
        list.push_back(lines[i].text);
    }
    if (span.board == lines.size()) return unknown(Outcome::kCutOff);
    return isWhole ? readBehindList(lines, span, list, false) : unknown(Outcome::kBroken);
}

// The daemon tells of an item without a colon, such as the line with which a board begins. What the
// thread seems to have answered before may then be that list.
bool tellsOfBoardInList(const Line& line) {
    if (!tells(line, Fact::kItemWithoutColon)) return false;
    const std::optional<FactLine> item = factIn(line.fact->arguments[0]);
    return item && item->fact == Fact::kBoardBegins;
}

// A line that only a request has, behind its beginning. The start of the daemon has the board and
// its overlay id as well, and who asks for the hardware has the probes.
bool isInsideRequest(const Line& line) {
    if (!line.fact) return false;
    const Fact fact = line.fact->fact;
    const bool isOfStart = fact == Fact::kBoardBegins || fact == Fact::kBoardsOverlayId ||
                           fact == Fact::kBoardEnds || fact == Fact::kOverlayResult;
    const bool isOfProbe = fact >= Fact::kProbeFailed && fact <= Fact::kPanelPassedOver;
    return fact > Fact::kListFollows && !isOfStart && !isOfProbe;
}

// Where the device has dropped lines of a thread it says so in that thread's name: "uid=1000 expire
// 12 lines", or "identical 3 lines". Nothing for another line.
std::string droppedByDevice(const LogLine& line) {
    if (line.tag != "chatty") return "";
    for (const char* verb : {" expire ", " identical "}) {
        const size_t begin = line.text.rfind(verb);
        if (begin == std::string::npos) continue;
        return "the device has dropped " + line.text.substr(begin + strlen(verb)) + " (chatty)";
    }
    return "";
}

// Where a daemon on a PC could not write its log, "12 log lines lost" tells of all its threads.
std::string lostByDaemon(const LogLine& line) {
    const bool isTold = line.tag == "tarq-host" && line.text.find(" lost") != std::string::npos;
    return isTold ? "the daemon could not write its log (" + line.text + ")" : "";
}

// A thread's log ends before a gap. What was read to the end is not proved, but for a no, which has
// a last line of its own.
void endAtGap(const std::string& dropped, MatchRequest* request) {
    if (request->outcome != Outcome::kYes && request->outcome != Outcome::kCutOff) return;
    if (!request->skippedBecause.empty()) return;
    request->outcome = Outcome::kPruned;
    request->dropped = dropped;
}

bool isMixedUp(const MatchRequest& request) {
    return request.outcome == Outcome::kBroken || request.outcome == Outcome::kNotExplained ||
           request.disturbed;
}

// Where threads are not told apart, what one request leaves over stands in the next one. So none
// beside one that is not right is certain.
void doubtMixed(std::map<size_t, MatchRequest>* requests) {
    std::vector<MatchRequest*> inOrder;
    for (auto& [number, request] : *requests) inOrder.push_back(&request);
    std::vector<bool> mixedUp;
    for (const MatchRequest* request : inOrder) mixedUp.push_back(isMixedUp(*request));
    for (size_t i = 0; i < inOrder.size(); ++i) {
        const bool isBeside =
                (i > 0 && mixedUp[i - 1]) || (i + 1 < inOrder.size() && mixedUp[i + 1]);
        if (!mixedUp[i] && !isBeside) continue;
        MatchRequest mixed = unknown(Outcome::kMixed);
        mixed.time = inOrder[i]->time;
        *inOrder[i] = mixed;
    }
}

}  // namespace

void MatchLog::add(const LogLine& line) {
    const size_t number = mLines++;
    if (const std::string lost = lostByDaemon(line); !lost.empty()) {
        for (auto& [thread, stretches] : mThreads) {
            if (thread.first == line.pid) stretches.push_back({lost});
        }
        return;
    }
    const std::string dropped = droppedByDevice(line);
    if (dropped.empty() && line.tag != kLogTag) return;
    std::vector<Stretch>& stretches = mThreads[{line.pid, line.tid}];
    if (stretches.empty() || !dropped.empty()) stretches.push_back({dropped});
    if (!dropped.empty()) return;
    stretches.back().lines.push_back({number, line.time, line.text, factIn(line.text)});
}

void MatchLog::add(const std::string& line) {
    if (const std::optional<LogLine> parsed = parseLogLine(line)) add(*parsed);
}

std::vector<MatchRequest> MatchLog::all() const {
    return read(nullptr);
}

std::vector<MatchRequest> MatchLog::with(const Texts& items) const {
    const std::vector<MatchRequest> requests = read(&items);
    std::vector<MatchRequest> compared;
    for (const MatchRequest& request : requests) {
        if (request.skippedBecause.empty()) compared.push_back(request);
    }
    return compared.empty() ? requests : compared;
}

void MatchLog::readStretch(const Lines& lines, const Texts* items, bool isDoubtful,
                           Requests* requests) {
    const auto told = std::find_if(lines.rbegin(), lines.rend(), tellsOfBoardInList);
    const auto doubtful = items != nullptr ? 0 : static_cast<size_t>(lines.rend() - told);
    for (size_t i = 0; i < lines.size();) {
        const size_t start = i;
        const std::optional<Span> span = spanAt(lines, start, items);
        i = span ? span->end : start + 1;
        if (!span) continue;
        MatchRequest& request = (*requests)[lines[start].number];
        request = isDoubtful || start < doubtful ? unknown(Outcome::kNotExplained)
                                                 : readSpan(lines, *span, items);
        request.time = lines[start].time;
    }
}

// What a thread tells of a request whose beginning is not there is one that nothing is known of,
// unless it can be the rest of the one before.
MatchLog::Requests MatchLog::readThread(const std::vector<Stretch>& stretches, const Texts* items) {
    Requests all;
    bool isOpen = false;
    size_t doubtful = 0;  // the stretches in front of this one
    for (size_t i = 1; items == nullptr && i < stretches.size(); ++i) {
        const Lines& lines = stretches[i].lines;
        if (std::any_of(lines.begin(), lines.end(), tellsOfBoardInList)) doubtful = i;
    }
    for (size_t i = 0; i < stretches.size(); ++i) {
        const Lines& lines = stretches[i].lines;
        Requests requests;
        readStretch(lines, items, i < doubtful, &requests);
        const size_t first = next(lines, 0, beginsRequest);
        const size_t inside = next(lines, 0, isInsideRequest);
        if (items == nullptr && !isOpen && inside < first) {
            MatchRequest& request = requests[lines[inside].number];
            request = unknown(Outcome::kBegunBefore);
            request.time = lines[inside].time;
        }
        if (!requests.empty()) {
            MatchRequest& last = requests.rbegin()->second;
            if (i + 1 < stretches.size()) endAtGap(stretches[i + 1].dropped, &last);
            isOpen = last.outcome == Outcome::kPruned;
        }
        all.merge(requests);
    }
    return all;
}

std::vector<MatchRequest> MatchLog::read(const Texts* items) const {
    Requests all;
    for (const auto& [thread, stretches] : mThreads) {
        Requests requests = readThread(stretches, items);
        if (thread.second == 0) doubtMixed(&requests);
        for (auto& [number, request] : requests) std::tie(request.pid, request.tid) = thread;
        all.merge(requests);
    }
    std::vector<MatchRequest> inOrder;
    for (auto& [number, request] : all) inOrder.push_back(std::move(request));
    return inOrder;
}

}  // namespace tarq::tools
