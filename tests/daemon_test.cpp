// The real daemon: kept waiting by the LED driver in its start, and what its commands inherit.
#include <binder/IServiceManager.h>
#include <com/tarq/hardwareInfo/IHardwareInfoService.h>
#include <com/tarq/rgbleds/IRgbLedsService.h>
#include <com/tarq/shell/IShellService.h>
#include <gmock/gmock.h>
#include <linux/close_range.h>

#include <future>

#include "tests/test_board.h"

using android::defaultServiceManager;
using android::String16;
using com::tarq::hardwareInfo::IHardwareInfoService;
using com::tarq::rgbleds::IRgbLedsService;
using com::tarq::shell::IShellService;

namespace {

// One board for both: the binder finds its board once a process.
const TestBoard& board() {
    static const TestBoard instance("<leds count='12'/>",
                                    "vendor.boot.led_effect=/data/boot.xml\n");
    return instance;
}

template <typename I>
bool isFound() {
    return access(board().binderSocket().c_str(), F_OK) == 0 &&
           defaultServiceManager()->checkService(I::descriptor) != nullptr;
}

template <typename I>
android::sp<I> get() {
    return android::interface_cast<I>(defaultServiceManager()->getService(I::descriptor));
}

// With SIGPIPE ignored, a command whose output nobody reads any more would run on.
TEST(Daemon, commands_inherit_no_descriptor_and_no_ignored_signal) {
    if (getuid() != 0 && getuid() != 1000) GTEST_SKIP() << "needs uid 0 or 1000";
    // What the test itself was started with is not the daemon's doing.
    close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
    for (int signal = 1; signal < SIGRTMAX; ++signal) ::signal(signal, SIG_DFL);
    const auto daemon = board().startDaemon(TARQD);
    ASSERT_TRUE(eventually(isFound<IShellService>));
    const std::pair<const char*, const char*> cases[] = {
            {"ls /proc/self/fd", "0\n1\n2\n3\n"},  // the fourth is that of the directory
            {"exec 2>/dev/null; for s in HUP INT PIPE TERM; do"
             " sh -c \"kill -s $s \\$\\$; echo survived $s\"; done",
             ""}};
    for (const auto& [command, printed] : cases) {
        std::vector<String16> output;
        int32_t result = -1;
        EXPECT_TRUE(
                get<IShellService>()->executeCommand(String16(command), &output, &result).isOk());
        EXPECT_THAT(output, testing::ElementsAre(String16(printed)));
    }
    daemon->kill(SIGTERM);  // it served until now
    EXPECT_EQ(daemon->wait(), 128 + SIGTERM);
}

TEST(Daemon, service_before_it_is_found_and_answers_once_the_effect_is_with_the_driver) {
    if (!board().withoutFuse().empty()) GTEST_SKIP() << board().withoutFuse();
    writeFile(board().device("/data/boot.xml"), "<e loop='1' interval='20' duration='9'/>");
    board().command({"hold", "xml_effect_trans_state"});
    const auto daemon = board().startDaemon(TARQD);
    ASSERT_TRUE(eventually(isFound<IHardwareInfoService>));
    std::future<bool> answer = std::async(std::launch::async, [] {
        std::vector<String16> parts;
        bool result = false;
        return get<IHardwareInfoService>()->getHardwareInfo(&parts, &result).isOk() &&
               parts.size() == 11;
    });
    EXPECT_EQ(answer.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    EXPECT_FALSE(isFound<IRgbLedsService>());
    board().command({"release", "xml_effect_trans_state"});
    ASSERT_EQ(answer.wait_for(kDeadline), std::future_status::ready);
    EXPECT_TRUE(answer.get());
    EXPECT_TRUE(isFound<IRgbLedsService>());
}

}  // namespace
