// The kernel's GPIO interface in sysfs: a number written to "export" makes the folder gpioN appear,
// in which "direction" takes "in" and "value" shows 0 or 1; the same number written to "unexport"
// makes it go. Whoever exported a line owns it, so one that is there already is only read.
#include "hardware_info/gpio_input.h"

#include <android/log.h>
#include <fcntl.h>
#include <unistd.h>

#include "common/device_file.h"
#include "hardware_info/entire_file.h"
#include "hardware_info/peripheral_table.h"
#include "hardware_info/text.h"

// False when the file cannot be opened. What becomes of the write is not asked: the read that
// follows tells, and an export is refused as well when another thread was faster.
static bool writeTo(const std::string& path, const std::string& text) {
    const int fd = open(deviceFile(path).c_str(), O_WRONLY | O_CLOEXEC);
    if (fd < 0) return false;
    const ssize_t ignored = write(fd, text.data(), text.size());
    static_cast<void>(ignored);
    close(fd);
    return true;
}

// Unexports only after a read that succeeded. Otherwise the line stays, and the next call finds it.
static bool exportAndRead(uint32_t gpio, const std::string& folder, const std::string& valuePath,
                          std::string& value) {
    const std::string number = std::to_string(gpio);
    if (!writeTo("/sys/class/gpio/export", number)) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Failed to export gpio: %d", gpio);
        return false;
    }
    if (!writeTo(folder + "/direction", "in")) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Failed to set gpio direction: %d", gpio);
        return false;
    }
    const std::vector<uint8_t> content = readEntireFile(valuePath);
    if (content.empty()) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Unable to get gpio val: %s",
                            valuePath.c_str());
        return false;
    }
    writeTo("/sys/class/gpio/unexport", number);
    value = asText(content);
    return true;
}

bool readGpioInput(uint32_t gpio, std::string& value) {
    const std::string folder = "/sys/class/gpio/gpio" + std::to_string(gpio);
    const std::string valuePath = folder + "/value";
    const std::vector<uint8_t> content = readEntireFile(valuePath);
    if (content.empty()) {
        __android_log_print(ANDROID_LOG_WARN, kLogTag,
                            "Unable to open gpio path: %s, ready to export", valuePath.c_str());
        return exportAndRead(gpio, folder, valuePath, value);
    }
    value = asText(content);
    return true;
}
