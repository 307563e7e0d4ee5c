// Lines of a log that was saved from a device, in any of logcat's formats.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "tools/tarqctl/log/log_line.h"

namespace tarq::tools {

// Takes a log line by line: brief, process, tag, time, threadtime and long, with their modifiers
// (year, uid, epoch, usec, zone, color); quoted with "> " as in a mail, too. What a format leaves
// out is 0 or empty in the LogLine. For one thread.
class SavedLog {
  public:
    using Take = std::function<void(const LogLine&)>;
    explicit SavedLog(Take take) : mTake(std::move(take)) {}

    // False if the line belongs to no log. Lines are handed over while it runs, those of the long
    // format when their text comes.
    bool add(const std::string& line);

    // Whether lines came in a format that leaves the tag out, of which nothing can be told.
    bool lacksTags() const { return mLacksTags; }

  private:
    bool takeWhole(std::string_view text);
    bool begin(std::string_view text, std::string_view quote);
    void goOn(std::string_view text);

    const Take mTake;
    // Of the long format: a header of its own line, the text below it, and a blank line.
    bool mIsLong = false;
    LogLine mHeader = {};
    std::string mQuote;      // in front of the header, and so of its text
    bool mHasBlank = false;  // a blank line that may be the end, or part of the text
    bool mLacksTags = false;
};

}  // namespace tarq::tools
