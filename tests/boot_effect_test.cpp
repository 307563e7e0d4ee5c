// The daemon while the LED driver keeps it waiting in the middle of its start.
#include <binder/IServiceManager.h>
#include <com/tarq/hardwareInfo/IHardwareInfoService.h>
#include <com/tarq/rgbleds/IRgbLedsService.h>

#include <future>

#include "tests/test_board.h"

using android::interface_cast;
using android::String16;
using com::tarq::hardwareInfo::IHardwareInfoService;
using com::tarq::rgbleds::IRgbLedsService;

namespace {

android::sp<android::IBinder> find(const String16& name) {
    return android::defaultServiceManager()->checkService(name);
}

TEST(BootEffect, service_before_it_is_found_and_answers_once_the_effect_is_with_the_driver) {
    const TestBoard board("<leds count='12'/>", "vendor.boot.led_effect=/data/boot.xml\n");
    if (!board.withoutFuse().empty()) GTEST_SKIP() << board.withoutFuse();
    writeFile(board.path("/data/boot.xml"), "<e loop='1' interval='20' duration='9'/>");
    board.command({"hold", "xml_effect_trans_state"});
    const ChildProcess daemon({TARQD}, {"TARQ_LOG=" + board.directory() + "/run/log"});
    ASSERT_TRUE(eventually([&] {
        return std::filesystem::exists(board.directory() + "/run/binder.sock") &&
               find(IHardwareInfoService::descriptor) != nullptr;
    }));
    std::future<bool> answer = std::async(std::launch::async, [] {
        const auto service = interface_cast<IHardwareInfoService>(
                android::defaultServiceManager()->getService(IHardwareInfoService::descriptor));
        std::vector<String16> parts;
        bool result = false;
        return service->getHardwareInfo(&parts, &result).isOk() && parts.size() == 11;
    });
    EXPECT_EQ(answer.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    EXPECT_EQ(find(IRgbLedsService::descriptor), nullptr);
    board.command({"release", "xml_effect_trans_state"});
    ASSERT_EQ(answer.wait_for(kDeadline), std::future_status::ready);
    EXPECT_TRUE(answer.get());
    EXPECT_NE(find(IRgbLedsService::descriptor), nullptr);
    std::string trace;
    board.ask({"trace"}, &trace);
    EXPECT_EQ(trace,
              "xml_effect_trans_state 1\nxml_effect_trans_vals loop 1\n"
              "xml_effect_trans_vals interval 20\nxml_effect_trans_vals duration 9\n"
              "xml_effect_trans_state 0\n");
}

}  // namespace
