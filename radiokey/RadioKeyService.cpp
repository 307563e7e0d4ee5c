// A registry between two sides that do not wait for each other: binder threads register callbacks
// and ask the receiver, the receive thread tells all callbacks of each key. A registration is the
// callback's binder and a notifier that is linked to its death, the only thing that ends it. Calls
// to the receiver's library are not kept apart: it has to bear that, see radiokey.h.
#include "radiokey/RadioKeyService.h"

#include <android/log.h>
#include <cutils/properties.h>
#include <stdio.h>
#include <string.h>

#include "radiokey/radiokey.h"
#include "radiokey/worker_threads.h"

namespace com::tarq::radiokey {

using android::IBinder;
using android::Looper;
using android::sp;
using android::status_t;
using android::wp;
using android::binder::Status;

// The map holds it strongly; the callback's proxy, which it is linked to, holds it weakly.
class RadioKeyService::DeathNotifier : public IBinder::DeathRecipient {
  public:
    DeathNotifier(const wp<RadioKeyService>& service, const sp<IRadioKeyCallback>& callback)
        : mService(service), mCallback(callback) {}

    void binderDied(const wp<IBinder>& who) override {
        const sp<RadioKeyService> service = mService.promote();
        if (service != nullptr) service->remove(who);
    }

    const wp<RadioKeyService> mService;
    sp<IRadioKeyCallback> mCallback;  // guarded by the service's mLock
};

RadioKeyService::RadioKeyService() : mHandler(new MHandler), mLooper(Looper::getForThread()) {}

void RadioKeyService::onFirstRef() {
    threadInitialize();
}

RadioKeyService::~RadioKeyService() {
    radiokey_uninit();
}

void RadioKeyService::threadInitialize() {
    mSetupThread = new SetupThread(this);
    const status_t status = mSetupThread->run("RadioKeyService-SetupThread", 0, 0);
    if (status != android::OK) {
        // Negated without a sign: UNKNOWN_ERROR is the smallest number. The text speaks of the
        // receive thread, whose start nobody checks, and means this one.
        const int error = static_cast<int>(0U - static_cast<uint32_t>(status));
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Unable to start recv thread: %s",
                            strerror(error));
    }
    mRecvThread = new RecvThread(this);
    mRecvThread->run("RadioKeyService-RecvThread", 0, 0);
    mRequestThread = new RequestThread(this);
    mRequestThread->run("RadioKeyService-RequestThread", 0, 0);
}

Status RadioKeyService::getRssiDBm(int32_t* rssi) {
    *rssi = radiokey_get_rssi_dbm();
    return Status::ok();
}

Status RadioKeyService::registerRadioKeyCallback(const sp<IRadioKeyCallback>& callback) {
    const std::lock_guard<std::mutex> lock(mLock);
    const sp<DeathNotifier> notifier = new DeathNotifier(this, callback);
    const sp<IBinder> binder = IInterface::asBinder(callback);
    mCallbacks.emplace(binder, notifier);  // an earlier registration stays as it is
    // The link is weak: a notifier that was not stored lapses here. One in this same process cannot
    // be linked, and ends with it anyway. Nor can a client that died before this call ran, if its
    // notice is out: the dead entry stays, and costs one failed call an event, until this process
    // ends.
    binder->linkToDeath(notifier, nullptr, 0);
    return Status::ok();
}

Status RadioKeyService::getChipStatus(int32_t* status) {
    *status = mChipReady.load(std::memory_order_relaxed) ? radiokey_detect_chip() : -1;
    return Status::ok();
}

// What the property and the receiver make of the number is not asked: neither result is used.
Status RadioKeyService::setRadiokeyFrequency(int32_t frequency) {
    char text[PROPERTY_VALUE_MAX] = {};
    snprintf(text, sizeof(text), "%d", frequency);
    property_set("persist.radiokey.frequence", text);
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "set property -> %s", text);
    mChipReady.store(false, std::memory_order_relaxed);
    radiokey_reset(frequency);
    mChipReady.store(true, std::memory_order_relaxed);
    return Status::ok();
}

// Copies, so that a callback may be registered or die while the others are told.
std::vector<sp<IRadioKeyCallback>> RadioKeyService::callbacks() {
    const std::lock_guard<std::mutex> lock(mLock);
    std::vector<sp<IRadioKeyCallback>> copies;
    copies.reserve(mCallbacks.size());
    for (const auto& [binder, notifier] : mCallbacks) copies.push_back(notifier->mCallback);
    return copies;
}

void RadioKeyService::onClick(int32_t value1, int32_t value2, int32_t value3, int32_t rssiDBm) {
    for (const sp<IRadioKeyCallback>& callback : callbacks()) {
        callback->onClick(value1, value2, value3, rssiDBm);
    }
}

// A dead proxy can still be promoted here: the map holds it.
void RadioKeyService::remove(const wp<IBinder>& who) {
    const std::lock_guard<std::mutex> lock(mLock);
    const auto entry = mCallbacks.find(who.promote());
    if (entry == mCallbacks.end()) return;
    entry->second->mCallback.clear();
    mCallbacks.erase(entry);
}

}  // namespace com::tarq::radiokey
