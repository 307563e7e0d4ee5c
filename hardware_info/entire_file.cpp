#include "hardware_info/entire_file.h"

#include <android/log.h>
#include <stdio.h>

#include <memory>

#include "common/device_file.h"
#include "hardware_info/log_tag.h"

std::vector<uint8_t> readEntireFile(const std::string& path) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(deviceFile(path).c_str(), "re"), fclose);
    if (file == nullptr) {
        __android_log_print(ANDROID_LOG_WARN, kLogTag, "Unable to open file: %s", path.c_str());
        return {};
    }
    // To the end, as the size that sysfs and procfs give is not that of what they show.
    std::vector<uint8_t> bytes;
    uint8_t chunk[4096];
    for (size_t count = 0; (count = fread(chunk, 1, sizeof(chunk), file.get())) > 0;) {
        bytes.insert(bytes.end(), chunk, chunk + count);
    }
    // Half a file could be taken for a whole one with other contents.
    if (ferror(file.get()) != 0) return {};
    return bytes;
}
