// Walks through the log lines of one thread.
#pragma once

#include "tools/tarqctl/match_log_texts.h"
#include "tools/tarqctl/match_request.h"

namespace tarq::tools {

// A line of one thread with the daemon's tag.
struct ThreadLine {
    size_t number;  // its place in the whole log
    std::string time;
    std::string text;
};

// Thrown where the lines end, or are not what the daemon writes.
struct BrokenOff {
    Outcome outcome;
};

// Lines that the table of texts does not know are passed over.
class LogCursor {
  public:
    LogCursor(const std::vector<ThreadLine>& lines, size_t next) : mLines(lines), mNext(next) {}

    // The next line; nothing at the end.
    std::optional<RecognisedText> peek();
    // Takes the next line. These throw BrokenOff at the end and at the start of another request.
    RecognisedText take();
    // A line of that kind, whose arguments are returned, or exactly that text, newlines included:
    // pieces of it may look like other texts. Another known line is thrown as BrokenOff as well.
    std::vector<std::string> expect(LogText kind);
    void expectText(LogText kind, const std::vector<std::string>& arguments);
    // A line of no known kind if there is one now, as it is.
    const std::string* takeUnknown();

    size_t next() const { return mNext; }

  private:
    const std::vector<ThreadLine>& mLines;
    size_t mNext;
};

// Whether a line of that kind is the first of a request.
bool isStart(LogText kind);

}  // namespace tarq::tools
