// A virtual board for a test, switched on as long as the object exists.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/syscall.h>

#include <memory>

#include "host/run/control.h"
#include "tests/child_process.h"
#include "tests/temporary_directory.h"

// The device's paths of this process lead into it. That is read once a process, so a test binary
// keeps one board for all its cases and changes it with command().
class TestBoard : public tarq::host::Board {
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
        directory = mDirectory.path();
        writeFile(mFolder / "board.xml", "<board>" + devices + "</board>");
        writeFile(mFolder / "build.prop", buildProp);
        setenv("TARQ_BOARD", directory.c_str(), 1);
        start();
    }
    ~TestBoard() {
        if (mProcess) end(SIGTERM);
        if (mKilled) ChildProcess({"fusermount3", "-uzq", hardware()}).wait();
    }
    TestBoard(const TestBoard&) = delete;
    TestBoard& operator=(const TestBoard&) = delete;

    void start() {
        mProcess =
                std::make_unique<ChildProcess>(Words{"sh", "-c", mLine, mFolder.path(), directory});
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
    // For SetUp().
    void skipWithoutFuse() const {
        if (!mWithoutFuse.empty()) GTEST_SKIP() << mWithoutFuse;
    }

    // The daemon on it, which logs where the tools look.
    std::unique_ptr<ChildProcess> startDaemon(const char* tarqd) const {
        return std::make_unique<ChildProcess>(Words{tarqd}, Words{"TARQ_LOG=" + log()});
    }

    // Has the board do it: {"set", "gpio42", "1"}.
    void command(const Words& words) const {
        const tarq::host::Answer answer = tarq::host::askBoard(*this, words);
        EXPECT_TRUE(answer.isDone) << answer.reason << answer.error;
    }
    // Has tarqctl do it, which is to end so. What it prints, errors as well.
    std::string ask(Words words, int code = 0) const {
        const std::string line = "exec " TARQCTL " --board \"$0\" \"$@\" 2>&1";
        words.insert(words.begin(), {"sh", "-c", line, directory});
        ChildProcess tool(words);
        std::string said = tool.readAll();
        EXPECT_EQ(tool.wait(), code) << said;
        return said;
    }

    // A cat of the held node, which has begun to read, and waits.
    std::unique_ptr<ChildProcess> waitingReader(const std::string& devicePath) const {
        auto reader = std::make_unique<ChildProcess>(Words{"cat", device(devicePath)});
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
