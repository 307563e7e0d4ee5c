// One request among the lines of a thread: where it begins and ends, and what it tells.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/tarqctl/match/facts.h"

namespace tarq::tools {

// A line of the daemon's log, with the fact that it tells, if it tells one. An item that looks like
// a line of the daemon's tells that as well: only the place of a line says which of the two it is.
struct RequestLine {
    size_t number;  // its place in the whole log
    std::string time;
    std::string text;
    std::optional<FactLine> fact;
};
using RequestLines = std::vector<RequestLine>;  // of one thread, in their order

// The lines of one request, by their places.
struct RequestSpan {
    size_t start;
    size_t board;  // the start, or the end, of one that tells none
    size_t end;    // the next one's start, or the end of the lines
};

bool tells(const RequestLine& line, Fact fact);
bool beginsRequest(const RequestLine& line);

// The next line of that kind from the place on, or the end.
size_t nextLine(const RequestLines& lines, size_t begin, bool (*is)(const RequestLine&));

// The request that begins at the place, if one does. items: the list that it must have, to the
// letter; null for any.
std::optional<RequestSpan> spanAt(const RequestLines& lines, size_t start,
                                  const std::vector<std::string>* items);

// What became of it, without time and thread. items: as for spanAt(), which makes it known that no
// item is missing.
MatchRequest readSpan(const RequestLines& lines, const RequestSpan& span,
                      const std::vector<std::string>* items);

// One of which nothing is known but that.
MatchRequest unknownRequest(Outcome outcome);

}  // namespace tarq::tools
