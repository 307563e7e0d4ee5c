// A virtual board for a test, switched on as long as the object exists.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/child_process.h"
#include "tests/temporary_directory.h"

// The device's paths of this process lead into it. That is read once a process, so a test binary
// keeps one board for all its cases and changes it with command().
class TestBoard {
  public:
    // devices: what is inside <board> of its board.xml. buildProp: the file's lines.
    explicit TestBoard(const std::string& devices, const std::string& buildProp = "") {
        writeFile(mFolder / "board.xml", "<board>" + devices + "</board>");
        writeFile(mFolder / "build.prop", buildProp);
        const std::string line = "exec " VIRTUAL_BOARD " serve \"$0\" \"$1\" 2>&1";
        mProcess = std::make_unique<ChildProcess>(
                std::vector<std::string>{"sh", "-c", line, mFolder.path(), mDirectory.path()});
        for (std::string said; (said = mProcess->readLine()) != "ready";) {
            if (said.find("no FUSE") == std::string::npos) {
                ADD_FAILURE() << "the board does not start: " << said << mProcess->readAll();
                return;
            }
            mWithoutFuse = said;
        }
        setenv("TARQ_BOARD", mDirectory.path().c_str(), 1);
    }
    // Before the directory is removed with all that is mounted in it.
    ~TestBoard() {
        mProcess->kill(SIGTERM);
        EXPECT_EQ(mProcess->wait(), 0) << "the board does not end";
    }
    TestBoard(const TestBoard&) = delete;
    TestBoard& operator=(const TestBoard&) = delete;

    // Why GPIO, cameras, faults and holds are not played here, for GTEST_SKIP; else "".
    const std::string& withoutFuse() const { return mWithoutFuse; }

    const std::string& directory() const { return mDirectory.path(); }

    // "/sys/class/gpio/export" -> where it is on this machine
    std::string path(const std::string& devicePath) const {
        return mDirectory / ("root" + devicePath);
    }

    // Has the board do it: {"set", "gpio42", "1"}.
    void command(const std::vector<std::string>& words) const {
        std::string said;
        EXPECT_EQ(ask(words, &said), 0) << said;
    }
    // The exit code, and what was printed.
    int ask(std::vector<std::string> words, std::string* said) const {
        const std::string line = "exec " VIRTUAL_BOARD " --board \"$0\" \"$@\" 2>&1";
        words.insert(words.begin(), {"sh", "-c", line, mDirectory.path()});
        ChildProcess tool(words);
        *said = tool.readAll();
        return tool.wait();
    }

  private:
    const TemporaryDirectory mFolder;
    const TemporaryDirectory mDirectory;
    std::unique_ptr<ChildProcess> mProcess;
    std::string mWithoutFuse;
};
