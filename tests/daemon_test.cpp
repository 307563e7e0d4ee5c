// The real daemon as other processes see it.
#include <binder/IServiceManager.h>
#include <com/tarq/shell/IShellService.h>
#include <gmock/gmock.h>
#include <linux/close_range.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/child_process.h"
#include "tests/temporary_directory.h"

using android::interface_cast;
using android::sp;
using android::String16;
using android::String8;
using com::tarq::shell::IShellService;
using testing::ElementsAre;

namespace {

// A daemon on a board of its own that has started its last module. Both go with the object.
class Daemon {
  public:
    Daemon() {
        std::filesystem::create_directories(mBoard / "run");
        // What the test itself was started with is not the daemon's doing.
        close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
        for (int signal = 1; signal < SIGRTMAX; ++signal) ::signal(signal, SIG_DFL);
        const std::string log = mBoard / "run/log";
        mProcess = std::make_unique<ChildProcess>(
                std::vector<std::string>{TARQD},
                std::vector<std::string>{"TARQ_BOARD=" + mBoard.path(), "TARQ_LOG=" + log});
        EXPECT_TRUE(eventually([&] {
            return readFile(log).find("ShellService: instantiate.....\n") != std::string::npos;
        }));
    }

    const std::string& board() const { return mBoard.path(); }
    ChildProcess& process() { return *mProcess; }

  private:
    TemporaryDirectory mBoard;
    std::unique_ptr<ChildProcess> mProcess;
};

// One daemon for all tests: a process stays with the board that it met first.
struct DaemonTest : testing::Test {
    static void SetUpTestSuite() {
        daemon = std::make_unique<Daemon>();
        setenv("TARQ_BOARD", daemon->board().c_str(), 1);
    }
    static void TearDownTestSuite() { daemon.reset(); }
    void SetUp() override {
        const bool mayExecute = getuid() == 0 || getuid() == 1000;
        if (!mayExecute) GTEST_SKIP() << "needs uid 0 or 1000 to run commands";
    }

    static std::string outputOf(const char* command) {
        const sp<IShellService> shell = interface_cast<IShellService>(
                android::defaultServiceManager()->getService(IShellService::descriptor));
        std::vector<String16> output;
        int32_t result = -1;
        const bool done = shell->executeCommand(String16(command), &output, &result).isOk();
        return done && output.size() == 1 ? String8(output[0]).string() : "failed";
    }

    static std::unique_ptr<Daemon> daemon;
};

std::unique_ptr<Daemon> DaemonTest::daemon;

TEST_F(DaemonTest, services_are_listed_newest_first) {
    outputOf("true");  // served: every module has returned
    std::vector<std::string> names;
    for (const String16& name : android::defaultServiceManager()->listServices()) {
        names.emplace_back(String8(name).string());
    }
    EXPECT_THAT(names, ElementsAre("com.tarq.shell.IShellService",
                                   "com.tarq.hardwareInfo.IHardwareInfoService"));
}

TEST_F(DaemonTest, commands_inherit_no_descriptor) {
    // The fourth is the one with which ls reads the directory.
    EXPECT_EQ(outputOf("ls /proc/self/fd"), "0\n1\n2\n3\n");
}

// With SIGPIPE ignored, a command whose output nobody reads any more would run on.
TEST_F(DaemonTest, commands_are_ended_by_signals) {
    EXPECT_EQ(outputOf("exec 2>/dev/null; for s in HUP INT PIPE TERM; do"
                       " sh -c \"kill -s $s \\$\\$; echo survived $s\"; done"),
              "");
}

TEST(DaemonProcess, serves_until_it_is_told_to_end) {
    Daemon daemon;
    daemon.process().kill(SIGTERM);
    EXPECT_EQ(daemon.process().wait(), 128 + SIGTERM);
}

}  // namespace
