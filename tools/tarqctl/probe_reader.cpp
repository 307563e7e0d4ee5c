#include "tools/tarqctl/probe_reader.h"

#include <stdlib.h>

#include <algorithm>

#include "hardware_info/text.h"

namespace tarq::tools {

namespace {

struct ProbeTexts {
    const char* part;
    LogText failure;
    LogText result;
};

constexpr ProbeTexts kProbes[] = {
        {"tp", LogText::TOUCH_PANEL_FAILED, LogText::TOUCH_PANEL_RESULT},
        {"lcd", LogText::DISPLAY_FAILED, LogText::DISPLAY_RESULT},
        {"internal_camera", LogText::CAMERA_FAILED, LogText::CAMERA_RESULT},
};

std::vector<std::string> elementsOf(const std::string& list) {
    std::vector<std::string> elements;
    std::string_view element;
    for (Pieces pieces(list, ','); pieces.next(&element);) elements.emplace_back(element);
    return elements;
}

// Gathers what is told of the part found. A camera tells nothing.
class PartSearch {
  public:
    // board: the part's value, for a display the list of those that may be fitted.
    explicit PartSearch(const std::string& board) : mEntries(elementsOf(board)) {}

    void take(const RecognisedText& line);
    ProbeFinding finding(bool answered) const;

  private:
    void takeWay(const char* way, std::optional<int> id);

    const std::vector<std::string> mEntries;
    std::optional<std::string> mPart;
    std::string mHow;
    std::optional<int> mFlag;  // told in debug lines, which a saved log may lack
    std::optional<int> mLevels;
    size_t mPassedOver = 0;
};

void PartSearch::takeWay(const char* way, std::optional<int> id) {
    mHow = "panel id " + (id ? std::to_string(*id) + " " : "") + "by " + way;
}

void PartSearch::take(const RecognisedText& line) {
    switch (line.kind) {
        case LogText::TOUCH_PANEL_FOUND:
            mPart = line.arguments[0];
            break;
        case LogText::DISPLAY_FLAG:
            mFlag = static_cast<int>(strtoul(line.arguments[0].c_str(), nullptr, 16));
            break;
        case LogText::DISPLAY_GPIO_LEVEL:  // the first one is the high bit
            mLevels = mLevels.value_or(0) % 2 * 2 + (line.arguments[1] == "1" ? 1 : 0);
            break;
        case LogText::DISPLAY_ID_BY_REG:
            takeWay("reg", std::nullopt);
            break;
        case LogText::DISPLAY_ID_BY_FLAG:
            takeWay("hwid-flag", mFlag);
            break;
        case LogText::DISPLAY_ID_BY_GPIO:
            takeWay("dsi-id", mLevels);
            break;
        case LogText::DISPLAY_ENTRY_PASSED_OVER:
            ++mPassedOver;
            break;
        default:
            break;
    }
}

// The display found is the entry behind those that were passed over.
ProbeFinding PartSearch::finding(bool answered) const {
    ProbeFinding found = {answered, mPart, mHow};
    if (answered && !mHow.empty() && mPassedOver < mEntries.size()) {
        found.part = mEntries[mPassedOver];
    }
    return found;
}

// Takes the lines up to the result; the result says "match" or "unmatch".
ProbeFinding search(LogCursor& log, const Item& part, const ProbeTexts& texts, bool* match) {
    PartSearch search(part.value);
    bool answered = true;
    for (;;) {
        const RecognisedText line = log.take();
        if (line.kind == texts.result) {
            *match = line.arguments[0] == "match";
            return search.finding(answered);
        }
        if (line.kind == texts.failure) {
            answered = false;
        } else if (!isProbing(line.kind)) {
            throw BrokenOff{Outcome::BROKEN};
        }
        search.take(line);
    }
}

}  // namespace

bool isProbing(LogText kind) {
    return kind >= LogText::PROBE_DETAIL && kind <= LogText::DISPLAY_ENTRY_PASSED_OVER;
}

bool readProbe(LogCursor& log, const Item& part, ItemFinding& finding) {
    const auto* texts = std::find_if(std::begin(kProbes), std::end(kProbes),
                                     [&part](const ProbeTexts& p) { return p.part == part.name; });
    if (texts == std::end(kProbes)) return true;
    bool match = false;
    ProbeFinding found = search(log, part, *texts, &match);
    const bool wordsFit = part.value != "null" && finding.missingWords.empty();
    if (!found.answered) {
        found.listed = false;
    } else if (found.part) {
        const std::vector<std::string> elements = elementsOf(finding.item.value);
        found.listed = std::count(elements.begin(), elements.end(), *found.part) > 0;
    } else if (!wordsFit) {
        found.listed = match;  // nothing else can have made it one
    }
    finding.probe = found;
    return match == (wordsFit || found.listed.value_or(false));
}

}  // namespace tarq::tools
