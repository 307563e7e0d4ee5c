// The calls that any thread of a client makes.
#pragma once

#include <binder/IServiceManager.h>
#include <binder/Status.h>
#include <com/tarq/hardwareInfo/IHardwareInfoService.h>
#include <com/tarq/radiokey/IRadioKeyService.h>
#include <com/tarq/rgbleds/IRgbLedsService.h>
#include <com/tarq/shell/IShellService.h>

#include "bench/soak/soak.h"

namespace soak {

// Finds the service, for which it waits.
template <typename Interface>
android::sp<Interface> find(const android::String16& name = Interface::descriptor) {
    return android::interface_cast<Interface>(android::defaultServiceManager()->getService(name));
}

// What a proxy's method returned, as a transaction does.
android::status_t statusOf(const android::binder::Status& status);

struct Services {
    android::sp<com::tarq::hardwareInfo::IHardwareInfoService> hardware;
    android::sp<com::tarq::rgbleds::IRgbLedsService> leds;
    android::sp<com::tarq::shell::IShellService> shell;
    android::sp<com::tarq::radiokey::IRadioKeyService> radio;
};

// One a thread.
class Caller {
  public:
    Caller(int client, const Services& services, Random random)
        : mClient(client),
          mName("client " + std::to_string(client)),
          mServices(services),
          mRandom(random) {}

    // Any call but the registrations.
    void callSomething();
    // Makes the call, and judges how long it took and what it returns: the expected status, or any
    // but the two of a call that was not answered.
    static constexpr android::status_t kAny = 1;
    static constexpr int kLimitMs = 1000;
    template <typename Call>
    android::status_t call(const char* name, android::status_t expected, Call&& call,
                           int limitMs = kLimitMs);

    const int mClient;
    const std::string mName;
    const Services& mServices;
    Random mRandom;

  private:
    void judge(const char* name, android::status_t expected, android::status_t status,
               int64_t tookMs, int limitMs);
    void askHardware();
    void match();
    void useLeds();
    void notifyByLeds();
    void notifyOneWay();
    void flood();
    void playEffect();
    void runCommand();
    void useRadio();
    void lookUp();
    void sendMalformed();
};

template <typename Call>
android::status_t Caller::call(const char* name, android::status_t expected, Call&& call,
                               int limitMs) {
    const auto excused = [this] {
        return shared->excusedUs[mClient] + shared->excusedUs[kClients];
    };
    const int64_t excusedBefore = excused();
    const int64_t begun = nowMs();
    shared->waiting[mClient].sinceMs = begun;
    shared->waiting[mClient].call = name;
    const android::status_t status = call();
    shared->waiting[mClient].call = nullptr;
    judge(name, expected, status, nowMs() - begun - (excused() - excusedBefore) / 1000, limitMs);
    return status;
}

}  // namespace soak
