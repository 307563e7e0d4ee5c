// The real daemon as other processes see it.
#include <binder/IServiceManager.h>
#include <com/tarq/shell/IShellService.h>
#include <gmock/gmock.h>
#include <linux/close_range.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/child_process.h"
#include "tests/plain_board.h"

using android::interface_cast;
using android::sp;
using android::String16;
using android::String8;
using com::tarq::shell::IShellService;

namespace {

// One daemon on a board of its own for all tests, as a process stays with the board that it met
// first.
struct DaemonTest : testing::Test {
    static void SetUpTestSuite() {
        const PlainBoard board;
        // What the test itself was started with is not the daemon's doing.
        close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
        for (int signal = 1; signal < SIGRTMAX; ++signal) ::signal(signal, SIG_DFL);
        const std::string log = board / "run/log";
        writeFile(log, "");
        daemon = std::make_unique<ChildProcess>(std::vector<std::string>{TARQD},
                                                std::vector<std::string>{"TARQ_LOG=" + log});
        EXPECT_TRUE(eventually([&] {  // its last module has started
            return readFile(log).find("ShellService: instantiate.....\n") != std::string::npos;
        }));
    }
    static void TearDownTestSuite() {
        daemon->kill(SIGTERM);  // it served until now
        EXPECT_EQ(daemon->wait(), 128 + SIGTERM);
        daemon.reset();
    }
    void SetUp() override {
        if (getuid() != 0 && getuid() != 1000) GTEST_SKIP() << "needs uid 0 or 1000";
    }

    static std::string outputOf(const char* command) {
        const sp<IShellService> shell = interface_cast<IShellService>(
                android::defaultServiceManager()->getService(IShellService::descriptor));
        std::vector<String16> output;
        int32_t result = -1;
        const bool done = shell->executeCommand(String16(command), &output, &result).isOk();
        return done && output.size() == 1 ? String8(output[0]).string() : "failed";
    }

    static inline std::unique_ptr<ChildProcess> daemon;
};

TEST_F(DaemonTest, services_are_listed_newest_first) {
    outputOf("true");  // served: every module has returned
    const auto names = android::defaultServiceManager()->listServices();
    EXPECT_THAT(std::vector(names.begin(), names.end()),
                testing::ElementsAre(String16("com.tarq.shell.IShellService"),
                                     String16("com.tarq.rgbleds.IRgbLedsService"),
                                     String16("com.tarq.hardwareInfo.IHardwareInfoService")));
}

// With SIGPIPE ignored, a command whose output nobody reads any more would run on.
TEST_F(DaemonTest, commands_inherit_no_descriptor_and_no_ignored_signal) {
    // The fourth is the one with which ls reads the directory.
    EXPECT_EQ(outputOf("ls /proc/self/fd"), "0\n1\n2\n3\n");
    EXPECT_EQ(outputOf("exec 2>/dev/null; for s in HUP INT PIPE TERM; do"
                       " sh -c \"kill -s $s \\$\\$; echo survived $s\"; done"),
              "");
}

}  // namespace
