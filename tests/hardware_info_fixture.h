// What the tests of the hardware information module share: its state, its log, a board of files.
#pragma once

#include <gtest/gtest.h>
#include <string.h>

#include <string>
#include <vector>

#include "hardware_info/peripheral_table.h"
#include "tests/captured_log.h"
#include "tests/plain_board.h"

inline const std::string kTp = "/sys/class/tpinfo/tpinfo_ic_info";
inline const std::string kReg = "/sys/bus/mipi-dsi/devices/ff450000.dsi.0/of_node/id";
inline const std::string kFlag = "/sys/bus/mipi-dsi/devices/ff450000.dsi.0/of_node/hwid-flag";
inline const std::string kId1 = "/proc/device-tree/dsi@ff450000/dsi,id1";
inline const std::string kGpio = "/sys/class/gpio/";
inline const std::string kTimes = "/vendor/etc/hardware_timestamp.txt";

struct HardwareInfoTest : testing::Test {
    HardwareInfoTest() { forget(); }

    // Puts the module back to how a process starts.
    static void forget() {
        for (PeripheralEntry& entry : peripheralTable) strcpy(entry.value, "null");
        boardIdentity = {};
    }
    static void setPart(PeripheralType type, const std::string& name) {
        strcpy(peripheralTable[static_cast<size_t>(type)].value, name.c_str());
    }
    // What the module logged since the last call, as "I text". Other tags are left as they are.
    std::vector<std::string> logged() {
        std::vector<std::string> lines = log.take();
        for (std::string& line : lines) {
            if (line.compare(1, 22, " HardwareInfoService: ") == 0) line.erase(1, 21);
        }
        return lines;
    }
    std::string loggedText() {
        std::string text;
        for (const std::string& line : logged()) text += line + "\n";
        return text;
    }

    CapturedLog log;
};

// On a board of plain files, none at first.
struct PlainBoardTest : HardwareInfoTest {
    std::string file(const std::string& devicePath) const { return board.device(devicePath); }

    const PlainBoard board;
};
