#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/temporary_directory.h"

using testing::HasSubstr;
using testing::IsEmpty;

namespace {

namespace fs = std::filesystem;

// virtual_board as a process of its own, told to end with the test.
class Board {
  public:
    Board(const std::string& folder, const std::string& directory, bool shared = false)
        : mErrors(mTemporary / "errors") {
        int output[2];
        EXPECT_EQ(pipe2(output, O_CLOEXEC), 0);
        mPid = fork();
        if (mPid == 0) {
            dup2(output[1], STDOUT_FILENO);
            dup2(open(mErrors.c_str(), O_WRONLY | O_CREAT, 0600), STDERR_FILENO);
            execl(VIRTUAL_BOARD, VIRTUAL_BOARD, "serve", folder.c_str(), directory.c_str(),
                  shared ? "--shared" : nullptr, nullptr);
            _exit(127);
        }
        close(output[1]);
        mOutput = output[0];
    }
    ~Board() {
        if (mPid > 0) end(SIGTERM);
        close(mOutput);
    }

    // What it prints next; "" when it has ended.
    std::string output() const {
        pollfd readable = {mOutput, POLLIN, 0};
        EXPECT_EQ(poll(&readable, 1, 20000), 1) << "no word from virtual_board";
        char text[64];
        const ssize_t length = read(mOutput, text, sizeof(text));
        return std::string(text, static_cast<size_t>(std::max<ssize_t>(length, 0)));
    }
    std::string errors() const { return readFile(mErrors); }

    // Its exit code, or the negative number of the signal that killed it; 0 sends none.
    int end(int signal) {
        if (signal != 0) kill(mPid, signal);
        int status = 0;
        EXPECT_EQ(waitpid(mPid, &status, 0), mPid);
        mPid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

  private:
    const TemporaryDirectory mTemporary;
    const std::string mErrors;
    pid_t mPid = -1;
    int mOutput = -1;
};

class VirtualBoard : public testing::Test {
  protected:
    VirtualBoard() { writeFile(mFolder / "build.prop", "ro.a=1\n"); }

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
        Board board(mFolder.path(), mDirectory.path(), shared);
        ASSERT_EQ(board.output(), "ready\n");
        for (const char* name : {"", "run", "run/properties", "root", "root/data", "root/dev",
                                 "root/proc", "root/sys", "root/vendor"}) {
            struct stat status = {};
            EXPECT_EQ(stat((mDirectory / name).c_str(), &status), 0) << name;
            EXPECT_EQ(status.st_mode, S_IFDIR | (shared ? 0755u : 0700u)) << name;
        }
        EXPECT_EQ(readFile(mDirectory / "root/vendor/etc/leds/x.xml"), "<x/>");
        EXPECT_EQ(property("ro.a"), "1");
        EXPECT_THAT(board.errors(), IsEmpty());
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
    Board board(mFolder.path(), mDirectory.path());
    ASSERT_EQ(board.output(), "ready\n");
    EXPECT_EQ(property("ro.spaced"), "a = b ");
    EXPECT_EQ(property("ro.last"), std::string(91, 'x'));
    const std::string file = mFolder / "build.prop";
    EXPECT_EQ(board.errors(),
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
        Board board(mFolder.path(), mDirectory.path());
        ASSERT_EQ(board.output(), "ready\n");
        EXPECT_EQ(property("persist.saved"), "user's");
        EXPECT_EQ(property("persist.default"), "1");
        EXPECT_THAT(board.errors(), IsEmpty());
    }
    writeFile(mFolder / "build.prop", "persist.default=2\n");
    Board board(mFolder.path(), mDirectory.path());
    ASSERT_EQ(board.output(), "ready\n");
    EXPECT_EQ(property("persist.saved"), "user's");
    EXPECT_EQ(property("persist.default"), "2");
}

TEST_F(VirtualBoard, second_one_in_the_same_directory_is_refused_and_changes_nothing) {
    Board first(mFolder.path(), mDirectory.path());
    ASSERT_EQ(first.output(), "ready\n");
    Board second(mFolder.path(), mDirectory.path(), true);
    EXPECT_EQ(second.output(), "");
    EXPECT_EQ(second.errors(),
              "virtual_board: a board is already running in " + mDirectory.path() + "\n");
    EXPECT_EQ(second.end(0), 2);
    EXPECT_EQ(property("ro.a"), "1");
    EXPECT_EQ(fs::status(mDirectory / "run").permissions(), fs::perms::owner_all);
}

TEST_F(VirtualBoard, every_signal_to_end_switches_it_off_in_order) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        Board board(mFolder.path(), mDirectory.path());
        ASSERT_EQ(board.output(), "ready\n");
        EXPECT_EQ(board.end(signal), 0);
        EXPECT_FALSE(fs::exists(mDirectory / "run"));
        EXPECT_TRUE(fs::exists(mDirectory / "root/data"));
    }
}

TEST_F(VirtualBoard, what_a_killed_one_left_is_cleared_by_the_next) {
    {
        Board board(mFolder.path(), mDirectory.path());
        ASSERT_EQ(board.output(), "ready\n");
        writeFile(mDirectory / "run/properties/ro.left", "1");
        writeFile(mDirectory / "root/sys/left", "1");
        EXPECT_EQ(board.end(SIGKILL), -SIGKILL);
    }
    Board board(mFolder.path(), mDirectory.path());
    ASSERT_EQ(board.output(), "ready\n");
    EXPECT_EQ(property("ro.a"), "1");
    EXPECT_FALSE(fs::exists(mDirectory / "run/properties/ro.left"));
    EXPECT_FALSE(fs::exists(mDirectory / "root/sys/left"));
}

TEST_F(VirtualBoard, ends_with_the_process_that_started_it) {
    int output[2];
    ASSERT_EQ(pipe2(output, O_CLOEXEC), 0);
    const pid_t parent = fork();
    if (parent == 0) {
        if (fork() == 0) {
            dup2(output[1], STDOUT_FILENO);
            execl(VIRTUAL_BOARD, VIRTUAL_BOARD, "serve", mFolder.path().c_str(),
                  mDirectory.path().c_str(), nullptr);
            _exit(127);
        }
        pause();
    }
    close(output[1]);
    char text[64];
    ASSERT_EQ(read(output[0], text, sizeof(text)), 6);  // "ready\n"
    kill(parent, SIGKILL);
    waitpid(parent, nullptr, 0);
    EXPECT_EQ(read(output[0], text, sizeof(text)), 0);  // the board has closed its output
    EXPECT_FALSE(fs::exists(mDirectory / "run"));
    close(output[0]);
}

TEST_F(VirtualBoard, folder_that_is_no_board_is_one_error_line) {
    Board board(mTemporary / "nothing", mDirectory.path());
    EXPECT_EQ(board.output(), "");
    EXPECT_EQ(board.end(0), 2);
    EXPECT_EQ(board.errors(), "virtual_board: " + (mTemporary / "nothing/build.prop") +
                                      ": No such file or directory\n");
    EXPECT_FALSE(fs::exists(mDirectory / "run"));
}

}  // namespace
