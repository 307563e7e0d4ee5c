// A board of the test process's own, and the hardware module's state and log on it.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "hardware_info/peripheral_table.h"
#include "tests/captured_log.h"
#include "tests/temporary_directory.h"

using Lines = std::vector<std::string>;

class HardwareBoard : public testing::Test {
  protected:
    static void SetUpTestSuite() { setenv("TARQ_BOARD", board().path().c_str(), 1); }
    void SetUp() override {
        forget();
        std::filesystem::remove_all(board() / "root");
    }

    // One for all tests of the process, which reads TARQ_BOARD once.
    static const TemporaryDirectory& board() {
        static const TemporaryDirectory directory;
        return directory;
    }
    // Puts the module back to how a process starts.
    static void forget() {
        for (PeripheralEntry& entry : peripheralTable) strcpy(entry.value, "null");
        boardIdentity = {};
    }
    // What the module logged since the last call, as "I text". Other tags are left as they are.
    Lines logged() {
        Lines lines = mLog.take();
        for (std::string& line : lines) {
            if (line.compare(1, 22, " HardwareInfoService: ") == 0) line.erase(1, 21);
        }
        return lines;
    }

  private:
    CapturedLog mLog;
};
