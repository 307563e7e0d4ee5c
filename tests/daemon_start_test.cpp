// What main does in which order, against a binder that only keeps what it is asked.
#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <utils/String8.h>

#include "tests/captured_log.h"

using namespace android;  // NOLINT: the binder is defined here

int tarqd_main();  // main of daemon/main.cpp

static std::vector<std::string> events;
static status_t addResult;

namespace {
struct Manager : IServiceManager {
    sp<IBinder> getService(const String16&) const override { return nullptr; }
    sp<IBinder> checkService(const String16&) const override { return nullptr; }
    Vector<String16> listServices(int) override { return {}; }
    status_t addService(const String16& name, const sp<IBinder>& service, bool allowIsolated,
                        int flags) override {
        // Every service is registered under its own descriptor here.
        EXPECT_EQ(service->getInterfaceDescriptor(), name);
        events.push_back(String8(name).string() + std::string(allowIsolated ? " isolated " : " ") +
                         std::to_string(flags));
        return addResult;
    }
};
}  // namespace

namespace android {

sp<IServiceManager> defaultServiceManager() {
    return new Manager;
}

sp<ProcessState> ProcessState::self() {
    events.emplace_back("binder");
    return new ProcessState;
}

void ProcessState::startThreadPool() {
    events.emplace_back("pool");
}

void IPCThreadState::joinThreadPool(bool isMain) {
    events.emplace_back(isMain ? "main joins" : "joins");
}

}  // namespace android

TEST(DaemonStart, modules_register_in_order_whatever_the_manager_says) {
    setenv("TARQ_BOARD", "/no/board", 1);  // the modules find nothing, and start all the same
    for (const status_t result : {status_t{OK}, status_t{-1}}) {
        CapturedLog log;
        events.clear();
        addResult = result;
        EXPECT_EQ(tarqd_main(), 0);
        EXPECT_THAT(events,
                    testing::ElementsAre("binder", "com.tarq.hardwareInfo.IHardwareInfoService 8",
                                         "com.tarq.rgbleds.IRgbLedsService 8",
                                         "com.tarq.shell.IShellService 8", "binder", "pool",
                                         "main joins"));
        std::string logged;
        for (const std::string& entry : log.take()) logged += entry;
        EXPECT_THAT(logged, testing::EndsWith(
                                    "I rgbLedsService: RgbLedsSevice begin\n"
                                    "I rgbLedsService: startBootXml:/vendor/etc/leds/wave_fast.xml"
                                    "E rgbLedsService: Error opening xml file .\n"
                                    "I ShellService: instantiate.....\n"
                                    "I zigbee_check: zigbee_check_module skip check zigbee"
                                    "I (null): radio_key_module skip check Radiokey"));
    }
}
