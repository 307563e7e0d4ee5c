// What the daemon writes into the log while it answers a match request: the only place in the tools
// that knows those texts. Names of parts and items that are logged as they are have no text here.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tarq::tools {

// The tag of all of them.
extern const char kMatchLogTag[];

enum class LogText {
    // How a request begins.
    SKIPPED_BY_PROPERTY,
    SKIPPED_WITHOUT_OVERLAY_ID,
    ITEMS_GIVEN,  // then each item
    // The board, as every request repeats it.
    BOARD_FOLLOWS,
    BOARD_BEGIN,  // then each part, name:value
    BOARD_OVERLAY_ID,
    BOARD_DETAIL,
    BOARD_END,
    // The items, in their order.
    ITEM_TOO_LONG,
    NO_COLON,
    OVERLAY_TOO_LONG,
    OVERLAY_RESULT,
    OVERLAY_NOT_INCLUDED,
    WORD_MISSING,
    PART_DIFFERS,
    PART_NOT_ON_BOARD,
    // The probes, for an item and for the timestamp file: from here to the results.
    PROBE_DETAIL,
    TOUCH_PANEL_FOUND,
    DISPLAY_ID_BY_REG,
    DISPLAY_FLAG,
    DISPLAY_ID_BY_FLAG,
    DISPLAY_GPIO_LEVEL,
    DISPLAY_ID_BY_GPIO,
    DISPLAY_ENTRY_PASSED_OVER,
    TOUCH_PANEL_FAILED,
    DISPLAY_FAILED,
    CAMERA_FAILED,
    TOUCH_PANEL_RESULT,
    DISPLAY_RESULT,
    CAMERA_RESULT,
    // What comes after the last item unless all fits.
    PART_UNMATCHED,
    TIMESTAMP_OFF,
    TIMESTAMP_OTHER_CAMERA,
    TIMESTAMP_ABSENT,
    TIMESTAMP_GIVEN,
    TIMESTAMP_DETAIL,
    TIMESTAMP_KIND,
    TIMESTAMP_EARLIEST,
    TIMESTAMP_FILE_UNREADABLE,
    TIMESTAMP_FILE_WRONG,
    TIMESTAMP_NOT_LISTED,
    TIMESTAMP_TOO_EARLY,
    TIMESTAMP_LATER,
};

struct LogTextRow {
    LogText kind;
    const char* pattern;  // as the daemon's printf has it
};

// A kind may have several rows.
const std::vector<LogTextRow>& matchLogTexts();

// That of the kind's first row.
const char* patternOf(LogText kind);

// The arguments if the text was printed with the pattern; each is as short as it can be.
std::optional<std::vector<std::string>> argumentsOf(const char* pattern, const std::string& text);

struct RecognisedText {
    LogText kind;
    std::string text;
    std::vector<std::string> arguments;
};

// By the first row that fits. Nothing for other texts, which a reader passes over.
std::optional<RecognisedText> recognise(const std::string& text);

// What the daemon prints with the kind's first row, in the lines that the log makes of it.
std::vector<std::string> logLines(LogText kind, const std::vector<std::string>& arguments);

// The lines that the log makes of a text: it cuts a long one and begins a line behind a newline.
std::vector<std::string> asLogged(const std::string& text);

}  // namespace tarq::tools
