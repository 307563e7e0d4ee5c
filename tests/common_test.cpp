#include <gtest/gtest.h>
#include <stdlib.h>

#include "common/device_file.h"

TEST(DeviceFile, is_on_the_board_for_the_devices_folders_only) {
    setenv("TARQ_BOARD", "/board", 1);
    for (const char* path : {"/sys/class/rgbled/r", "/proc/device-tree", "/dev/ttyS3",
                             "/vendor/etc/hardwareInfo.xml", "/data", "/sys/"}) {
        EXPECT_EQ(deviceFile(path), std::string("/board/root") + path);
    }
    for (const char* path :
         {"/devices/x", "/system/sys/x", "/tmp/dev/x", "sys/x", "dev", "/", ""}) {
        EXPECT_EQ(deviceFile(path), path);
    }
}
