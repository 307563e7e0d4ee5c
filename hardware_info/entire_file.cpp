#include "hardware_info/entire_file.h"

#include <android/log.h>
#include <fcntl.h>
#include <unistd.h>

#include "common/device_file.h"
#include "hardware_info/peripheral_table.h"

// Reads to the end, as the size that sysfs and procfs give is not that of what they show. The room
// doubles: what a driver shows takes two reads, and a file of any size not many.
static bool readToEnd(int fd, std::vector<uint8_t>& bytes) {
    static constexpr size_t kPage = 4096;
    size_t size = 0;
    ssize_t count = 0;
    do {
        if (size == bytes.size()) bytes.resize(size == 0 ? kPage : 2 * size);
        count = read(fd, bytes.data() + size, bytes.size() - size);
        if (count > 0) size += static_cast<size_t>(count);
    } while (count > 0);
    bytes.resize(size);
    return count == 0;
}

std::vector<uint8_t> readEntireFile(const std::string& path) {
    const int fd = open(deviceFile(path).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        __android_log_print(ANDROID_LOG_WARN, kLogTag, "Unable to open file: %s", path.c_str());
        return {};
    }
    std::vector<uint8_t> bytes;
    const bool complete = readToEnd(fd, bytes);
    close(fd);
    // Half a file could be taken for a whole one with other contents.
    if (!complete) return {};
    return bytes;
}
