// What the kernel promises for each kind of file that the virtual board plays.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/ioctl.h>

#include "tests/test_board.h"

namespace {

namespace fs = std::filesystem;

const std::string kTouchPanel = "/sys/class/tpinfo/tpinfo_ic_info";
const std::string kText = "type:gt9xx\nid:5\n";
const std::string kGpio = "/sys/class/gpio/";
const std::string kValue = kGpio + "gpio42/value";
constexpr size_t kNowhere = std::string::npos;
constexpr unsigned long kModuleInformation = 0x8EB656C0;

class BoardContract : public testing::Test {
  protected:
    void SetUp() override { mBoard.skipWithoutFuse(); }
    void TearDown() override {
        for (const int fd : mOpened) close(fd);
    }
    int openAt(const std::string& path, int flags) {
        mOpened.push_back(open(mBoard.device(path).c_str(), flags | O_CLOEXEC));
        return mOpened.back();
    }
    // What one read gives, or the error in words.
    std::string content(const std::string& path) {
        char text[200];
        const int fd = openAt(path, O_RDONLY);
        const ssize_t size = fd >= 0 ? read(fd, text, sizeof(text)) : -1;
        return size >= 0 ? std::string(text, static_cast<size_t>(size)) : strerror(errno);
    }
    // As a shell does it: made or cut off, and one write. Empty, or the error in words.
    std::string record(const std::string& path, const std::string& text) {
        const int fd = openAt(path, O_WRONLY | O_TRUNC | O_CREAT);
        return fd >= 0 && write(fd, text.data(), text.size()) >= 0 ? "" : strerror(errno);
    }

