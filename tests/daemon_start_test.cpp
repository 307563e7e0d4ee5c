// What main does in which order, against a binder that only keeps what it is asked.
#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <utils/String8.h>

#include <string>
#include <vector>

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
        events.push_back(std::string(String8(name).string()) +
                         (allowIsolated ? " isolated " : " ") + std::to_string(flags));
        return addResult;
    }
};

}  // namespace

namespace android {

sp<IServiceManager> defaultServiceManager() {
    return new Manager;
}

sp<ProcessState> ProcessState::self() {
    static const sp<ProcessState> state = new ProcessState;
    events.emplace_back("binder");
    return state;
}

void ProcessState::startThreadPool() {
    events.emplace_back("pool");
}

void IPCThreadState::joinThreadPool(bool isMain) {
    events.emplace_back(isMain ? "main joins" : "joins");
}

}  // namespace android

namespace {

struct DaemonStart : testing::TestWithParam<status_t> {};

TEST_P(DaemonStart, modules_register_in_order_whatever_the_manager_says) {
    const CapturedLog log;
    setenv("TARQ_BOARD", "/no/board", 1);  // the modules find nothing, and start all the same
    events.clear();
    addResult = GetParam();
    EXPECT_EQ(tarqd_main(), 0);
    EXPECT_THAT(events, testing::ElementsAre(
                                "binder", "com.tarq.hardwareInfo.IHardwareInfoService 8",
                                "com.tarq.shell.IShellService 8", "binder", "pool", "main joins"));
}

INSTANTIATE_TEST_SUITE_P(Results, DaemonStart, testing::Values(OK, -1, DEAD_OBJECT));

}  // namespace
