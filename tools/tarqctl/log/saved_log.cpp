// Logs reach us as somebody has saved or quoted them. Each line tells by its shape in which format
// it is, so formats may be mixed. Only the long one spreads an entry over lines: there a header
// holds until the next one, and the blank line in front of that is not text.
#include "tools/tarqctl/log/saved_log.h"

#include <stdlib.h>

#include <algorithm>
#include <vector>

namespace tarq::tools {

namespace {

constexpr char kDigits[] = "0123456789";

using View = std::string_view;

bool isAll(View text, const char* characters) {
    return !text.empty() && text.find_first_not_of(characters) == View::npos;
}

bool isPriority(View text) {
    return text.size() == 1 && tools::isPriority(text[0]);
}

// Empty for a text of blanks alone.
View withoutBlanks(View text) {
    const size_t begin = text.find_first_not_of(' ');
    if (begin == View::npos) return {};
    return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

// Takes the next word, and the blanks in front of it.
View takeWord(View* rest) {
    rest->remove_prefix(std::min(rest->find_first_not_of(' '), rest->size()));
    const View word = rest->substr(0, rest->find(' '));
    rest->remove_prefix(word.size());
    return word;
}

int numberFrom(View text) {
    return isAll(text, kDigits) ? atoi(std::string(text).c_str()) : 0;
}

// "10:00:00.123" with ms, us or ns.
bool isClock(View text) {
    return text.size() >= 12 && text[2] == ':' && text[5] == ':' && text[8] == '.' &&
           isAll(text, "0123456789:.");
}

// "05-01", "2018-05-01"
bool isDate(View text) {
    return (text.size() == 5 || text.size() == 10) && text[text.size() - 3] == '-' &&
           isAll(text, "0123456789-");
}

// "1525168800.123", also of the monotonic clock.
bool isEpoch(View text) {
    const size_t point = text.find('.');
    return point != View::npos && isAll(text.substr(0, point), kDigits) &&
           text.size() - point >= 4 && isAll(text.substr(point + 1), kDigits);
}

bool isZone(View text) {
    return text.size() == 5 && (text[0] == '+' || text[0] == '-') && isAll(text.substr(1), kDigits);
}

// The time in front, if there is one; what follows it is left.
std::string takeTime(View* text) {
    View rest = *text;
    const View first = takeWord(&rest);
    std::string time(first);
    if (isDate(first)) {
        const View clock = takeWord(&rest);
        if (!isClock(clock)) return "";
        time += " " + std::string(clock);
        View behind = rest;
        if (isZone(takeWord(&behind))) rest = behind;
    } else if (!isEpoch(first)) {
        return "";
    }
    *text = rest;
    return time;
}

// "512", "1000 512 530": pid, pid and tid, or those with the uid, which may be a name, in front.
bool readIds(View ids, bool hasTid, LogLine* line) {
    std::vector<View> words;
    while (!withoutBlanks(ids).empty()) words.push_back(takeWord(&ids));
    const size_t count = hasTid ? 2 : 1;
    if (words.size() != count && words.size() != count + 1) return false;
    line->pid = numberFrom(words[words.size() - count]);
    if (hasTid) line->tid = numberFrom(words.back());
    return line->pid != 0 && (!hasTid || line->tid != 0);
}

std::string withBlanksForColons(View text) {
    std::string blanks(text);
    for (char& c : blanks) {
        if (c == ':') c = ' ';
    }
    return blanks;
}

// A tag may be filled up with blanks; the text begins where it begins.
void setText(View tag, View text, LogLine* line) {
    line->tag = withoutBlanks(tag);
    line->text = text;
}

// "  512   530 I Tag     : text"
bool readThreadtime(View rest, LogLine* line) {
    View ids = rest;
    View word;
    for (int words = 0; words < 4 && !isPriority(word); ++words) word = takeWord(&rest);
    if (!isPriority(word) || rest.empty()) return false;
    ids = ids.substr(0, static_cast<size_t>(word.data() - ids.data()));
    if (!readIds(ids, true, line)) return false;
    line->priority = word[0];
    rest.remove_prefix(1);
    const size_t end = endOfTag(rest);
    if (end == View::npos) return false;
    setText(rest.substr(0, end), rest.substr(end + 2), line);
    return true;
}

// "I/Tag     (  512): text", and "I/Tag     : text"
bool readBrief(View rest, LogLine* line) {
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    if (rest.size() < 4 || !isPriority(rest.substr(0, 1)) || rest[1] != '/') return false;
    line->priority = rest[0];
    rest.remove_prefix(2);
    const size_t colon = rest.find(": ");
    const size_t open = rest.find('(');
    const size_t close = rest.find("): ");
    if (open < colon && close != View::npos && open < close &&
        readIds(withBlanksForColons(rest.substr(open + 1, close - open - 1)), false, line)) {
        setText(rest.substr(0, open), rest.substr(close + 3), line);
        return true;
    }
    if (colon == View::npos) return false;
    setText(rest.substr(0, colon), rest.substr(colon + 2), line);
    return true;
}

// "I(  512) text  (Tag)"; thread, "I(  512:  530) text", has no tag.
bool readProcess(View rest, LogLine* line) {
    const size_t close = rest.find(") ");
    if (rest.size() < 4 || !isPriority(rest.substr(0, 1)) || rest[1] != '(') return false;
    if (close == View::npos) return false;
    line->priority = rest[0];
    const View ids = rest.substr(2, close - 2);
    const View text = rest.substr(close + 2);
    if (ids.find(':') != View::npos) {
        line->text = text;
        return readIds(withBlanksForColons(ids), true, line);
    }
    const size_t tag = text.rfind("  (");
    if (tag == View::npos || text.back() != ')' || !readIds(ids, false, line)) return false;
    setText(text.substr(tag + 3, text.size() - tag - 4), text.substr(0, tag), line);
    return true;
}

// "[ 05-01 10:00:00.123 512: 530 I/Tag ]" The text of the entry is on the lines below it.
bool readLongHeader(View text, LogLine* line) {
    if (text.substr(0, 2) != "[ " || text.substr(text.size() - 2) != " ]") return false;
    View rest = text.substr(2, text.size() - 4);
    line->time = takeTime(&rest);
    const size_t slash = rest.find('/');
    if (line->time.empty() || slash == View::npos || slash < 2) return false;
    if (!isPriority(rest.substr(slash - 1, 1))) return false;
    line->priority = rest[slash - 1];
    line->tag = withoutBlanks(rest.substr(slash + 1));
    return readIds(withBlanksForColons(rest.substr(0, slash - 1)), true, line);
}

// An entry on one line. The time in front tells most formats apart: brief, process and tag have
// none.
bool readEntry(View text, LogLine* line) {
    line->time = takeTime(&text);
    if (readBrief(text, line)) return true;
    return line->time.empty() ? readProcess(text, line) : readThreadtime(text, line);
}

// Of a terminal, around a whole line. logcat -v color puts one sequence in front of a line and one
// behind it.
View withoutColour(View text) {
    constexpr View kEnd = "\x1b[0m";
    if (text.substr(0, 2) == "\x1b[" && text.find('m') != View::npos) {
        text.remove_prefix(text.find('m') + 1);
    }
    const bool hasEnd =
            text.size() >= kEnd.size() && text.substr(text.size() - kEnd.size()) == kEnd;
    return hasEnd ? text.substr(0, text.size() - kEnd.size()) : text;
}

// Where a quoted line begins behind its marks.
size_t behindQuote(View text) {
    const size_t begin = text.find_first_not_of("> ");
    return text.empty() || text[0] != '>' || begin == View::npos ? 0 : begin;
}

}  // namespace

bool SavedLog::begin(View text, View quote) {
    LogLine header = {};
    if (!readLongHeader(text, &header)) return false;
    mIsLong = true;
    mHeader = std::move(header);
    mQuote = quote;
    mHasBlank = false;
    return true;
}

bool SavedLog::takeWhole(View text) {
    LogLine line = {};
    if (!readEntry(text, &line)) {
        // What stands in front of a text ends in a blank. An empty one may have lost it on its way.
        line = {};
        if (text.empty() || text.back() != ':') return false;
        if (!readEntry(std::string(text) + ' ', &line)) return false;
    }
    if (line.tag.empty() && line.time.empty()) mLacksTags = true;
    mIsLong = false;
    mTake(line);
    return true;
}

// A blank line may be part of the text, so it is held back until the next line tells: a header
// means that it was the end.
void SavedLog::goOn(View text) {
    if (text.substr(0, mQuote.size()) == mQuote) text.remove_prefix(mQuote.size());
    const bool isBlank = text.empty() || (!mQuote.empty() && text == ">");
    if (mHasBlank) {
        mHeader.text.clear();
        mTake(mHeader);
    }
    mHasBlank = isBlank;
    if (isBlank) return;
    mHeader.text = text;
    mTake(mHeader);
}

// A line that can be read both as it is and behind quote marks is taken as it is.
bool SavedLog::add(const std::string& line) {
    const View text = withoutColour(line);
    if (text.substr(0, 10) == "--------- ") return true;  // "beginning of main"
    const size_t behind = behindQuote(text);
    if (begin(text, "") || begin(text.substr(behind), text.substr(0, behind))) return true;
    if (mIsLong) {
        goOn(text);
        return true;
    }
    return takeWhole(text) || (behind > 0 && takeWhole(text.substr(behind)));
}

}  // namespace tarq::tools
