// An item is compared with its row in two ways, and one yes is enough. By texts: each part that the
// description file gives for the board occurs somewhere in the package's value. By probe, for the
// three kinds whose hardware can be asked: one element of the value is exactly what was found. The
// second way lets in a package for a part that no description knows yet.
#include "hardware_info/item_comparison.h"

#include <android/log.h>

#include "hardware_info/camera_probe.h"
#include "hardware_info/display_probe.h"
#include "hardware_info/peripheral_table.h"
#include "hardware_info/text.h"
#include "hardware_info/touch_panel_probe.h"

namespace {

// A kind of which the hardware itself tells the part.
struct Probe {
    PeripheralType type;
    bool (*run)(std::string& part);
    const char* failure;    // the whole log line
    const char* result;     // the log line before ": match" or ": unmatch"
    const char* nullMeans;  // the part that "null" in a package's list stands for
};

}  // namespace

static constexpr Probe kProbes[] = {
        {PeripheralType::TP, getTpInfo, "Fail to get tpinfo", "isTpMatchByTpInfo", "null"},
        {PeripheralType::LCD, getLcdInfoFromXml, "Fail to get lcd info", "isLcdMatchByHwId",
         "null"},
        {PeripheralType::INTERNAL_CAMERA, getInternalCameraInfo, "Fail to get internal camera",
         "isInternalCameraMatch", "gc5035"},
};

// Whether the list holds this board's overlay id, as a number: 13 does not include 3.
static bool includesBoard(const std::string& value) {
    const int32_t overlayId = boardIdentity.overlayId;
    const bool comparable = value.size() <= kMaxOverlayValueLength;
    if (!comparable) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "overlay ids of %zu bytes are not compared, at most %zu are allowed",
                            value.size(), kMaxOverlayValueLength);
    }
    const bool included = comparable && includesId(value, overlayId);
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "isMatchoverlayId:%d", included ? 1 : 0);
    if (!included) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "overlay ids(%s) not include the one(%d) on boards", value.c_str(),
                            overlayId);
    }
    return included;
}

// Whether each of the board's parts occurs anywhere in the package's text, within a word as well:
// "gt9" is found in "gt911". The first that does not is logged.
static bool containsParts(const std::string& board, const std::string& package) {
    for (const std::string& part : tokensOf(board)) {
        if (package.find(part) != std::string::npos) continue;
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "isPeripheraloneByOneMatch:peripheralNameInited:%s not match "
                            "peripheralNameOta:%s",
                            board.c_str(), package.c_str());
        return false;
    }
    return true;
}

// The new matchState, by what the description file says. A package may bring support for a part
// that the board does not list: the row stays unmatched, but such a row never refuses a package.
static uint8_t compareTexts(const PeripheralEntry& row, const std::string& package) {
    const std::string board = row.value;
    if (board == "null") {
        if (package == "null") return 0;
        __android_log_print(ANDROID_LOG_INFO, kLogTag,
                            "isPeripheralMatch,typeName:%s,%s given,null inited,add abiltiy...",
                            row.name, package.c_str());
        return 2;
    }
    if (containsParts(board, package)) return 1;
    __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                        "isPeripheralMatch,typeName:%s,%s inited,%s given", row.name, board.c_str(),
                        package.c_str());
    return 2;
}

// An element is compared as it stands, with the blanks around it.
static bool listsProbedPart(const Probe& probe, const std::string& package) {
    std::string part;
    if (!probe.run(part)) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s", probe.failure);
        return false;
    }
    std::string_view element;
    for (Pieces elements(package, ','); elements.next(&element);) {
        if ((element == "null" ? probe.nullMeans : element) == part) return true;
    }
    return false;
}

// Either comparison is enough: a part that the description file does not know may be the one that
// the hardware reports. The result logged is this request's own, whatever another one has made of
// the row while the probe ran.
static void compareRow(PeripheralEntry& row, const std::string& package) {
    uint8_t state = compareTexts(row, package);
    row.matchState.store(state, std::memory_order_relaxed);
    for (const Probe& probe : kProbes) {
        if (probe.type != row.type) continue;
        if (listsProbedPart(probe, package)) {
            state = 1;
            row.matchState.store(state, std::memory_order_relaxed);
        }
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s: %s", probe.result,
                            state == 1 ? "match" : "unmatch");
    }
}

// At most one row has the name; an unknown name has none.
static void compareRowNamed(const std::string& name, const std::string& package, bool comparable) {
    for (PeripheralEntry& row : peripheralTable) {
        if (name != row.name) continue;
        if (comparable) {
            compareRow(row, package);
        } else {
            row.matchState.store(2, std::memory_order_relaxed);
        }
    }
}

bool compareItem(const std::string& text) {
    const bool comparable = text.size() <= kMaxItemLength;
    if (!comparable) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "an item of %zu bytes is not compared, at most %zu are allowed: %s",
                            text.size(), kMaxItemLength, text.c_str());
    }
    const size_t colon = text.find(':');
    if (colon == std::string::npos) {
        __android_log_print(ANDROID_LOG_WARN, kLogTag, "an item without \":\" has no value: %s",
                            text.c_str());
    }
    const std::string name = text.substr(0, colon);
    const std::string value = colon == std::string::npos ? "" : text.substr(colon + 1);
    if (name == "overlay_id") return boardIdentity.overlayId == -1 || includesBoard(value);
    compareRowNamed(name, value, comparable);
    return true;
}
