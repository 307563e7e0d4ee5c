#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/child_process.h"
#include "tests/temporary_directory.h"

using testing::IsEmpty;

namespace {

namespace fs = std::filesystem;

class VirtualBoard : public testing::Test {
  protected:
    VirtualBoard() { writeFile(mFolder / "build.prop", "ro.a=1\n"); }

    ChildProcess serve(const std::string& option = "") {
        const std::string command = std::string("exec ") + VIRTUAL_BOARD + " serve \"$0\" \"$1\" " +
                                    option + " 2>" + (mTemporary / "errors");
        return ChildProcess({"sh", "-c", command, mFolder.path(), mDirectory.path()});
    }
    std::string errors() const { return readFile(mTemporary / "errors"); }
    std::string property(const std::string& name) const {
        return readFile(mDirectory / ("run/properties/" + name));
    }

    const TemporaryDirectory mFolder;
    const TemporaryDirectory mTemporary;
    const TemporaryDirectory mDirectory;
};

TEST_F(VirtualBoard, device_tree_is_there_when_it_is_ready) {
    writeFile(mFolder / "vendor/etc/leds/x.xml", "<x/>");
    for (const bool shared : {false, true}) {
        ChildProcess board = serve(shared ? "--shared" : "");
        ASSERT_EQ(board.readLine(), "ready");
        for (const char* name : {"", "run", "run/properties", "root", "root/data", "root/dev",
                                 "root/proc", "root/sys", "root/vendor"}) {
            struct stat status = {};
            EXPECT_EQ(stat((mDirectory / name).c_str(), &status), 0) << name;
            EXPECT_EQ(status.st_mode, S_IFDIR | (shared ? 0755u : 0700u)) << name;
        }
        EXPECT_EQ(readFile(mDirectory / "root/vendor/etc/leds/x.xml"), "<x/>");
        EXPECT_EQ(property("ro.a"), "1");
        EXPECT_THAT(errors(), IsEmpty());
    }
}

TEST_F(VirtualBoard, line_of_defaults_that_is_refused_is_named_and_the_others_count) {
    writeFile(mFolder / "build.prop",
              "# comment\n"
              "\n"
              "  # another\n"
              "  ro.spaced =  a = b \n"
              "no equals sign\n"
              "=value\n"
              "ro.spaced=twice\n"
              "bad name=1\n"
              "ro.last=" +
                      std::string(91, 'x'));
    ChildProcess board = serve();
    ASSERT_EQ(board.readLine(), "ready");
    EXPECT_EQ(property("ro.spaced"), "a = b ");
    EXPECT_EQ(property("ro.last"), std::string(91, 'x'));
    const std::string file = mFolder / "build.prop";
    EXPECT_EQ(errors(),
              file + ":5: not KEY=VALUE: no equals sign\n" + file + ":6: not KEY=VALUE: =value\n" +
                      file +
                      ":7: cannot set property \"ro.spaced\" to \"twice\": it is read-only and "
                      "already set\n" +
                      file +
                      ":8: cannot set property \"bad name\" to \"1\": a name is made of A-Z a-z "
                      "0-9 _ - @ : and single dots between them\n");
}

TEST_F(VirtualBoard, saved_property_outlives_a_restart_and_goes_before_a_default) {
    writeFile(mFolder / "build.prop", "persist.saved=default\npersist.default=1\n");
    writeFile(mDirectory / "root/data/property/persist.saved", "user's");
    writeFile(mDirectory / "root/data/property/.Xy12Zz", "half");
    {
        ChildProcess board = serve();
        ASSERT_EQ(board.readLine(), "ready");
        EXPECT_EQ(property("persist.saved"), "user's");
        EXPECT_EQ(property("persist.default"), "1");
        EXPECT_THAT(errors(), IsEmpty());
    }
    writeFile(mFolder / "build.prop", "persist.default=2\n");
    ChildProcess board = serve();
    ASSERT_EQ(board.readLine(), "ready");
    EXPECT_EQ(property("persist.saved"), "user's");
    EXPECT_EQ(property("persist.default"), "2");
}

TEST_F(VirtualBoard, second_one_in_the_same_directory_is_refused_and_changes_nothing) {
    ChildProcess first = serve();
    ASSERT_EQ(first.readLine(), "ready");
    ChildProcess second = serve("--shared");
    EXPECT_EQ(second.wait(), 2);
    EXPECT_EQ(errors(), "virtual_board: a board is already running in " + mDirectory.path() + "\n");
    EXPECT_EQ(property("ro.a"), "1");
    EXPECT_EQ(fs::status(mDirectory / "run").permissions(), fs::perms::owner_all);
}

TEST_F(VirtualBoard, every_signal_to_end_switches_it_off_in_order) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        ChildProcess board = serve();
        ASSERT_EQ(board.readLine(), "ready");
        board.kill(signal);
        EXPECT_EQ(board.wait(), 0);
        EXPECT_FALSE(fs::exists(mDirectory / "run"));
        EXPECT_TRUE(fs::exists(mDirectory / "root/data"));
    }
}

TEST_F(VirtualBoard, what_a_killed_one_left_is_cleared_by_the_next) {
    {
        ChildProcess board = serve();
        ASSERT_EQ(board.readLine(), "ready");
        writeFile(mDirectory / "run/properties/ro.left", "1");
        writeFile(mDirectory / "root/sys/left", "1");
        board.kill(SIGKILL);
        EXPECT_EQ(board.wait(), 128 + SIGKILL);
    }
    ChildProcess board = serve();
    ASSERT_EQ(board.readLine(), "ready");
    EXPECT_EQ(property("ro.a"), "1");
    EXPECT_FALSE(fs::exists(mDirectory / "run/properties/ro.left"));
    EXPECT_FALSE(fs::exists(mDirectory / "root/sys/left"));
}

TEST_F(VirtualBoard, ends_with_the_process_that_started_it) {
    const std::string command = std::string(VIRTUAL_BOARD) + " serve \"$0\" \"$1\" & wait";
    ChildProcess parent({"sh", "-c", command, mFolder.path(), mDirectory.path()});
    ASSERT_EQ(parent.readLine(), "ready");
    parent.kill(SIGKILL);
    EXPECT_EQ(parent.readAll(), "");  // up to the end of the board, which has the output as well
    EXPECT_FALSE(fs::exists(mDirectory / "run"));
}

TEST_F(VirtualBoard, folder_that_is_no_board_is_one_error_line) {
    fs::remove(mFolder / "build.prop");
    ChildProcess board = serve();
    EXPECT_EQ(board.wait(), 2);
    EXPECT_EQ(errors(),
              "virtual_board: " + (mFolder / "build.prop") + ": No such file or directory\n");
    EXPECT_FALSE(fs::exists(mDirectory / "run"));
}

}  // namespace
