// What the real daemon leaves to the commands that it runs.
#include <binder/IServiceManager.h>
#include <com/tarq/shell/IShellService.h>
#include <gmock/gmock.h>
#include <linux/close_range.h>

#include <string>
#include <vector>

#include "tests/child_process.h"
#include "tests/plain_board.h"

using android::interface_cast;
using android::sp;
using android::String16;
using com::tarq::shell::IShellService;

namespace {

// With SIGPIPE ignored, a command whose output nobody reads any more would run on.
TEST(Daemon, commands_inherit_no_descriptor_and_no_ignored_signal) {
    if (getuid() != 0 && getuid() != 1000) GTEST_SKIP() << "needs uid 0 or 1000";
    const PlainBoard board;
    // What the test itself was started with is not the daemon's doing.
    close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
    for (int signal = 1; signal < SIGRTMAX; ++signal) ::signal(signal, SIG_DFL);
    const std::string log = board / "run/log";
    ChildProcess daemon({TARQD}, {"TARQ_LOG=" + log});
    ASSERT_TRUE(eventually([&] {  // the module that is asked here has started
        return readFile(log).find("ShellService: instantiate.....\n") != std::string::npos;
    }));
    const sp<IShellService> shell = interface_cast<IShellService>(
            android::defaultServiceManager()->getService(IShellService::descriptor));
    const std::pair<const char*, const char*> cases[] = {
            {"ls /proc/self/fd", "0\n1\n2\n3\n"},  // the fourth is that of the directory
            {"exec 2>/dev/null; for s in HUP INT PIPE TERM; do"
             " sh -c \"kill -s $s \\$\\$; echo survived $s\"; done",
             ""}};
    for (const auto& [command, printed] : cases) {
        std::vector<String16> output;
        int32_t result = -1;
        EXPECT_TRUE(shell->executeCommand(String16(command), &output, &result).isOk());
        EXPECT_THAT(output, testing::ElementsAre(String16(printed)));
    }
    daemon.kill(SIGTERM);  // it served until now
    EXPECT_EQ(daemon.wait(), 128 + SIGTERM);
}

}  // namespace
