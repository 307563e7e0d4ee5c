#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <memory>

#include "tests/child_process.h"
#include "tests/temporary_directory.h"

namespace {

namespace fs = std::filesystem;

class VirtualBoard : public testing::Test {
  protected:
    VirtualBoard() { writeFile(mFolder / "build.prop", "ro.a=1\n"); }
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

TEST_F(VirtualBoard, ends_with_the_process_that_started_it) {
    const auto parent = serve("ready", "& wait", "");
    parent->kill(SIGKILL);
    EXPECT_EQ(parent->readAll(), "");  // up to the end of the board, which has the output as well
    EXPECT_FALSE(fs::exists(mDirectory / "run"));
}

TEST_F(VirtualBoard, folder_that_is_no_board_is_one_error_line) {
    fs::remove(mFolder / "build.prop");
    const std::string error = "build.prop: No such file or directory";
    EXPECT_EQ(serve("virtual_board: " + mFolder / error)->wait(), 2);
    EXPECT_FALSE(fs::exists(mDirectory / "run"));
}

}  // namespace
