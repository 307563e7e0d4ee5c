#include "hardware_info/camera_probe.h"

#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "common/device_file.h"

// The camera drivers' module information, of which only the beginning matters here: the sensor's
// name, ended by a NUL. The size is part of the request's number, so a driver knows no other.
static constexpr size_t kModuleInfoSize = 3766;

// This is _IOR('V', 192, …) with that size; 192 is the first number that V4L2 leaves to the
// drivers.
static constexpr unsigned int kGetModuleInfo = _IOC(_IOC_READ, 'V', 192, kModuleInfoSize);
static_assert(kGetModuleInfo == 0x8EB656C0, "the number that the drivers know");

// The nodes that are tried, from 0 on. What a media pipeline has beyond them is never asked.
static constexpr int kSubDevices = 10;

static bool readSensorName(int fd, std::string& name) {
    // Zeroed: a driver that answers and sets no name has given an empty one.
    char info[kModuleInfoSize] = {};
    if (ioctl(fd, kGetModuleInfo, info) < 0) return false;
    name.assign(info, strnlen(info, sizeof(info)));
    return true;
}

bool getInternalCameraInfo(std::string& name) {
    for (int n = 0; n < kSubDevices; ++n) {
        char path[128];
        snprintf(path, sizeof(path), "/dev/v4l-subdev%d", n);
        const int fd = open(deviceFile(path).c_str(), O_RDWR | O_CLOEXEC);
        // Descriptor 0 counts as a failure like -1, deliberately, and stays open.
        if (fd < 1) continue;
        const bool answered = readSensorName(fd, name);
        close(fd);
        if (answered) return true;
    }
    return false;
}
