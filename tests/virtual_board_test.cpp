#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include "host/run/descriptors.h"
#include "tests/test_board.h"

namespace {

namespace fs = std::filesystem;

class VirtualBoard : public testing::Test {
  protected:
    VirtualBoard() {
        writeFile(mFolder / "build.prop", "ro.a=1\n");
        writeFile(mFolder / "board.xml", "<board><receiver/></board>");
    }
    // A board that was killed has left it mounted.
    ~VirtualBoard() override { umount2((mDirectory / "hw").c_str(), MNT_DETACH); }

    // Standard error comes with the output, whose first line is to be this.
    std::unique_ptr<ChildProcess> serve(const std::string& line = "ready",
                                        const std::string& option = "", const char* how = "exec") {
        const std::string command =
                how + std::string(" " VIRTUAL_BOARD " serve \"$0\" \"$1\" 2>&1 ") + option;
        auto board = std::make_unique<ChildProcess>(
                std::vector<std::string>{"sh", "-c", command, mFolder.path(), mDirectory.path()});
        EXPECT_EQ(board->readLine(), line);
        return board;
    }
    // Of a start; without the program's name.
    std::string refusal() {
        ChildProcess board({"sh", "-c", VIRTUAL_BOARD " serve \"$0\" \"$1\" 2>&1", mFolder.path(),
                            mDirectory.path()});
        const std::string line = board.readAll();
        EXPECT_EQ(board.wait(), 2);
        return line.substr(strlen("virtual_board: "), line.find('\n') - strlen("virtual_board: "));
    }
    std::string property(const std::string& name) const {
        return readFile(mDirectory / ("run/properties/" + name));
    }

    const TemporaryDirectory mFolder;
    const TemporaryDirectory mDirectory;
};

TEST_F(VirtualBoard, device_tree_is_there_when_it_is_ready_and_nothing_else) {
    writeFile(mFolder / "vendor/etc/leds/x.xml", "<x/>");
    for (const bool shared : {false, true}) {
        const auto board = serve("ready", shared ? "--shared" : "");
        for (const char* name : {"", "run", "run/properties", "root", "root/data", "root/vendor"}) {
            struct stat status = {};
            EXPECT_EQ(stat((mDirectory / name).c_str(), &status), 0) << name;
            EXPECT_EQ(status.st_mode, S_IFDIR | (shared ? 0755u : 0700u)) << name;
        }
        EXPECT_EQ(fs::status(mDirectory / "run/rf").permissions(), fs::perms::owner_all);
        EXPECT_EQ(readFile(mDirectory / "root/vendor/etc/leds/x.xml"), "<x/>");
        EXPECT_EQ(property("ro.a"), "1");
        EXPECT_FALSE(fs::exists(mDirectory / "run/properties/ro.left"));
        EXPECT_FALSE(fs::exists(mDirectory / "root/vendor/left"));
        writeFile(mDirectory / "run/properties/ro.left", "1");  // by one that is killed
        writeFile(mDirectory / "root/vendor/left", "1");
    }
}

TEST_F(VirtualBoard, line_of_defaults_that_is_refused_is_named_and_the_others_count) {
    writeFile(mFolder / "build.prop",
              "# comment\n\n  # more\n  ro.spaced =  a = b \n=value\n"
              "ro.spaced=twice\nno equals sign\nro.last=1");
    const std::string file = mFolder / "build.prop:";
    const auto board = serve(file + "5: not KEY=VALUE: =value");
    EXPECT_EQ(board->readLine(), file + "6: cannot set property \"ro.spaced\" to \"twice\": it is "
                                        "read-only and already set");
    EXPECT_EQ(board->readLine(), file + "7: not KEY=VALUE: no equals sign");
    EXPECT_EQ(board->readLine(), "ready");
    EXPECT_EQ(property("ro.spaced"), "a = b ");
    EXPECT_EQ(property("ro.last"), "1");
}

TEST_F(VirtualBoard, saved_property_outlives_a_restart_and_goes_before_a_default) {
    writeFile(mDirectory / "root/data/property/persist.saved", "user's");
    writeFile(mDirectory / "root/data/property/.Xy12Zz", "half");
    for (const std::string value : {"1", "2"}) {
        writeFile(mFolder / "build.prop", "persist.saved=x\npersist.default=" + value + "\n");
        const auto board = serve();
        EXPECT_EQ(property("persist.saved"), "user's");
        EXPECT_EQ(property("persist.default"), value);
    }
}

TEST_F(VirtualBoard, second_one_is_refused_and_a_signal_switches_the_first_off_in_order) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        const auto first = serve();
        const std::string refusal = "virtual_board: a board is already running in ";
        EXPECT_EQ(serve(refusal + mDirectory.path(), "--shared")->wait(), 2);
        EXPECT_EQ(property("ro.a"), "1");
        EXPECT_EQ(fs::status(mDirectory / "run").permissions(), fs::perms::owner_all);
        first->kill(signal);
        EXPECT_EQ(first->wait(), 0);
        EXPECT_FALSE(fs::exists(mDirectory / "run"));
        EXPECT_TRUE(fs::exists(mDirectory / "root/data"));
    }
}

