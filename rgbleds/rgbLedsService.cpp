// A translator: each operation makes a text or two for the driver, logs itself, and says whether
// the driver was there. Nothing is remembered of an LED and no value is judged. Beside that there
// is one callback for the whole device, which four of the operations tell that they were carried
// out.
#include "rgbleds/rgbLedsService.h"

#include <android/log.h>
#include <utils/String8.h>

#include <utility>

#include "rgbleds/effect_loader.h"
#include "rgbleds/led_attributes.h"

namespace com::tarq::rgbleds {

using android::sp;
using android::String16;
using android::String8;
using android::binder::Status;

// What an operation logs and sends once it was carried out. The numbers are fixed and say nothing
// about an LED.
struct rgbLedsService::Notice {
    const char* operation;
    int value;          // for the callback
    int registered;     // logged when there is one
    int notRegistered;  // logged when there is none, with the mark behind it
    const char* mark;
};

sp<IRgbLedsCallbacks> rgbLedsService::registeredCallback() {
    const std::lock_guard<std::mutex> guard(mLock);
    return mCallback;
}

// The line is logged as an error and is none: its priority is part of the contract. The call goes
// out without the lock, and is one-way, so that it does not wait for the application.
void rgbLedsService::notify(const Notice& notice) {
    const sp<IRgbLedsCallbacks> callback = registeredCallback();
    const bool registered = callback != nullptr;
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "entery %s  RgbLedsService : %d%s",
                        notice.operation, registered ? notice.registered : notice.notRegistered,
                        registered ? "" : notice.mark);
    // A callback whose process has ended is kept, and nobody is told.
    if (registered) callback->onValueChange(notice.value);
}

Status rgbLedsService::setRgbColor(int32_t id, int32_t color, bool* result) {
    static constexpr Notice kNotice = {"setRgbColor", 64, 63, 66, " +++++++++++++++++"};
    const bool written = writeColorToFile(id, color) != 0;
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s:id=%d,reg=%d", "setRgbColor", id, color);
    *result = written;
    notify(kNotice);
    return Status::ok();
}

Status rgbLedsService::setRgbBrightness(int32_t id, int32_t brightness, bool* result) {
    static constexpr Notice kNotice = {"setRgbBrightness", 82, 81, 84, " f+++++++++++++++++"};
    const bool written = writeBrightnessToFile(id, brightness) != 0;
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s:id=%d,reg=%d", "setRgbBrightness", id,
                        brightness);
    *result = written;
    notify(kNotice);
    return Status::ok();
}

// A reading is logged behind its notice, a setting before it.
Status rgbLedsService::getRgbColor(int32_t id, int32_t* result) {
    static constexpr Notice kNotice = {"getRgbColor", 101, 100, 103, " +++++++++++++"};
    *result = readAttribute(kGetColor, id);
    notify(kNotice);
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s:id=%d,reg=0x%x", "getRgbColor", id, *result);
    return Status::ok();
}

Status rgbLedsService::getRgbBrightness(int32_t id, int32_t* result) {
    static constexpr Notice kNotice = {"getRgbBrightness", 124, 120, 123, "  +++++++"};
    *result = readAttribute(kGetBrightness, id);
    notify(kNotice);
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s:id=%d,reg=0x%x", "getRgbBrightness", id,
                        *result);
    return Status::ok();
}

// One LED that fails holds up none of the others; what became of the colours is not told.
Status rgbLedsService::setLedList(const std::vector<int32_t>& ids, int32_t color,
                                  int32_t brightness, bool* result) {
    *result = false;
    for (const int32_t id : ids) {
        writeColorToFile(id, color);
        *result = writeBrightnessToFile(id, brightness) != 0;
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s:id=%d, color=%d, brightness=%d",
                            "setLedList", id, color, brightness);
    }
    return Status::ok();
}

Status rgbLedsService::setRgbEffect(int32_t id, int32_t type, int32_t color, int32_t brightness,
                                    int32_t cont, int32_t val, int32_t* result) {
    // cont alone is decimal.
    const std::string text = driverHex(id) + " " + driverHex(type) + " " + driverHex(color) + " " +
                             driverHex(brightness) + " " + std::to_string(cont) + " " +
                             driverHex(val);
    *result = writeAttribute(kStandbyEffect, text) ? 1 : 0;
    __android_log_print(ANDROID_LOG_INFO, kLogTag,
                        "%s:id=%d,type=%d,color=%d,brightness=%d,cont=%d,val=%d", "setRgbEffect",
                        id, type, color, brightness, cont, val);
    return Status::ok();
}

Status rgbLedsService::loadXmlFile(const String16& path, int32_t* result) {
    const String8 text(path);
    parseXmlFile(text.string());
    *result = 0;
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s:path=%s", "loadXmlFile", text.string());
    return Status::ok();
}

Status rgbLedsService::stopLampEffect(int32_t* result) {
    const bool written = writeAttribute(kTransferState, "2");
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s", "stopLampEffect");
    *result = written ? 1 : 0;
    return Status::ok();
}

Status rgbLedsService::registerRgbLedsCallbacks(const sp<IRgbLedsCallbacks>& callback) {
    if (registeredCallback() != nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "registerRgbLedsCallbacks  already exist : %d", 189);
    }
    __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                        "entery registerRgbLedsCallbacks  RgbLedsService : %d", 191);
    sp<IRgbLedsCallbacks> former = callback;  // goes without the lock, as that may end it
    const std::lock_guard<std::mutex> guard(mLock);
    std::swap(mCallback, former);
    return Status::ok();
}

}  // namespace com::tarq::rgbleds
