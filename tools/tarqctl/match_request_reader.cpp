#include "tools/tarqctl/match_request_reader.h"

#include <stdlib.h>

#include <algorithm>

#include "hardware_info/text.h"
#include "tools/tarqctl/probe_reader.h"

namespace tarq::tools {

namespace {

struct End {
    LogText text;
    Fallback fallback;
    Outcome outcome;
};

constexpr End kEnds[] = {
        {LogText::TIMESTAMP_OFF, Fallback::OFF, Outcome::NO},
        {LogText::TIMESTAMP_OTHER_CAMERA, Fallback::OTHER_CAMERA, Outcome::NO},
        {LogText::TIMESTAMP_ABSENT, Fallback::NO_PACKAGE_TIME, Outcome::NO},
        {LogText::TIMESTAMP_FILE_UNREADABLE, Fallback::FILE_UNREADABLE, Outcome::NO},
        {LogText::TIMESTAMP_FILE_WRONG, Fallback::FILE_WRONG, Outcome::NO},
        {LogText::TIMESTAMP_NOT_LISTED, Fallback::NOT_LISTED, Outcome::YES},
        {LogText::TIMESTAMP_TOO_EARLY, Fallback::TOO_EARLY, Outcome::NO},
        {LogText::TIMESTAMP_LATER, Fallback::LATER, Outcome::YES},
};

int64_t numberFrom(const std::string& text) {
    return strtoll(text.c_str(), nullptr, 10);
}

// A value may hold newlines: a line without a colon goes on with the value before it.
void readBoard(LogCursor& log, MatchRequest& request) {
    log.expect(LogText::BOARD_BEGIN);
    while (const std::string* text = log.takeUnknown()) {
        if (text->find(':') != std::string::npos) {
            request.board.push_back(itemFrom(*text));
        } else if (!request.board.empty()) {
            request.board.back().value += "\n" + *text;
        }
    }
    request.overlayId = log.expect(LogText::BOARD_OVERLAY_ID)[0];
    for (LogText kind; (kind = log.take().kind) != LogText::BOARD_END;) {
        if (kind != LogText::BOARD_DETAIL) throw BrokenOff{Outcome::BROKEN};
    }
}

void readOverlayId(LogCursor& log, const std::string& boardsId, ItemFinding& finding) {
    const std::string& ids = finding.item.value;
    if (ids.size() > kMaxOverlayIdsSize) {
        finding.tooLong = true;
        log.expect(LogText::OVERLAY_TOO_LONG);
    }
    const bool included = log.expect(LogText::OVERLAY_RESULT)[0] == "1";
    if (!included) log.expectText(LogText::OVERLAY_NOT_INCLUDED, {ids, boardsId});
    finding.overlayFits = included;
}

void readPart(LogCursor& log, const Item& part, ItemFinding& finding) {
    const std::string& package = finding.item.value;
    if (part.value == "null") {
        if (package != "null") log.expectText(LogText::PART_NOT_ON_BOARD, {part.name, package});
        return;
    }
    for (const std::string& word : tokensOf(part.value)) {
        if (package.find(word) == std::string::npos) finding.missingWords.push_back(word);
    }
    if (finding.missingWords.empty()) return;
    log.expectText(LogText::WORD_MISSING, {part.value, package});
    log.expectText(LogText::PART_DIFFERS, {part.name, part.value, package});
}

// The size is the daemon's: the item may have been cut here.
void readTooLong(LogCursor& log, const std::string& text) {
    const std::optional<RecognisedText> line = log.peek();
    if (!line) throw BrokenOff{Outcome::CUT_OFF};
    if (line->kind != LogText::ITEM_TOO_LONG) throw BrokenOff{Outcome::BROKEN};
    log.expectText(line->kind, {line->arguments[0], line->arguments[1], text});
}

void readItem(LogCursor& log, MatchRequest& request, ItemFinding& finding) {
    const std::string& text = finding.text;
    finding.tooLong = text.size() > kMaxItemSize;
    if (finding.tooLong) readTooLong(log, text);
    if (text.find(':') == std::string::npos) log.expectText(LogText::NO_COLON, {text});
    const Item* part = partOf(request, finding.item.name);
    if (finding.item.name == kOverlayId) {
        if (request.overlayId != "-1") readOverlayId(log, request.overlayId, finding);
    } else if (part != nullptr && !finding.tooLong) {
        readPart(log, *part, finding);
        if (!readProbe(log, *part, finding)) request.disturbed = true;
    }
    finding.examined = true;
}

void takeTimestampLine(const RecognisedText& line, FallbackFinding& finding, std::string& kind) {
    if (line.kind == LogText::TIMESTAMP_GIVEN) {
        finding.packageTime = numberFrom(line.arguments[0]);
    } else if (line.kind == LogText::TIMESTAMP_KIND) {
        kind = line.arguments[0];
    } else if (line.kind == LogText::TIMESTAMP_EARLIEST) {
        const int64_t time = numberFrom(line.arguments[0]);
        if (!finding.earliestKind.empty() && time <= finding.earliestTime) return;
        finding.earliestTime = time;
        finding.earliestKind = kind;
    } else if (line.kind != LogText::TIMESTAMP_DETAIL && !isProbing(line.kind)) {
        throw BrokenOff{Outcome::BROKEN};
    }
}

Outcome readFallback(LogCursor& log, FallbackFinding& finding) {
    std::string kind;
    for (;;) {
        const RecognisedText line = log.take();
        const auto* end = std::find_if(std::begin(kEnds), std::end(kEnds),
                                       [&line](const End& e) { return e.text == line.kind; });
        if (end == std::end(kEnds)) {
            takeTimestampLine(line, finding, kind);
            continue;
        }
        finding.outcome = end->fallback;
        finding.told = end->fallback == Fallback::OFF ? line.arguments[0] : line.text;
        if (line.arguments.size() == 2) {
            finding.packageTime = numberFrom(line.arguments[0]);
            finding.earliestTime = numberFrom(line.arguments[1]);
        }
        return end->outcome;
    }
}

// What comes behind the last item: nothing if all fits.
Outcome readEnd(LogCursor& log, MatchRequest& request) {
    const std::vector<const Item*> unfit = misfits(request);
    const std::optional<RecognisedText> line = log.peek();
    if (line && line->kind == LogText::PART_UNMATCHED) {
        log.take();
        if (unfit.empty() || unfit[0]->name != line->arguments[0]) request.disturbed = true;
        return readFallback(log, request.fallback);
    }
    if (line && !isStart(line->kind)) return Outcome::BROKEN;
    if (unfit.empty()) return Outcome::YES;
    return line ? Outcome::BROKEN : Outcome::CUT_OFF;
}

Outcome follow(LogCursor& log, MatchRequest& request) {
    readBoard(log, request);
    for (ItemFinding& finding : request.items) {
        readItem(log, request, finding);
        if (!finding.overlayFits.value_or(true)) return Outcome::NO;
    }
    request.itemsDone = true;
    return readEnd(log, request);
}

}  // namespace

MatchRequest readMatchRequest(LogCursor& log, const std::vector<std::string>& items) {
    MatchRequest request;
    for (const std::string& text : items) request.items.push_back({text, itemFrom(text)});
    try {
        request.outcome = follow(log, request);
    } catch (const BrokenOff& broken) {
        request.outcome = broken.outcome;
    }
    return request;
}

}  // namespace tarq::tools
