#include "rgbleds/led_attributes.h"

#include <android/log.h>
#include <stdio.h>

#include <memory>

#include "common/device_file.h"

static constexpr char kSetColor[] = "/sys/class/rgbled/set_color";
static constexpr char kSetBrightness[] = "/sys/class/rgbled/set_brightness";

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

// The mode serves both reading and writing. It truncates, which does nothing to an attribute: it
// has no content of its own, but calls the driver.
static File openAttribute(const char* path) {
    File file(fopen(deviceFile(path).c_str(), "w+e"), fclose);
    if (file == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "open file %s failed!\n", path);
    }
    return file;
}

std::string driverHex(int32_t number) {
    char digits[9];  // of 32 bits, and the terminator
    snprintf(digits, sizeof(digits), "%x", static_cast<uint32_t>(number));
    return digits;
}

bool writeAttribute(const char* path, const std::string& text) {
    const File file = openAttribute(path);
    if (file == nullptr) return false;
    // It goes out when the file is closed, and nobody asks what becomes of it.
    fputs(text.c_str(), file.get());
    return true;
}

int32_t readAttribute(const char* path, int32_t id) {
    writeAttribute(path, driverHex(id));
    const File file = openAttribute(path);
    char word[64];  // a driver's longest is "0x" and eight digits
    uint32_t value = 0;
    if (file != nullptr && fscanf(file.get(), "%63s", word) == 1) sscanf(word, "%x", &value);
    return static_cast<int32_t>(value);
}

int writeColorToFile(int id, int color) {
    return writeAttribute(kSetColor, driverHex(id) + " " + driverHex(color)) ? 1 : 0;
}

int writeBrightnessToFile(int id, int brightness) {
    return writeAttribute(kSetBrightness, driverHex(id) + " " + driverHex(brightness)) ? 1 : 0;
}
