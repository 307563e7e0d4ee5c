#include "tools/tarqctl/match_requests.h"

#include <algorithm>

#include "tools/tarqctl/log_line.h"
#include "tools/tarqctl/match_request_reader.h"

namespace tarq::tools {

namespace {

using Lines = std::vector<ThreadLine>;
using Texts = std::vector<std::string>;

// How many ends of a list are looked at. More than one exist when more requests follow, or when an
// item looks like such an end.
constexpr size_t kMaxReadings = 8;

bool isText(const Lines& lines, size_t index, LogText kind) {
    return index < lines.size() && argumentsOf(patternOf(kind), lines[index].text);
}

// Where the description of the board may follow on the list that starts there.
std::vector<size_t> endsOfList(const Lines& lines, size_t start) {
    std::vector<size_t> ends;
    for (size_t i = start; i < lines.size() && ends.size() < kMaxReadings; ++i) {
        if (!isText(lines, i, LogText::BOARD_FOLLOWS)) continue;
        const bool described = isText(lines, i + 1, LogText::BOARD_BEGIN);
        if (described || i + 1 == lines.size()) ends.push_back(i);
    }
    return ends;
}

Texts textsBetween(const Lines& lines, size_t begin, size_t end) {
    Texts texts;
    for (size_t i = begin; i < end; ++i) texts.push_back(lines[i].text);
    return texts;
}

struct Reading {
    MatchRequest request;
    size_t next;
};

Reading readFrom(const Lines& lines, size_t board, const Texts& items) {
    LogCursor log(lines, board);
    MatchRequest request = readMatchRequest(log, items);
    return {std::move(request), log.next()};
}

bool isWhole(const MatchRequest& request) {
    return request.outcome == Outcome::YES || request.outcome == Outcome::NO;
}

// A list that holds what looks like its end and a board is found out by what follows: the longest
// list that makes sense of everything is the right one.
Reading readAnyItems(const Lines& lines, size_t start) {
    const std::vector<size_t> ends = endsOfList(lines, start);
    if (ends.empty())
        return readFrom(lines, lines.size(), textsBetween(lines, start, lines.size()));
    for (size_t i = ends.size() - 1; i > 0; --i) {
        Reading reading = readFrom(lines, ends[i] + 1, textsBetween(lines, start, ends[i]));
        if (isWhole(reading.request)) return reading;
    }
    return readFrom(lines, ends[0] + 1, textsBetween(lines, start, ends[0]));
}

std::optional<Reading> readTheseItems(const Lines& lines, size_t start, const Texts& items) {
    size_t next = start;
    for (const std::string& item : items) {
        for (const std::string& text : asLogged(item)) {
            if (next == lines.size() || lines[next].text != text) return std::nullopt;
            ++next;
        }
    }
    if (!isText(lines, next, LogText::BOARD_FOLLOWS)) return std::nullopt;
    return readFrom(lines, next + 1, items);
}

MatchRequest skippedRequest(const RecognisedText& line) {
    MatchRequest request;
    request.outcome = Outcome::YES;
    request.skippedBecause = line.kind == LogText::SKIPPED_BY_PROPERTY
                                     ? line.arguments[0] + " is \"true\""
                                     : "the board has no overlay id, which is enough here";
    return request;
}

// items: null for any.
std::optional<Reading> readAt(const Lines& lines, size_t start, const Texts* items) {
    const std::optional<RecognisedText> line = recognise(lines[start].text);
    if (!line || !isStart(line->kind)) return std::nullopt;
    if (line->kind != LogText::ITEMS_GIVEN) return {{skippedRequest(*line), start + 1}};
    if (items != nullptr) return readTheseItems(lines, start + 1, *items);
    return readAnyItems(lines, start + 1);
}

}  // namespace

bool MatchRequests::add(const std::string& line) {
    std::optional<LogLine> parsed = parseLogLine(line);
    if (!parsed) return false;
    const size_t number = mLines++;
    if (parsed->tag != kMatchLogTag) return true;
    mThreads[{parsed->pid, parsed->tid}].push_back({number, parsed->time, parsed->text});
    return true;
}

std::vector<MatchRequest> MatchRequests::all() const {
    return read(nullptr);
}

std::vector<MatchRequest> MatchRequests::with(const std::vector<std::string>& items) const {
    return read(&items);
}

std::vector<MatchRequest> MatchRequests::read(const std::vector<std::string>* items) const {
    std::map<size_t, MatchRequest> requests;  // by the number of the first line
    for (const auto& [thread, lines] : mThreads) {
        for (size_t i = 0; i < lines.size();) {
            std::optional<Reading> reading = readAt(lines, i, items);
            if (!reading) {
                ++i;
                continue;
            }
            MatchRequest& request = requests[lines[i].number] = std::move(reading->request);
            request.time = lines[i].time;
            std::tie(request.pid, request.tid) = thread;
            i = reading->next;
        }
    }
    std::vector<MatchRequest> inOrder;
    for (auto& [number, request] : requests) inOrder.push_back(std::move(request));
    return inOrder;
}

}  // namespace tarq::tools
