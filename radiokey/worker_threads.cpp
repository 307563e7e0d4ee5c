#include "radiokey/worker_threads.h"

#include <android/log.h>
#include <cutils/properties.h>
#include <stdlib.h>

#include "common/pause.h"
#include "radiokey/radiokey.h"

namespace com::tarq::radiokey {

using android::sp;

// The receiver counts as ready whatever radiokey_init says.
bool RadioKeyService::SetupThread::threadLoop() {
    char text[256] = {};
    property_get("persist.radiokey.frequence", text, "433");
    const int32_t frequency = atoi(text);  // 0 for a text that is no number
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "RadioKeyService init, frequency=[%d]\n",
                        frequency);
    radiokey_init(frequency);
    const sp<RadioKeyService> service = mService.promote();
    if (service != nullptr) service->mChipReady.store(true, std::memory_order_relaxed);
    return false;
}

// There is no pause: the poll itself waits. Holding the service for a pass keeps it alive during
// the poll.
bool RadioKeyService::RecvThread::threadLoop() {
    int32_t values[3] = {};
    const sp<RadioKeyService> service = mService.promote();
    if (service == nullptr) return true;  // it is being destroyed, and then lets go of this thread
    if (radiokey_recv_poll(&values[0], &values[1], &values[2]) == 0) {
        const int32_t rssiDBm = radiokey_get_rssi_dbm();
        service->onClick(values[0], values[1], values[2], rssiDBm);
    }
    return true;
}

// Logged as an error, though it is none: the line is a sign of life.
bool RadioKeyService::RequestThread::threadLoop() {
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "request");
    pauseFor(std::chrono::seconds(5));
    return true;
}

void RadioKeyService::MHandler::handleMessage(const android::Message& message) {
    if (message.what == 0) return;
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s: unknown message type %d", __func__,
                        message.what);
}

}  // namespace com::tarq::radiokey
