// A virtual board for a test, switched on as long as the object exists.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/syscall.h>

#include <memory>
#include <string>
#include <vector>

#include "host/run/control.h"
#include "tests/child_process.h"
#include "tests/temporary_directory.h"

// The device's paths of this process lead into it. That is read once a process, so a test binary
// keeps one board for all its cases and changes it with command().
class TestBoard {
  public:
    // Words in front of a program that keep FUSE from it, where this machine lets them.
    static constexpr char kHideFuse[] =
            "unshare -m sh -c 'mount --bind /dev/null /dev/fuse && exec \"$@\"' -";
    static bool canHideFuse() { return system("unshare -m true 2>/dev/null") == 0; }

    // devices: what is inside <board> of its board.xml. buildProp: the file's lines. with: words of
    // a shell in front of the program's.
    explicit TestBoard(const std::string& devices, const std::string& buildProp = "",
                       const std::string& with = "")
        : mLine("exec " + with + " " VIRTUAL_BOARD " serve \"$0\" \"$1\" 2>&1") {
        writeFile(mFolder / "board.xml", "<board>" + devices + "</board>");
        writeFile(mFolder / "build.prop", buildProp);
        setenv("TARQ_BOARD", mDirectory.path().c_str(), 1);
        start();
    }
    ~TestBoard() {
        if (mProcess) end(SIGTERM);
        if (mKilled) ChildProcess({"fusermount3", "-uzq", mDirectory / "hw"}).wait();
    }
    TestBoard(const TestBoard&) = delete;
    TestBoard& operator=(const TestBoard&) = delete;

    void start() {
        mProcess = std::make_unique<ChildProcess>(
                std::vector<std::string>{"sh", "-c", mLine, mFolder.path(), mDirectory.path()});
        for (std::string said; (said = mProcess->readLine()) != "ready"; mWithoutFuse = said) {
            if (said.find("no FUSE") != std::string::npos) continue;
            FAIL() << "the board does not start: " << said << mProcess->readAll();
        }
    }
    void end(int signal) {
        mProcess->kill(signal);
        const int status = std::exchange(mProcess, nullptr)->wait();
        mKilled = status != 0;
        EXPECT_EQ(status, signal == SIGTERM ? 0 : 128 + signal) << "the board does not end";
    }

    void signal(int signal) const { mProcess->kill(signal); }

    // Why GPIO, cameras, faults and holds are not played here, for GTEST_SKIP; else "".
    const std::string& withoutFuse() const { return mWithoutFuse; }

    const std::string& directory() const { return mDirectory.path(); }

    // "/sys/class/gpio/export" -> where it is on this machine
    std::string path(const std::string& devicePath) const {
        return mDirectory / ("root" + devicePath);
    }

    // Has the board do it: {"set", "gpio42", "1"}.
    void command(const std::vector<std::string>& words) const {
        const tarq::host::Answer answer = tarq::host::askBoard({mDirectory.path()}, words);
        EXPECT_TRUE(answer.isDone) << answer.reason << answer.error;
    }
    // Has tarqctl do it. The exit code, and what was printed.
    int ask(std::vector<std::string> words, std::string* said) const {
        const std::string line = "exec " TARQCTL " --board \"$0\" \"$@\" 2>&1";
        words.insert(words.begin(), {"sh", "-c", line, mDirectory.path()});
        ChildProcess tool(words);
        *said = tool.readAll();
        return tool.wait();
    }

    // A cat of the held node, which has begun to read, and waits.
    std::unique_ptr<ChildProcess> waitingReader(const std::string& devicePath) const {
        auto reader =
                std::make_unique<ChildProcess>(std::vector<std::string>{"cat", path(devicePath)});
        const std::string process = "/proc/" + std::to_string(reader->pid());
        EXPECT_TRUE(eventually([&] {
            return readFile(process + "/wchan") == "request_wait_answer" &&
                   readFile(process + "/syscall").rfind(std::to_string(SYS_read) + " ", 0) == 0;
        }));
        return reader;
    }

  private:
    const std::string mLine;
    const TemporaryDirectory mFolder;
    const TemporaryDirectory mDirectory;
    std::unique_ptr<ChildProcess> mProcess;
    std::string mWithoutFuse;
    bool mKilled = false;  // and has left its mount
};
