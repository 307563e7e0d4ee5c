// A board may carry any of the panels that its description lists, each with a number, and its
// hardware tells the number of the one that is fitted. Boards do that in three ways, asked in a
// fixed order until one gives a number: the "id" of the panel's node in the device tree, the
// "hwid-flag" beside it, or two GPIO lines that the device tree names. The number then picks the
// list's item.
#include "hardware_info/display_probe.h"

#include <android/log.h>
#include <stdlib.h>

#include "hardware_info/entire_file.h"
#include "hardware_info/gpio_input.h"
#include "hardware_info/peripheral_table.h"
#include "hardware_info/text.h"

// The node of the panel, and the one of the DSI controller whose registers are at ff450000.
static constexpr char kRegPath[] = "/sys/bus/mipi-dsi/devices/ff450000.dsi.0/of_node/id";
static constexpr char kFlagPath[] = "/sys/bus/mipi-dsi/devices/ff450000.dsi.0/of_node/hwid-flag";
static constexpr char kId1Path[] = "/proc/device-tree/dsi@ff450000/dsi,id1";
static constexpr char kId2Path[] = "/proc/device-tree/dsi@ff450000/dsi,id2";

static constexpr size_t kCellSize = 4;       // bytes of a number in a device tree
static constexpr uint32_t kGpioCount = 128;  // the lines are numbered from 0

// A device tree cell is four bytes, the most significant first.
static uint32_t cellFrom(const std::vector<uint8_t>& bytes) {
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

// The three bytes stay in the upper part of the number, deliberately: 00 00 05 is panel 1280, and
// so it stands in the description. Three bytes FF are no number, and the next way is asked.
static bool panelIdByReg(int32_t& panelId) {
    std::vector<uint8_t> bytes = readEntireFile(kRegPath);
    if (bytes.size() != kCellSize - 1) return false;
    __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "get lcd info from %s", kRegPath);
    bytes.push_back(0);
    const uint32_t id = cellFrom(bytes);
    if (id == 0xFFFFFF00) return false;
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "Try to get lcd id by reg");
    panelId = static_cast<int32_t>(id);
    return true;
}

// A flag with the highest bit set is negative, and no number. Both debug lines show the same
// number: log texts are a contract.
static bool panelIdByFlag(int32_t& panelId) {
    const std::vector<uint8_t> bytes = readEntireFile(kFlagPath);
    int32_t flag = -1;
    if (bytes.size() == kCellSize) {
        flag = static_cast<int32_t>(cellFrom(bytes));
        __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "val: 0x%x", flag);
        __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "flag: 0x%x", flag);
    }
    if (flag < 0) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Fail to get flag from hwid-flag");
        return false;
    }
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "Try to get lcd id by hwid-flag");
    panelId = flag;
    return true;
}

// The first line is the upper bit: levels 1 and 0 are number 2. The second is not touched when the
// first cannot be read.
static bool panelIdByPins(int32_t& panelId) {
    int32_t high = 0;
    int32_t low = 0;
    if (!getGpioValFromDsiId(kId1Path, high) || !getGpioValFromDsiId(kId2Path, low)) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Fail to get dsi id");
        return false;
    }
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "Try to get lcd id by dsi-id");
    panelId = high << 1 | low;
    return true;
}

static bool levelFrom(const std::string& value, int32_t& level) {
    // Blanks and the line's end do not matter to atoi. A negative number is a large one here.
    const int number = atoi(value.c_str());
    if (static_cast<uint32_t>(number) >= 2) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Failed to convert %s to int",
                            value.c_str());
        return false;
    }
    level = number;
    return true;
}

static bool levelOfGpio(uint32_t gpio, int32_t& level) {
    if (gpio >= kGpioCount) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Invalid gpio: %d", gpio);
        return false;
    }
    std::string value;
    return readGpioInput(gpio, value) && levelFrom(value, level);
}

bool getGpioValFromDsiId(const char* path, int32_t& level) {
    // A property may have more cells; the first is the number.
    const std::vector<uint8_t> bytes = readEntireFile(path);
    if (bytes.size() < kCellSize) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Fail to open dsi id: %s", path);
        return false;
    }
    const uint32_t gpio = cellFrom(bytes);
    if (!levelOfGpio(gpio, level)) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Fail to get gpio value from gpio: %d",
                            gpio);
        return false;
    }
    __android_log_print(ANDROID_LOG_DEBUG, kLogTag,
                        "Read hw id gpios val (dis,id:val)(%d:%d) from %s", gpio, level, path);
    return true;
}

// An item is IC-ID; a second "-" and what is behind it are ignored.
static bool isPanel(std::string_view item, int32_t panelId) {
    Pieces fields(item, '-');
    std::string_view field;
    if (!fields.next(&field)) {  // the controller's name
        __android_log_print(ANDROID_LOG_WARN, kLogTag, "LCD info is not in IC-ID format.");
        return false;
    }
    if (!fields.next(&field)) {
        __android_log_print(ANDROID_LOG_WARN, kLogTag, "LCD info is not parse ID. %s",
                            std::string(item).c_str());
        return false;
    }
    const std::string id(field);
    if (atoi(id.c_str()) == panelId) return true;  // whatever blanks are around it
    // The line speaks of a conversion, and is logged as well for every panel that is not the one.
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Failed to convert %s to int", id.c_str());
    return false;
}

bool findPanel(std::string_view list, int32_t panelId, std::string& item) {
    std::string_view candidate;
    for (Pieces items(list, ','); items.next(&candidate);) {
        if (!isPanel(candidate, panelId)) continue;
        item = candidate;
        return true;
    }
    return false;
}

bool getLcdInfoFromXml(std::string& item) {
    int32_t panelId = 0;
    if (!panelIdByReg(panelId) && !panelIdByFlag(panelId) && !panelIdByPins(panelId)) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Fail to get lcd id, no more feedback");
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Fail to get lcdid");
        return false;
    }
    const auto row = static_cast<size_t>(PeripheralType::LCD);
    return findPanel(peripheralTable[row].value, panelId, item);
}
