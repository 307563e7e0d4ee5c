// The lines of the daemon's log that tell a fact of a match request: the only place in the tools
// that knows those texts. Whatever else the daemon logs is passed over.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tarq::tools {

// Where a fact stands in this list counts: those of the hardware and of the fallback are taken by
// their ranges.
enum class Fact {
    // How a request begins, and the board, as every request repeats it.
    kSkipped,      // by a property, or as the board has no overlay id
    kListFollows,  // each item as it is
    kBoardFollows,
    kBoardBegins,  // then each part, name:value
    kBoardsOverlayId,
    kBoardEnds,
    // What is told of an item, in this order.
    kItemTooLong,
    kItemWithoutColon,
    kOverlayResult,
    kPartDiffers,
    kTouchPanelResult,
    kDisplayResult,
    kCameraResult,
    // How the hardware answered, before the result.
    kProbeFailed,
    kTouchPanelFound,
    kPanelFlag,
    kPanelPin,
    kPanelIdBy,  // one of three ways, or none
    kPanelPassedOver,
    // Behind the last item, unless all fits.
    kPartUnmatched,
    kTimestampKind,
    kTimestampEarliest,
    // How the fallback ended.
    kFallbackOff,
    kOtherCamera,
    kNoPackageTime,
    kTimestampFileWrong,
    kNotListed,
    kTooEarly,
    kLater,
};

// Whether it is how the hardware answered, which the log tells outside of requests as well.
inline bool isOfProbe(Fact fact) {
    return fact >= Fact::kProbeFailed && fact <= Fact::kPanelPassedOver;
}

struct FactText {
    Fact fact;
    // As the daemon's printf has it; %s at its end stands for whatever follows.
    const char* pattern;
};

// In the order in which a text is held against them. Tests hold the daemon's code against this
// table.
const std::vector<FactText>& factTexts();

// What the conversions of the pattern stand for in the text, in their order, each as the text has
// it.
struct FactLine {
    Fact fact;
    std::string text;
    std::vector<std::string> arguments;
};
using FactLines = std::vector<FactLine>;

// By the first pattern that fits; nothing for a text that tells no fact.
std::optional<FactLine> factIn(const std::string& text);

}  // namespace tarq::tools
