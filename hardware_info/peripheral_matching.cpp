// A package is let in or refused by the first of four questions that decides: does this build skip
// the comparison, is the package for this board's overlay, does it support each of the board's
// parts, and if not, is it newer than the oldest software that does. docs/update_packages.md tells
// the same to those who write packages. Each answer is logged, as the caller gets a yes or a no
// alone.
#include "hardware_info/peripheral_matching.h"

#include <android/log.h>
#include <cutils/properties.h>
#include <string.h>
#include <utils/String8.h>

#include "hardware_info/camera_probe.h"
#include "hardware_info/item_comparison.h"
#include "hardware_info/peripheral_list.h"
#include "hardware_info/peripheral_table.h"
#include "hardware_info/timestamp_check.h"

using android::String16;
using android::String8;

static constexpr char kSkip[] = "ro.vendor.ota_skip_hw_info";
static constexpr char kSkipWithoutOverlay[] = "ro.vendor.ota_skip_hw_info_no_hwid";
static constexpr char kCheckTimestamp[] = "ro.vendor.ota_enter_timestamp_check";

// Nothing else counts as set, neither "1" nor "TRUE".
static bool isTrue(const char* property) {
    char value[PROPERTY_VALUE_MAX] = {};
    property_get(property, value, "false");
    return strcmp(value, "true") == 0;
}

bool isSkipHw() {
    if (isTrue(kSkip)) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "skip  hw match,beacause %s=true", kSkip);
        return true;
    }
    if (isTrue(kSkipWithoutOverlay) && boardIdentity.overlayId == -1) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag,
                            "skip  hw match,beacause not find overlay id(hw id)");
        return true;
    }
    return false;
}

// The whole request, before anything is decided: tarqctl explains a match from these lines.
static void logRequest(const std::vector<std::string>& items) {
    __android_log_print(ANDROID_LOG_INFO, kLogTag,
                        "service get match peripherals,peripherals given:");
    for (const std::string& item : items) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s", item.c_str());
    }
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "service  hardwareInfo inited:");
    dump_hardware();
}

// The first row whose part the package does not support; null when there is none. A row that no
// item names has stayed at 2: a package must name every part that the board lists.
static const PeripheralEntry* unmatchedRow() {
    for (const PeripheralEntry& row : peripheralTable) {
        const bool unmatched = row.matchState.load(std::memory_order_relaxed) == 2;
        if (unmatched && strcmp(row.value, "null") != 0) return &row;
    }
    return nullptr;
}

// The times in the timestamp file hold for boards with the camera gc5035 only, or without any. The
// first camera that answers is the one that is asked: another behind it is not seen. One that
// answers without a name counts as none.
static bool hasOtherCamera() {
    std::string camera;
    return getInternalCameraInfo(camera) && !camera.empty() && camera != "gc5035";
}

static bool passesByTimestamp() {
    if (!isTrue(kCheckTimestamp)) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag,
                            "skip hw timestamp check, beacause %s is not set to true",
                            kCheckTimestamp);
        return false;
    }
    if (hasOtherCamera()) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag,
                            "enter hw timestamp failue, beacause is two supply camera");
        return false;
    }
    return _isLaterTimestamp(otaTimestamp.load(std::memory_order_relaxed));
}

// Every item is compared even when one before it did not fit, so that the log tells of all that is
// wrong; only the overlay ends a request early.
bool _isMatchHardwareInfo(const std::vector<String16>& items) {
    if (isSkipHw()) return true;
    std::vector<std::string> texts;
    texts.reserve(items.size());
    for (const String16& item : items) {
        const String8 text(item);
        texts.emplace_back(text.string(), text.size());
    }
    logRequest(texts);
    for (PeripheralEntry& row : peripheralTable) {
        row.matchState.store(2, std::memory_order_relaxed);
    }
    for (const std::string& text : texts) {
        if (!compareItem(text)) return false;
    }
    const PeripheralEntry* const unmatched = unmatchedRow();
    if (unmatched == nullptr) return true;
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s flag is unmatch", unmatched->name);
    return passesByTimestamp();
}
