#include "tools/tarqctl/match_log_texts.h"

#include <string.h>

#include <algorithm>

namespace tarq::tools {

const char kMatchLogTag[] = "HardwareInfoService";

static constexpr size_t kMaxLogText = 1023;  // bytes

const std::vector<LogTextRow>& matchLogTexts() {
    static const std::vector<LogTextRow>& table = *new std::vector<LogTextRow>{
            {LogText::SKIPPED_BY_PROPERTY, "skip  hw match,beacause %s=true"},
            {LogText::SKIPPED_WITHOUT_OVERLAY_ID,
             "skip  hw match,beacause not find overlay id(hw id)"},
            {LogText::ITEMS_GIVEN, "service get match peripherals,peripherals given:"},

            {LogText::BOARD_FOLLOWS, "service  hardwareInfo inited:"},
            {LogText::BOARD_BEGIN, ">>>hardware info Dump Begin"},
            {LogText::BOARD_OVERLAY_ID, "hw overLayId:%d"},
            {LogText::BOARD_DETAIL, "read xml overLayId:%s"},
            {LogText::BOARD_DETAIL, "read xml hwVersion:%s"},
            {LogText::BOARD_DETAIL, "index:%d"},
            {LogText::BOARD_DETAIL, "product:%s"},
            {LogText::BOARD_END, "<<<hardware info Dump End"},

            {LogText::ITEM_TOO_LONG,
             "an item of %zu bytes is not compared, at most %zu are allowed: %s"},
            {LogText::NO_COLON, "an item without \":\" has no value: %s"},
            {LogText::OVERLAY_TOO_LONG,
             "overlay ids of %zu bytes are not compared, at most %zu are allowed"},
            {LogText::OVERLAY_RESULT, "isMatchoverlayId:%d"},
            {LogText::OVERLAY_NOT_INCLUDED, "overlay ids(%s) not include the one(%d) on boards"},
            {LogText::WORD_MISSING,
             "isPeripheraloneByOneMatch:peripheralNameInited:%s not match peripheralNameOta:%s"},
            {LogText::PART_DIFFERS, "isPeripheralMatch,typeName:%s,%s inited,%s given"},
            {LogText::PART_NOT_ON_BOARD,
             "isPeripheralMatch,typeName:%s,%s given,null inited,add abiltiy..."},

            {LogText::PROBE_DETAIL, "Unable to open file: %s"},
            {LogText::PROBE_DETAIL, "get tp info error: tpinfo_ic_info not found"},
            {LogText::PROBE_DETAIL, "get tp info from %s"},
            {LogText::PROBE_DETAIL, "tp_ic_info: key=%s, value=%s"},
            {LogText::PROBE_DETAIL, "fail to take tp info"},
            {LogText::TOUCH_PANEL_FOUND, "take tp info: %s"},
            {LogText::PROBE_DETAIL, "get lcd info from %s"},
            {LogText::DISPLAY_ID_BY_REG, "Try to get lcd id by reg"},
            {LogText::PROBE_DETAIL, "val: 0x%x"},
            {LogText::DISPLAY_FLAG, "flag: 0x%x"},
            {LogText::DISPLAY_ID_BY_FLAG, "Try to get lcd id by hwid-flag"},
            {LogText::PROBE_DETAIL, "Fail to get flag from hwid-flag"},
            {LogText::PROBE_DETAIL, "Fail to open dsi id: %s"},
            {LogText::PROBE_DETAIL, "Invalid gpio: %d"},
            {LogText::PROBE_DETAIL, "Unable to open gpio path: %s, ready to export"},
            {LogText::PROBE_DETAIL, "Failed to export gpio: %d"},
            {LogText::PROBE_DETAIL, "Failed to set gpio direction: %d"},
            {LogText::PROBE_DETAIL, "Unable to get gpio val: %s"},
            {LogText::PROBE_DETAIL, "Fail to get gpio value from gpio: %d"},
            {LogText::DISPLAY_GPIO_LEVEL, "Read hw id gpios val (dis,id:val)(%d:%d) from %s"},
            {LogText::DISPLAY_ID_BY_GPIO, "Try to get lcd id by dsi-id"},
            {LogText::PROBE_DETAIL, "Fail to get dsi id"},
            {LogText::PROBE_DETAIL, "Fail to get lcd id, no more feedback"},
            {LogText::PROBE_DETAIL, "Fail to get lcdid"},
            {LogText::DISPLAY_ENTRY_PASSED_OVER, "LCD info is not in IC-ID format."},
            {LogText::DISPLAY_ENTRY_PASSED_OVER, "LCD info is not parse ID. %s"},
            // " to int" follows, on a line of its own when the text read ends in a newline.
            {LogText::DISPLAY_ENTRY_PASSED_OVER, "Failed to convert %s"},
            {LogText::TOUCH_PANEL_FAILED, "Fail to get tpinfo"},
            {LogText::DISPLAY_FAILED, "Fail to get lcd info"},
            {LogText::CAMERA_FAILED, "Fail to get internal camera"},
            {LogText::TOUCH_PANEL_RESULT, "isTpMatchByTpInfo: %s"},
            {LogText::DISPLAY_RESULT, "isLcdMatchByHwId: %s"},
            {LogText::CAMERA_RESULT, "isInternalCameraMatch: %s"},

            {LogText::PART_UNMATCHED, "%s flag is unmatch"},
            {LogText::TIMESTAMP_OFF, "skip hw timestamp check, beacause %s is not set to true"},
            {LogText::TIMESTAMP_OTHER_CAMERA,
             "enter hw timestamp failue, beacause is two supply camera"},
            {LogText::TIMESTAMP_ABSENT,
             "Enter Time match failed: otaTimeStamp is 0(INVALID VALUE)"},
            {LogText::TIMESTAMP_GIVEN, "otaTimeStamp is %ld"},
            {LogText::TIMESTAMP_FILE_UNREADABLE, "Fail to open %s"},
            {LogText::TIMESTAMP_DETAIL, "get timestamp info from %s"},
            {LogText::TIMESTAMP_FILE_WRONG, "Fail to find PeripheralType after \"--\" in %s"},
            {LogText::TIMESTAMP_DETAIL, "Invalid Peripheral Type: %s"},
            {LogText::TIMESTAMP_FILE_WRONG, "Fail to find %s in borad"},
            {LogText::TIMESTAMP_FILE_WRONG, "Fail to parse %s because cannot find \",\""},
            {LogText::TIMESTAMP_DETAIL, "Fail to get timestamp in %s"},
            {LogText::TIMESTAMP_NOT_LISTED,
             "otaTimeStamp Match success: cannot find the timestamps of the board peripherals in "
             "%s, default match success"},
            {LogText::TIMESTAMP_DETAIL, ">>>hardware timestamp Dump Begin"},
            {LogText::TIMESTAMP_KIND, "Peripheral Type:  %s"},
            {LogText::TIMESTAMP_EARLIEST, "Earliest Support Time: %ld"},
            {LogText::TIMESTAMP_DETAIL, "<<<hardware timestamp Dump End"},
            {LogText::TIMESTAMP_TOO_EARLY,
             "otaTimeStamp Match failed: otaTimeStamp(%ld) earlier than  "
             "maxEarliestSupportTime(%ld)"},
            {LogText::TIMESTAMP_LATER,
             "otaTimeStamp Match success: otaTimeStamp(%ld) later than  "
             "maxEarliestSupportTime(%ld)"},
    };
    return table;
}

namespace {

// A pattern, piece by piece: a literal text, then the letter of the conversion behind it.
struct Piece {
    std::string literal;
    char conversion;  // NUL behind the last literal
};

std::vector<Piece> piecesOf(const std::string& pattern) {
    std::vector<Piece> pieces;
    size_t begin = 0;
    for (size_t percent; (percent = pattern.find('%', begin)) != std::string::npos;) {
        const size_t letter = pattern.find_first_of("sdux", percent);
        pieces.push_back({pattern.substr(begin, percent - begin), pattern[letter]});
        begin = letter + 1;
    }
    pieces.push_back({pattern.substr(begin), '\0'});
    return pieces;
}

bool isPrintedBy(char conversion, const std::string& text) {
    if (conversion == 's') return true;
    const char* digits = conversion == 'x' ? "0123456789abcdef" : "-0123456789";
    return !text.empty() && text.find_first_not_of(digits) == std::string::npos;
}

}  // namespace

const char* patternOf(LogText kind) {
    const auto& table = matchLogTexts();
    return std::find_if(table.begin(), table.end(),
                        [kind](const LogTextRow& row) { return row.kind == kind; })
            ->pattern;
}

std::optional<std::vector<std::string>> argumentsOf(const char* pattern, const std::string& text) {
    size_t begin = strcspn(pattern, "%");
    if (text.compare(0, begin, pattern, begin) != 0) return std::nullopt;  // most are done with
    std::vector<std::string> arguments;
    const std::vector<Piece> pieces = piecesOf(pattern);
    for (size_t i = 1; i < pieces.size(); ++i) {
        const std::string& literal = pieces[i].literal;
        const bool last = i + 1 == pieces.size();
        const size_t end = last && text.size() >= literal.size() ? text.size() - literal.size()
                                                                 : text.find(literal, begin);
        if (end == std::string::npos || end < begin) return std::nullopt;
        if (text.compare(end, literal.size(), literal) != 0) return std::nullopt;
        arguments.push_back(text.substr(begin, end - begin));
        if (!isPrintedBy(pieces[i - 1].conversion, arguments.back())) return std::nullopt;
        begin = end + literal.size();
    }
    if (begin != text.size()) return std::nullopt;
    return arguments;
}

std::optional<RecognisedText> recognise(const std::string& text) {
    for (const LogTextRow& row : matchLogTexts()) {
        if (auto arguments = argumentsOf(row.pattern, text)) {
            return {{row.kind, text, *arguments}};
        }
    }
    return std::nullopt;
}

std::vector<std::string> logLines(LogText kind, const std::vector<std::string>& arguments) {
    const std::vector<Piece> pieces = piecesOf(patternOf(kind));
    std::string text = pieces[0].literal;
    for (size_t i = 1; i < pieces.size(); ++i) text += arguments[i - 1] + pieces[i].literal;
    return asLogged(text);
}

std::vector<std::string> asLogged(const std::string& text) {
    std::vector<std::string> lines;
    std::string rest = text.substr(0, std::min(text.find('\0'), kMaxLogText));
    do {
        const size_t end = std::min(rest.find('\n'), rest.size());
        lines.push_back(rest.substr(0, end));
        rest.erase(0, end + 1);
    } while (!rest.empty());
    return lines;
}

}  // namespace tarq::tools