    const TestBoard mBoard{
            "<touch_panel type='gt9xx' id='5'/><display hwid_flag='05' id1_gpio='300'/>"
            "<gpio number='42' level='1' direction='out'/><camera node='0' sensor='gc5035'/>"};
    std::vector<int> mOpened;
};

TEST_F(BoardContract, attribute_is_what_it_was_when_its_reader_began) {
    const int fd = openAt(kTouchPanel, O_RDONLY);
    char part[100] = {};
    EXPECT_EQ(read(fd, part, 4), 4);
    mBoard.command({"set", "touch_panel", R"(a\x41\\\tb\r\n)"});
    EXPECT_EQ(read(fd, part + 4, 90), 12);
    EXPECT_EQ(part, kText);
    EXPECT_EQ(read(fd, part, 90), 0);
    EXPECT_EQ(pread(fd, part, 90, 0), 7);  // who goes back to the start gets it anew
    EXPECT_EQ(std::string(part, 7), "aA\\\tb\r\n");
    EXPECT_EQ(content("/proc/device-tree/dsi@ff450000/dsi,id1"), std::string("\0\0\1\x2c", 4));
}

TEST_F(BoardContract, gpio_line_does_what_is_written_one_record_at_a_time) {
    EXPECT_EQ(content(kGpio + "export"), "Permission denied");
    const std::string none = "No such file or directory", wrong = "Invalid argument";
    const struct {
        std::string path, text, error, direction, value;  // what is read afterwards
    } kRecords[] = {
            {"leds", "x", "Permission denied", none, none},  // not made either
            {"export", "41\n", wrong, none, none},           // not fitted
            {"export", "4 2", wrong, none, none},
            {"unexport", "42", wrong, none, none},
            {"export", "42", "", "out\n", "0\n"},  // as the boot loader left it
            {"export", "42\n", "Device or resource busy", "out\n", "0\n"},
            {"gpio42/direction", "in", "", "in\n", "1\n"},
            {"gpio42/value", "0", "Operation not permitted", "in\n", "1\n"},
            {"gpio42/direction", "input", wrong, "in\n", "1\n"},
            {"gpio42/direction", "high\n", "", "out\n", "1\n"},
            {"gpio42/value", "0\n", "", "out\n", "0\n"},
            {"gpio42/value", "x", wrong, "out\n", "0\n"},
            {"unexport", "0x2a\n", "", none, none},
            {"gpio42/value", "1", none, none, none},
    };
    for (const auto& row : kRecords) {
        EXPECT_EQ(record(kGpio + row.path, row.text), row.error) << row.path << ' ' << row.text;
        EXPECT_EQ(content(kGpio + "gpio42/direction"), row.direction) << row.text;
        EXPECT_EQ(content(kValue), row.value) << row.path << ' ' << row.text;
    }
    const int fd = openAt(kGpio + "export", O_WRONLY);
    EXPECT_EQ(write(fd, "4", 1), -1);
    EXPECT_EQ(write(fd, "42", 2), 2);
    EXPECT_EQ(ftruncate(fd, 0), 0);  // which means nothing
    // What was open while the line vanished stays dead when it comes back.
    const int value = openAt(kValue, O_RDONLY);
    char byte;
    EXPECT_EQ(read(value, &byte, 1), 1);
    for (const char* control : {"unexport", "export"}) {
        EXPECT_EQ(record(kGpio + control, "42"), "");
        EXPECT_EQ(pread(value, &byte, 1, 0) + errno, ENODEV - 1) << control;
    }
}

TEST_F(BoardContract, camera_answers_its_one_request_and_nothing_else) {
    const int fd = openAt("/dev/v4l-subdev0", O_RDWR);
    std::string answer(3766, 'x');
    EXPECT_EQ(ioctl(fd, kModuleInformation, answer.data()), 0);
    EXPECT_EQ(answer, "gc5035" + std::string(3760, '\0'));
    EXPECT_EQ(ioctl(fd, kModuleInformation + 1, answer.data()) + errno, ENOTTY - 1);
    EXPECT_EQ(content("/dev/v4l-subdev0"), "Invalid argument");
    mBoard.command({"fault", "camera0", "empty"});
    EXPECT_EQ(ioctl(fd, kModuleInformation, answer.data()) + errno, EIO - 1);
    mBoard.command({"fault", "camera0", "garbage"});
    EXPECT_EQ(ioctl(fd, kModuleInformation, answer.data()), 0);
    EXPECT_EQ(answer[0], '\xff');
}

// A driver's file, and a plain one, which is put back afterwards.
TEST_F(BoardContract, fault_is_what_its_name_says_until_there_is_none) {
    mBoard.command({"set", "/vendor/a/b", "--plain\\n"});
    for (const auto& [path, text] : {std::pair(kTouchPanel, kText), {"/vendor/a/b", "--plain\n"}}) {
        const std::pair<const char*, std::string> kFaults[] = {
                {"absent", "No such file or directory"},
                {"directory", "Is a directory"},
                {"unreadable", "Permission denied"},
                {"unwritable", text},
                {"empty", ""}};
        for (const auto& [fault, found] : kFaults) {
            mBoard.command({"fault", path, fault});
            EXPECT_EQ(content(path), found) << path << ' ' << fault;
        }
        mBoard.command({"fault", path, "garbage"});
        for (const char byte : {'\0', '\xff'}) EXPECT_NE(content(path).find(byte), kNowhere);
        mBoard.command({"fault", path, "huge"});
        const int fd = openAt(path, O_RDONLY);
        char byte;
        EXPECT_EQ(pread(fd, &byte, 1, 99'999'999), 1);
        EXPECT_EQ(pread(fd, &byte, 1, 100'000'000), 0);
        mBoard.command({"fault", path, "none"});
        EXPECT_EQ(content(path), text);
    }
    EXPECT_FALSE(fs::is_symlink(mBoard.device("/vendor/a/b")));
    mBoard.command({"fault", kGpio + "export", "unwritable"});
    EXPECT_EQ(record(kGpio + "export", "42"), "Permission denied");
    const auto start = std::chrono::steady_clock::now();
    mBoard.command({"fault", "touch_panel", "slow"});
    EXPECT_EQ(content(kTouchPanel), kText);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST_F(BoardContract, held_node_keeps_only_its_own_callers_and_those_until_they_are_killed) {
    mBoard.command({"hold", "touch_panel"});
    std::vector<std::unique_ptr<ChildProcess>> readers(12);
    for (auto& reader : readers) reader = mBoard.waitingReader(kTouchPanel);
    EXPECT_EQ(record(kGpio + "export", "42"), "");
    readers[0]->kill(SIGKILL);
    EXPECT_EQ(readers[0]->wait(), 128 + SIGKILL);
    mBoard.command({"set", "touch_panel", "late"});
    mBoard.command({"release", "touch_panel"});
    for (size_t i = 1; i < readers.size(); ++i) EXPECT_EQ(readers[i]->readAll(), "late");
}

TEST_F(BoardContract, state_tells_what_is_there_and_what_was_done_to_it) {
    mBoard.command({"fault", "camera0", "garbage"});
    mBoard.command({"hold", "camera0"});
    mBoard.command({"fault", "hwid_flag", "absent"});
    const std::string said = mBoard.ask({"board"});
    EXPECT_THAT(said, testing::StartsWith(mBoard.directory + " is played by FUSE\n\nnode "));
    for (const char* row : {"camera0  +/dev/v4l-subdev0  +there  +garbage, held",
                            "hwid_flag  +/sys/bus/[^ ]+  +absent  +absent",
                            "gpio42  +/sys/class/gpio/gpio42/value  +absent  +-"}) {
        EXPECT_THAT(said, testing::ContainsRegex(std::string("\n") + row + "\n"));
    }
    mBoard.command({"release", "camera0"});
    mBoard.command({"fault", "camera0", "none"});
    mBoard.command({"fault", "hwid_flag", "none"});
    EXPECT_THAT(mBoard.ask({"board", "--json"}),
                testing::HasSubstr("\"name\":\"camera0\",\"path\":\"/dev/v4l-subdev0\","
                                   "\"state\":\"there\",\"fault\":\"none\",\"held\":false"));
}

TEST_F(BoardContract, command_that_makes_no_sense_is_refused_and_changes_nothing) {
    const struct {
        Words words;
        int code;
        const char* why;
    } kCommands[] = {
            {{"set", "touch_panel", "a\\qb"}, 1, "only \\n \\r \\t \\\\ \\xHH are known"},
            {{"set", "hwid_flag", "123"}, 1, "two hexadecimal digits"},
            {{"set", "gpio42", "2"}, 1, "a level is 0 or 1"},
            {{"set", "camera0", std::string(3766, 'x')}, 1, "too long"},
            {{"set", kGpio + "export", "42"}, 1, "has nothing that could be set"},
            {{"set", "tp", "x"}, 1, "there are: camera0 dsi_id1 gpio42 hwid_flag touch_panel"},
            {{"fault", "touch_panel", "broken"}, 1, "there are: absent, empty"},
            {{"hold", "/data/x"}, 1, "tarqctl: hold /data/x: there is no such file"},
            {{"set", "/data/property", "x"}, 1, "set /data/property x: is a directory"},
            {{"set", "touch_panel"}, 2, "VALUE is required"},
    };
    for (const auto& row : kCommands) {
        EXPECT_THAT(mBoard.ask(row.words, row.code), testing::HasSubstr(row.why));
        EXPECT_EQ(content(kTouchPanel), kText) << row.why;
    }
}

}  // namespace
