// One walk over the file's lines. A section's header asks the hardware which part of that kind this
// board carries; of the lines below it only those about that part are taken. The package has to be
// newer than the latest of the times so taken. The first mistake ends the walk with a no, whatever
// was taken before: a file that is half understood must not let anything in.
#include "hardware_info/timestamp_check.h"

#include <android/log.h>
#include <stdlib.h>

#include <algorithm>
#include <string>
#include <vector>

#include "hardware_info/camera_probe.h"
#include "hardware_info/display_probe.h"
#include "hardware_info/entire_file.h"
#include "hardware_info/peripheral_table.h"
#include "hardware_info/text.h"
#include "hardware_info/touch_panel_probe.h"

static constexpr char kPath[] = "/vendor/etc/hardware_timestamp.txt";

std::atomic<int64_t> otaTimestamp{0};

void _setOtaTimestamp(int64_t timestamp) {
    otaTimestamp.store(timestamp, std::memory_order_relaxed);
}

namespace {

// Packages from this time on support one of the board's parts.
struct EarliestTime {
    std::string kind;
    int64_t time;  // in the updater's unit
};

// Walks the lines of the file and collects those about this board's parts.
class TimestampWalk {
  public:
    // False when the line ends the check, which is logged.
    bool take(std::string_view line);
    const std::vector<EarliestTime>& times() const { return mTimes; }

  private:
    bool openSection(std::string_view kind);
    bool probePart();
    bool takeTime(std::string_view line);

    std::string mKind;  // of the current section
    std::string mPart;  // the board's of that kind; both are empty before the first section
    std::vector<EarliestTime> mTimes;
};

bool TimestampWalk::take(std::string_view line) {
    if (line.substr(0, 2) == "--") return openSection(line.substr(2));
    return takeTime(line);
}

// A CR at the end, as in a file from another system, makes the kind one that is not known.
bool TimestampWalk::openSection(std::string_view kind) {
    if (kind.empty()) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "Fail to find PeripheralType after \"--\" in %s", kPath);
        return false;
    }
    mKind = kind;
    if (probePart()) return true;
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Fail to find %s in borad", mKind.c_str());
    return false;
}

bool TimestampWalk::probePart() {
    if (mKind == "TP") return getTpInfo(mPart);
    if (mKind == "LCD") return getLcdInfoFromXml(mPart);
    if (mKind == "INTERNAL_CAMERA") return getInternalCameraInfo(mPart);
    // Nothing can tell whether these are fitted, so a file that names one refuses every package.
    for (const char* known :
         {"WIFI", "CODEC", "USB_CAMERA", "BT", "SWITCH", "EMMC", "LED_IC", "KEYBOARD_IC"}) {
        if (mKind == known) return false;
    }
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Invalid Peripheral Type: %s", mKind.c_str());
    return false;
}

// Parts are compared as they stand, with the blanks around them; above the first section with an
// empty one.
bool TimestampWalk::takeTime(std::string_view line) {
    const size_t comma = line.find(',');
    if (comma == line.npos) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "Fail to parse %s because cannot find \",\"", kPath);
        return false;
    }
    if (line.substr(0, comma) != mPart) return true;
    const std::string_view time = line.substr(comma + 1);
    if (time.empty()) {  // counts as 0
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Fail to get timestamp in %s", kPath);
    }
    mTimes.push_back({mKind, atol(std::string(time).c_str())});  // whatever blanks are around it
    return true;
}

}  // namespace

// What the comparison goes by, for people who ask why a package was refused. A long has 64 bits on
// the device, and so holds every time.
static void logTimes(const std::vector<EarliestTime>& times) {
    __android_log_print(ANDROID_LOG_INFO, kLogTag, ">>>hardware timestamp Dump Begin");
    for (const EarliestTime& earliest : times) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "Peripheral Type:  %s",
                            earliest.kind.c_str());
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "Earliest Support Time: %ld",
                            static_cast<long>(earliest.time));
    }
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "<<<hardware timestamp Dump End");
}

// A package from the very moment is not later than it.
static bool isLater(int64_t packageTime, int64_t newest) {
    const bool later = packageTime > newest;
    __android_log_print(ANDROID_LOG_INFO, kLogTag,
                        later ? "otaTimeStamp Match success: otaTimeStamp(%ld) later than  "
                                "maxEarliestSupportTime(%ld)"
                              : "otaTimeStamp Match failed: otaTimeStamp(%ld) earlier than  "
                                "maxEarliestSupportTime(%ld)",
                        static_cast<long>(packageTime), static_cast<long>(newest));
    return later;
}

bool isLaterThanListed(std::string_view content, int64_t packageTime) {
    TimestampWalk walk;
    std::string_view line;
    for (Pieces lines(content, '\n'); lines.next(&line);) {
        if (!walk.take(line)) return false;
    }
    const std::vector<EarliestTime>& times = walk.times();
    if (times.empty()) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag,
                            "otaTimeStamp Match success: cannot find the timestamps of the board "
                            "peripherals in %s, default match success",
                            kPath);
        return true;
    }
    logTimes(times);
    const auto newest =
            std::max_element(times.begin(), times.end(),
                             [](const auto& a, const auto& b) { return a.time < b.time; });
    return isLater(packageTime, newest->time);
}

// The file's absence refuses too: it is only asked for packages that do not fit otherwise.
bool _isLaterTimestamp(int64_t packageTime) {
    if (packageTime == 0) {
        __android_log_print(ANDROID_LOG_DEBUG, kLogTag,
                            "Enter Time match failed: otaTimeStamp is 0(INVALID VALUE)");
        return false;
    }
    __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "otaTimeStamp is %ld",
                        static_cast<long>(packageTime));
    const std::vector<uint8_t> content = readEntireFile(kPath);
    if (content.empty()) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Fail to open %s", kPath);
        return false;
    }
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "get timestamp info from %s", kPath);
    return isLaterThanListed(asText(content), packageTime);
}