TEST_F(VirtualBoard, directory_of_something_else_is_left_alone) {
    writeFile(mDirectory / "thesis.tex", "x");
    fs::permissions(mDirectory.path(), fs::perms(0751));
    EXPECT_EQ(refusal(), mDirectory.path() +
                                 " is no board's directory, it holds thesis.tex; give one that is "
                                 "empty, or not there yet");
    EXPECT_EQ(fs::status(mDirectory.path()).permissions(), fs::perms(0751));
    EXPECT_FALSE(fs::exists(mDirectory / "run"));
}

TEST_F(VirtualBoard, ends_with_the_process_that_started_it) {
    const auto parent = serve("ready", "& wait", "");
    parent->kill(SIGKILL);
    EXPECT_EQ(parent->readAll(), "");  // up to the end of the board, which has the output as well
    EXPECT_FALSE(fs::exists(mDirectory / "run"));
}

TEST_F(VirtualBoard, folder_that_is_no_board_is_one_error_line) {
    const std::pair<const char*, const char*> kWrong[] = {
            {"<board>\n<led/></board>", "2: led: there is no such part"},
            {"<!---->\n<boards/>", "2: not a <board>"},
            {"<board gpio='4'/>", "1: board: has no \"gpio\""},
            {"<board>\n\n<camera node='0' bus='1'/></board>", "3: camera: has no \"bus\""},
            {"<board><camera node='-1' sensor='x'/></board>",
             "1: camera: node: \"-1\" is not from"},
            {"<board><display reg='0'/></board>", "1: display: reg: \"0\": not two hexadecimal"},
            {"<board><gpio number='1'/>\n<gpio number='1'/></board>", "2: gpio: /sys/class/gpio"},
            {"<board>\n<gpio number='1' level='up'/></board>", "2: gpio: level is neither"},
            {"<board><leds count='256'/></board>", "1: leds: count is not 1 to 255"},
            {"<board>", "1: an element is not closed by an end tag of its name: <board>"}};
    for (const auto& [xml, where] : kWrong) {
        writeFile(mFolder / "board.xml", xml);
        EXPECT_THAT(refusal(), testing::StartsWith(mFolder / "board.xml:" + where));
    }
    fs::remove(mFolder / "board.xml");
    writeFile(mFolder / "build.prop", "ro.a=1\nELF\n\x02\n\x1b[2J");
    EXPECT_EQ(refusal(), mFolder /
                                 "build.prop:3: a byte of value 2, so this is no text file of "
                                 "KEY=VALUE lines");
    fs::remove(mFolder / "build.prop");
    const std::string error = "build.prop: No such file or directory";
    EXPECT_EQ(refusal(), mFolder / error);
    EXPECT_FALSE(fs::exists(mDirectory / "run"));
}

