// A start of the daemon with a co-processor on the port.
#include <gmock/gmock.h>

#include "tests/run_tarqctl.h"
#include "tests/test_board.h"

using namespace testing;

TEST(ZigbeeStart, check_is_named_while_calls_wait_for_it_and_published_when_it_is_done) {
    const TestBoard board("<coprocessor manufacturer='1002' version='6.10.3'/>",
                          "ro.vendor.zigbee_check_enable=true\nro.vendor.433_check_enable=true\n");
    const std::string check =
            "the Zigbee check is still running; it can take up to 13.5 minutes when nothing "
            "answers "
            "on /dev/ttyS3\n";
    const std::vector<std::string> environment = {"TARQ_LOG=" + board.directory() + "/run/log"};
    board.command({"fault", "coprocessor", "silent"});
    {
        const ChildProcess daemon({TARQD}, environment);
        ASSERT_EQ(runTarqctl("wait com.tarq.shell.IShellService"), "");
        EXPECT_THAT(runTarqctl("services"), EndsWith("radiokey_service absent: " + check));
        ChildProcess call({"sh", "-c", "exec " TARQCTL " --timeout 0.2 shell id 2>&1"});
        EXPECT_THAT(call.readAll(), HasSubstr("no answer after 0.2 s: " + check));
        EXPECT_EQ(call.wait(), 2);
        ChildProcess wait({"sh", "-c", "exec " TARQCTL " --timeout 0.2 wait 2>&1"});
        EXPECT_THAT(wait.readAll(), HasSubstr("radiokey_service: " + check));
        EXPECT_EQ(wait.wait(), 2);
    }
    board.command({"fault", "coprocessor", "none"});
    const ChildProcess daemon({TARQD}, environment);
    EXPECT_EQ(runTarqctl("wait"), "");
    EXPECT_EQ(runTarqctl("getprop ro.vendor.zigbee.info"), "exist=1;COOID=1002;version=6.10.3\n");
    EXPECT_THAT(runTarqctl("services"), EndsWith("radiokey_service present\n"));
}
