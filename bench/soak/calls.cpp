// What a client calls, at random: each service as it is meant to be used, as it is not, and with
// bytes that mean nothing. Each answer is judged, as far as it can be known beforehand.
#include "bench/soak/calls.h"

#include <binder/Parcel.h>
#include <unistd.h>
#include <utils/String8.h>

namespace soak {

using android::IBinder;
using android::Parcel;
using android::sp;
using android::status_t;
using android::String16;

status_t statusOf(const android::binder::Status& status) {
    if (status.isOk()) return android::OK;
    return status.exceptionCode() == android::binder::Status::EX_TRANSACTION_FAILED
                   ? status.transactionError()
                   : status.exceptionCode();
}

void Caller::callSomething() {
    using Method = void (Caller::*)();
    (this->*mRandom.oneOf<Method>({&Caller::askHardware, &Caller::match, &Caller::useLeds,
                                   &Caller::notifyByLeds, &Caller::notifyByLeds,
                                   &Caller::notifyOneWay, &Caller::flood, &Caller::playEffect,
                                   &Caller::runCommand, &Caller::useRadio, &Caller::lookUp,
                                   &Caller::sendMalformed}))();
}

void Caller::judge(const char* name, status_t expected, status_t status, int64_t tookMs,
                   int limitMs) {
    ++shared->calls;
    if (limitMs == kLimitMs && tookMs > shared->slowestMs) shared->slowestMs = tookMs;
    if (tookMs > limitMs) {
        finding(mName.c_str(), "slow: %s took %lld ms, all causes deducted", name,
                static_cast<long long>(tookMs));
    }
    if (status == android::DEAD_OBJECT || status == android::FAILED_TRANSACTION) {
        finding(mName.c_str(), "no answer: %s returned %d", name, status);
    } else if (expected != kAny && status != expected) {
        finding(mName.c_str(), "wrong: %s returned %d, expected %d", name, status, expected);
    }
}

void Caller::askHardware() {
    std::vector<String16> items;
    call("getHardwareInfo", android::OK, [&] {
        bool result = false;
        return statusOf(mServices.hardware->getHardwareInfo(&items, &result));
    });
    if (items.size() != 11) finding(mName.c_str(), "wrong: %zu items of hardware", items.size());
}

// Some texts are nearly as long as a transaction may be; many items would be asked for on the board
// one by one.
void Caller::match() {
    std::vector<String16> items;
    for (int i = mRandom.number(0, 12); i > 0; --i) {
        items.emplace_back(mRandom.oneOf({"tp:GT-5", "lcd:ili9881c-2", "overlay_id:1,5",
                                          "wifi:", "codec:es8316", "tp", ":", "emmc:null"}));
    }
    if (mRandom.oneIn(20)) items.emplace_back(("tp:" + std::string(90000, 'x')).c_str());
    const int64_t time = mRandom.number(0, 2000000000);
    call("setOtaTimestamp", android::OK,
         [&] { return statusOf(mServices.hardware->setOtaTimestamp(time)); });
    call("isMatchHardwareInfo", android::OK, [&] {
        bool result = false;
        return statusOf(mServices.hardware->isMatchHardwareInfo(items, &result));
    });
}

void Caller::useLeds() {
    const int32_t id = mRandom.number(-1, 13);
    const int32_t color = mRandom.number(0, 0xffffff);
    call("setLedList", android::OK, [&] {
        bool result = false;
        return statusOf(mServices.leds->setLedList({id, id + 1}, color, 200, &result));
    });
    call("setRgbEffect", android::OK, [&] {
        int32_t result = 0;
        return statusOf(mServices.leds->setRgbEffect(id, 1, color, 100, 3, 5, &result));
    });
}

static status_t sendLedOperation(const Services& services, const LedOperation& operation,
                                 Random& random, uint32_t flags) {
    Parcel data;
    Parcel reply;
    data.writeInterfaceToken(com::tarq::rgbleds::IRgbLedsService::descriptor);
    for (int32_t i = 0; i < operation.numbers; ++i) data.writeInt32(random.number(0, 255));
    const sp<IBinder> leds = android::IInterface::asBinder(services.leds);
    return leds->transact(IBinder::FIRST_CALL_TRANSACTION + operation.code, data, &reply, flags);
}

void Caller::notifyByLeds() {
    const int which = mRandom.number(0, 3);
    const LedOperation& operation = kLedOperations[which];
    ++shared->leds[which].begun;
    const status_t status = call(operation.name, android::OK, [&] {
        return sendLedOperation(mServices, operation, mRandom, 0);
    });
    if (status == android::OK) ++shared->leds[which].done;
}

// What the daemon has no room for may be refused; what it took it carries out.
void Caller::notifyOneWay() {
    const int count = mRandom.oneIn(10) ? 60 : 2;
    for (int i = 0; i < count; ++i) {
        const int which = mRandom.number(0, 3);
        ++shared->leds[which].begun;
        const status_t status =
                sendLedOperation(mServices, kLedOperations[which], mRandom, IBinder::FLAG_ONEWAY);
        ++shared->oneWay;
        if (status == android::OK) {
            ++shared->leds[which].done;
        } else if (status != android::FAILED_TRANSACTION) {
            finding(mName.c_str(), "wrong: a one-way call returned %d", status);
        }
    }
}

// More than the daemon lets wait of one client: it stops to listen to it, and to it alone.
void Caller::flood() {
    if (!mRandom.oneIn(10)) return;
    Parcel data;
    data.writeInterfaceToken(com::tarq::hardwareInfo::IHardwareInfoService::descriptor);
    data.writeString16Vector({String16(std::string(20000, 'x').c_str())});
    const sp<IBinder> hardware = android::IInterface::asBinder(mServices.hardware);
    for (int i = 0; i < 100; ++i) {
        hardware->transact(IBinder::FIRST_CALL_TRANSACTION + 1, data, nullptr,
                           IBinder::FLAG_ONEWAY);
        ++shared->oneWay;
    }
}

void Caller::playEffect() {
    const char* const name = mRandom.oneOf({"rainbow", "alert", "wave_fast", "nothing"});
    const String16 path((std::string("/vendor/etc/leds/") + name + ".xml").c_str());
    call("loadXmlFile", android::OK, [&] {
        int32_t result = 0;
        return statusOf(mServices.leds->loadXmlFile(path, &result));
    });
    call("stopLampEffect", android::OK, [&] {
        int32_t result = 0;
        return statusOf(mServices.leds->stopLampEffect(&result));
    });
}

// Each waits for all before it, and for the shell that is started: those who may not run any too.
void Caller::runCommand() {
    constexpr int kQueueMs = 10000;
    const bool mayRun = getuid() == 0 || getuid() == 1000;
    const std::string command = mRandom.oneOf(
            {"echo soak", "sleep 0.05; echo soak", "echo soak; exit 3", "echo soak; kill -9 $$"});
    std::vector<String16> output;
    call(
            "executeCommand", mayRun ? android::OK : android::PERMISSION_DENIED,
            [&] {
                int32_t result = 0;
                return statusOf(mServices.shell->executeCommand(String16(command.c_str()), &output,
                                                                &result));
            },
            kQueueMs);
    if (mayRun && (output.size() != 1 || output[0] != String16("soak\n"))) {
        finding(mName.c_str(), "wrong: the output of %s", command.c_str());
    }
}

void Caller::useRadio() {
    int32_t number = 0;
    call("getRssiDBm", android::OK, [&] { return statusOf(mServices.radio->getRssiDBm(&number)); });
    call("getChipStatus", android::OK,
         [&] { return statusOf(mServices.radio->getChipStatus(&number)); });
    if (!mRandom.oneIn(10)) return;
    number = mRandom.oneOf({433, 315});
    call("setRadiokeyFrequency", android::OK,
         [&] { return statusOf(mServices.radio->setRadiokeyFrequency(number)); });
}

void Caller::lookUp() {
    const sp<android::IServiceManager> manager = android::defaultServiceManager();
    call("checkService", android::OK, [&] {
        const auto leds = manager->checkService(com::tarq::rgbleds::IRgbLedsService::descriptor);
        const bool isThere = leds != nullptr && manager->checkService(String16("no")) == nullptr;
        return isThere ? android::OK : android::NAME_NOT_FOUND;
    });
    call("listServices", 4, [&] { return static_cast<status_t>(manager->listServices().size()); });
    call("pingBinder", android::OK,
         [&] { return android::IInterface::asBinder(mServices.shell)->pingBinder(); });
}

// With the wrong token, or behind the right one too little: nothing of it may be carried out.
void Caller::sendMalformed() {
    const sp<IBinder> target =
            mRandom.oneOf<sp<IBinder>>({android::IInterface::asBinder(mServices.hardware),
                                        android::IInterface::asBinder(mServices.leds),
                                        android::IInterface::asBinder(mServices.shell),
                                        android::IInterface::asBinder(mServices.radio)});
    Parcel data;
    Parcel reply;
    if (mRandom.oneIn(2)) {
        data.writeInterfaceToken(target->getInterfaceDescriptor());
    } else {
        const std::string bytes = mRandom.bytes(mRandom.oneIn(20) ? 190000 : 30);
        data.write(bytes.data(), bytes.size());
    }
    const auto code = static_cast<uint32_t>(mRandom.number(0, 12));
    call("a malformed call", kAny, [&] { return target->transact(code, data, &reply); });
}

}  // namespace soak