TEST_F(VirtualBoard, ends_while_calls_wait_and_files_are_open_and_unmounts) {
    TestBoard board("<touch_panel type='a' id='1'/>");
    if (!board.withoutFuse().empty()) GTEST_SKIP() << board.withoutFuse();
    const std::ifstream open(board.device("/sys/class/tpinfo/tpinfo_ic_info"));
    board.command({"hold", "touch_panel"});
    const auto reader = board.waitingReader("/sys/class/tpinfo/tpinfo_ic_info");
    board.end(SIGTERM);
    EXPECT_EQ(reader->wait(), 1);
    EXPECT_TRUE(fs::is_empty(board.directory + "/hw"));
}

// It waits with a time limit, which the kernel ends with an error when the process goes on.
TEST_F(VirtualBoard, stopped_one_that_goes_on_carries_out_a_command_under_way) {
    const auto board = serve();
    const auto before = openDescriptors(board->pid());
    const tarq::host::Board place{mDirectory.path()};
    const int fd = tarq::host::connectTo(place.controlSocket());
    EXPECT_TRUE(eventually([&] { return openDescriptors(board->pid()) > before; }));
    board->kill(SIGSTOP);
    board->kill(SIGCONT);
    constexpr char kCommand[] = "fault\0receiver\0mute";
    EXPECT_EQ(send(fd, kCommand, sizeof(kCommand), MSG_NOSIGNAL), ssize_t{sizeof(kCommand)});
    char answer = 0;
    EXPECT_EQ(recv(fd, &answer, 1, 0), 1);
    EXPECT_EQ(answer, '+');
    close(fd);
}

TEST_F(VirtualBoard, killed_one_has_lost_nothing_for_the_next) {
    TestBoard board("<touch_panel type='a' id='1'/>");
    if (!board.withoutFuse().empty()) GTEST_SKIP() << board.withoutFuse();
    board.command({"set", "/data/kept", "x"});
    board.command({"fault", "/data/kept", "empty"});
    board.end(SIGKILL);
    board.start();
    EXPECT_EQ(readFile(board.device("/data/kept")), "x");
    EXPECT_EQ(readFile(board.device("/sys/class/tpinfo/tpinfo_ic_info")), "type:a\nid:1\n");
}

TEST_F(VirtualBoard, without_fuse_there_are_plain_files_and_the_rest_says_so) {
    if (!TestBoard::canHideFuse()) GTEST_SKIP() << "unshare -m is refused";
    const TestBoard board(
            "<touch_panel type='a' id='1'/><gpio number='3'/><leds count='1'/>"
            "<coprocessor manufacturer='1' version='1.2.3'/>",
            "", TestBoard::kHideFuse);
    EXPECT_TRUE(fs::is_character_file(board.device("/dev/ttyS3")));
    EXPECT_THAT(board.withoutFuse(), testing::HasSubstr("plain files only"));
    const std::string file = board.device("/sys/class/tpinfo/tpinfo_ic_info");
    EXPECT_EQ(readFile(file), "type:a\nid:1\n");
    board.command({"set", "touch_panel", "new"});
    EXPECT_EQ(readFile(file), "new");
    for (const char* words : {"set gpio3 1", "fault touch_panel empty", "hold touch_panel"}) {
        EXPECT_THAT(board.ask(wordsOf(words), 1),
                    testing::HasSubstr(words + std::string(": needs FUSE: ")));
    }
    EXPECT_THAT(board.ask({"trace"}, 2), testing::HasSubstr("leds.jsonl: needs FUSE: "));
    EXPECT_TRUE(std::ofstream(board.device("/sys/class/rgbled/set_color"), std::ios::app) << "1");
}

}  // namespace
