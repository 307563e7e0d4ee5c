// One table of the daemon's texts, each with the fact that it tells. Several texts may tell the
// same. A pattern leaves out the end of a text where that tells nothing more.
#include "tools/tarqctl/match/fact_texts.h"

#include "tools/tarqctl/log/log_line.h"

namespace tarq::tools {

// Other texts may end like this one, but a part's name has no blank.
static constexpr char kUnmatched[] = "%s flag is unmatch";

const std::vector<FactText>& factTexts() {
    static const std::vector<FactText>& table = *new std::vector<FactText>{
            {Fact::kSkipped, "skip  hw match,beacause %s=true"},
            {Fact::kSkipped, "skip  hw match,beacause not find overlay id(hw id)"},
            {Fact::kListFollows, "service get match peripherals,peripherals given:"},
            {Fact::kBoardFollows, "service  hardwareInfo inited:"},
            {Fact::kBoardBegins, ">>>hardware info Dump Begin"},
            {Fact::kBoardsOverlayId, "hw overLayId:%d"},
            {Fact::kBoardEnds, "<<<hardware info Dump End"},

            {Fact::kItemTooLong, "an item of %zu bytes is not compared, at most %s"},
            {Fact::kItemWithoutColon, "an item without \":\" has no value: %s"},
            {Fact::kOverlayResult, "isMatchoverlayId:%d"},
            {Fact::kPartDiffers, "isPeripheralMatch,typeName:%s"},
            {Fact::kTouchPanelResult, "isTpMatchByTpInfo: %s"},
            {Fact::kDisplayResult, "isLcdMatchByHwId: %s"},
            {Fact::kCameraResult, "isInternalCameraMatch: %s"},

            {Fact::kProbeFailed, "Fail to get tpinfo"},
            {Fact::kProbeFailed, "Fail to get lcd info"},
            {Fact::kProbeFailed, "Fail to get internal camera"},
            {Fact::kTouchPanelFound, "take tp info: %s"},
            {Fact::kPanelFlag, "flag: 0x%x"},
            {Fact::kPanelPin, "Read hw id gpios val (dis,id:val)(%d:%d) from %s"},
            {Fact::kPanelIdBy, "Try to get lcd id by %s"},
            {Fact::kPanelIdBy, "Fail to get lcdid"},
            {Fact::kPanelPassedOver, "LCD info is not in IC-ID format."},
            {Fact::kPanelPassedOver, "LCD info is not parse ID. %s"},
            {Fact::kPanelPassedOver, "Failed to convert %s"},

            {Fact::kTimestampKind, "Peripheral Type:  %s"},
            {Fact::kTimestampEarliest, "Earliest Support Time: %ld"},
            {Fact::kFallbackOff, "skip hw timestamp check, beacause %s is not set to true"},
            {Fact::kOtherCamera, "enter hw timestamp failue, beacause is two supply camera"},
            {Fact::kNoPackageTime, "Enter Time match failed: otaTimeStamp is 0(INVALID VALUE)"},
            {Fact::kTimestampFileWrong, "Fail to open /%s"},
            {Fact::kTimestampFileWrong, "Fail to find %s"},
            {Fact::kTimestampFileWrong, "Fail to parse %s"},
            {Fact::kNotListed, "otaTimeStamp Match success: cannot find the timestamps of %s"},
            {Fact::kTooEarly,
             "otaTimeStamp Match failed: otaTimeStamp(%ld) earlier than  "
             "maxEarliestSupportTime(%ld)"},
            {Fact::kLater,
             "otaTimeStamp Match success: otaTimeStamp(%ld) later than  "
             "maxEarliestSupportTime(%ld)"},
            {Fact::kPartUnmatched, kUnmatched},
    };
    return table;
}

// The first row that fits counts, so a text that is told apart by little stands before those that
// would take it as well.
std::optional<FactLine> factIn(const std::string& text) {
    for (const FactText& row : factTexts()) {
        if (auto arguments = printedArguments(row.pattern, text)) {
            if (row.pattern == kUnmatched && (*arguments)[0].find(' ') != text.npos) break;
            return {{row.fact, text, *std::move(arguments)}};
        }
    }
    return std::nullopt;
}

}  // namespace tarq::tools
