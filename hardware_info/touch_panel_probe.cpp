// A touch panel's driver shows which controller it found, in one of two places. The text is the
// driver's, so it is taken only if every line of it is understood.
#include "hardware_info/touch_panel_probe.h"

#include <android/log.h>
#include <stdlib.h>

#include "hardware_info/entire_file.h"
#include "hardware_info/peripheral_table.h"
#include "hardware_info/text.h"

static constexpr const char* kPaths[] = {
        "/sys/class/tpinfo/tpinfo_ic_info",
        // The controller's own driver shows it here: address 0x5d on bus 2.
        "/sys/class/i2c-dev/i2c-2/device/2-005d/tp_ic_info",
};

// A line of any other kind spoils the whole text, whatever was told before it.
bool parseTpInfo(std::string_view text, std::string& info) {
    std::string type;
    int id = -1;
    std::string_view line;
    for (Pieces lines(text, '\n'); lines.next(&line);) {
        const size_t colon = line.find(':');
        const std::string key(line.substr(0, colon));
        const std::string value(colon == line.npos ? "" : line.substr(colon + 1));
        __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "tp_ic_info: key=%s, value=%s", key.c_str(),
                            value.c_str());
        if (key == "type") {
            type = value;
        } else if (key == "id") {
            id = atoi(value.c_str());  // whatever blanks are around it
        } else {
            __android_log_print(ANDROID_LOG_ERROR, kLogTag, "fail to take tp info");
            return false;
        }
    }
    info = type + "-" + std::to_string(id);
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "take tp info: %s", info.c_str());
    return true;
}

bool getTpInfo(std::string& info) {
    for (const char* path : kPaths) {
        const std::vector<uint8_t> content = readEntireFile(path);
        if (content.empty()) continue;
        __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "get tp info from %s", path);
        // The first driver that tells something has the word, even if it makes no sense.
        return parseTpInfo(asText(content), info);
    }
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "get tp info error: tpinfo_ic_info not found");
    return false;
}
