#include "tools/tarqctl/log_cursor.h"

namespace tarq::tools {

bool isStart(LogText kind) {
    return kind <= LogText::ITEMS_GIVEN;
}

const std::string* LogCursor::takeUnknown() {
    if (mNext == mLines.size() || recognise(mLines[mNext].text)) return nullptr;
    return &mLines[mNext++].text;
}

std::optional<RecognisedText> LogCursor::peek() {
    while (takeUnknown() != nullptr) continue;
    return mNext == mLines.size() ? std::nullopt : recognise(mLines[mNext].text);
}

RecognisedText LogCursor::take() {
    std::optional<RecognisedText> line = peek();
    if (!line) throw BrokenOff{Outcome::CUT_OFF};
    if (isStart(line->kind)) throw BrokenOff{Outcome::BROKEN};
    ++mNext;
    return *std::move(line);
}

std::vector<std::string> LogCursor::expect(LogText kind) {
    RecognisedText line = take();
    if (line.kind != kind) throw BrokenOff{Outcome::BROKEN};
    return std::move(line.arguments);
}

void LogCursor::expectText(LogText kind, const std::vector<std::string>& arguments) {
    const std::vector<std::string> expected = logLines(kind, arguments);
    while (mNext < mLines.size() && mLines[mNext].text != expected[0]) {
        if (takeUnknown() == nullptr) throw BrokenOff{Outcome::BROKEN};
    }
    for (const std::string& text : expected) {
        if (mNext == mLines.size()) throw BrokenOff{Outcome::CUT_OFF};
        if (mLines[mNext].text != text) throw BrokenOff{Outcome::BROKEN};
        ++mNext;
    }
}

}  // namespace tarq::tools
