// A thread answers one request after the other, so its lines are kept by thread, and cut where the
// device says that it has dropped some. What lies before and behind such a gap cannot be one
// request; where threads are not told apart, neighbours may have got into each other. Both make
// what is certain uncertain, never the other way round.
#include "tools/tarqctl/match/match_log.h"

#include <string.h>

#include <algorithm>
#include <tuple>

#include "hardware_info/peripheral_table.h"

namespace tarq::tools {

namespace {

using Texts = std::vector<std::string>;

// The daemon tells of an item without a colon, such as the line with which a board begins. What the
// thread seems to have answered before may then be that list.
bool tellsOfBoardInList(const RequestLine& line) {
    if (!tells(line, Fact::kItemWithoutColon)) return false;
    const std::optional<FactLine> item = factIn(line.fact->arguments[0]);
    return item && item->fact == Fact::kBoardBegins;
}

// A line that only a request has, behind its beginning. The start of the daemon has the board and
// its overlay id as well, and who asks for the hardware has the probes.
bool isInsideRequest(const RequestLine& line) {
    if (!line.fact) return false;
    const Fact fact = line.fact->fact;
    const bool isOfStart = fact == Fact::kBoardBegins || fact == Fact::kBoardsOverlayId ||
                           fact == Fact::kBoardEnds || fact == Fact::kOverlayResult;
    return fact > Fact::kListFollows && !isOfStart && !isOfProbe(fact);
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

// A request that is only cut off is none: its lines are its own.
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
        MatchRequest mixed = unknownRequest(Outcome::kMixed);
        mixed.time = inOrder[i]->time;
        *inOrder[i] = mixed;
    }
}

}  // namespace

// A gap begins a new stretch: of the thread in whose name the device tells of it, or of all threads
// of a daemon that could not write. The place of a line is counted over all threads, since requests
// are told in the order of the log.
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

// A request that was skipped tells no items, so it is whoever's it may be: it counts only where
// none was compared.
std::vector<MatchRequest> MatchLog::with(const Texts& items) const {
    const std::vector<MatchRequest> requests = read(&items);
    std::vector<MatchRequest> compared;
    for (const MatchRequest& request : requests) {
        if (request.skippedBecause.empty()) compared.push_back(request);
    }
    return compared.empty() ? requests : compared;
}

// What stands before a line that tells of a board in a list may be that list, however much it looks
// like requests.
void MatchLog::readStretch(const RequestLines& lines, const Texts* items, bool isDoubtful,
                           Requests* requests) {
    const auto told = std::find_if(lines.rbegin(), lines.rend(), tellsOfBoardInList);
    const auto doubtful = items != nullptr ? 0 : static_cast<size_t>(lines.rend() - told);
    for (size_t i = 0; i < lines.size();) {
        const size_t start = i;
        const std::optional<RequestSpan> span = spanAt(lines, start, items);
        i = span ? span->end : start + 1;
        if (!span) continue;
        MatchRequest& request = (*requests)[lines[start].number];
        request = isDoubtful || start < doubtful ? unknownRequest(Outcome::kNotExplained)
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
        const RequestLines& lines = stretches[i].lines;
        if (std::any_of(lines.begin(), lines.end(), tellsOfBoardInList)) doubtful = i;
    }
    for (size_t i = 0; i < stretches.size(); ++i) {
        const RequestLines& lines = stretches[i].lines;
        Requests requests;
        readStretch(lines, items, i < doubtful, &requests);
        const size_t first = nextLine(lines, 0, beginsRequest);
        const size_t inside = nextLine(lines, 0, isInsideRequest);
        if (items == nullptr && !isOpen && inside < first) {
            MatchRequest& request = requests[lines[inside].number];
            request = unknownRequest(Outcome::kBegunBefore);
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

// A thread of number 0 stands for all threads of a format that does not tell them.
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
