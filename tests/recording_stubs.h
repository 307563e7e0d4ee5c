// One implementation of each of the six interfaces that keeps how it was called, and answers with
// what a test asked for.
#pragma once

#include <com/tarq/hardwareInfo/BnHardwareInfoService.h>
#include <com/tarq/radiokey/BnRadioKeyCallback.h>
#include <com/tarq/radiokey/BnRadioKeyService.h>
#include <com/tarq/rgbleds/BnRgbLedsCallbacks.h>
#include <com/tarq/rgbleds/BnRgbLedsService.h>
#include <com/tarq/shell/BnShellService.h>

#include <string>
#include <utility>
#include <vector>

namespace tarq::recording {

using android::IInterface;
using android::sp;
using android::String16;
using android::String8;
using android::binder::Status;
using com::tarq::radiokey::IRadioKeyCallback;
using com::tarq::rgbleds::IRgbLedsCallbacks;
using Texts = std::vector<String16>;

inline std::string show(bool value) {
    return value ? "true" : "false";
}
inline std::string show(int32_t value) {
    return std::to_string(value);
}
inline std::string show(int64_t value) {
    return std::to_string(value);
}
inline std::string show(const String16& value) {
    return String8(value).string();
}
template <typename T>
std::string show(const sp<T>& callback) {
    return String8(IInterface::asBinder(callback)->getInterfaceDescriptor()).string();
}
template <typename T>
std::string show(const std::vector<T>& values) {
    std::string text = "[";
    for (const T& value : values) text += (text.size() > 1 ? "," : "") + show(value);
    return text + "]";
}
template <typename A, typename B>
std::string show(const std::pair<A, B>& pair) {
    return show(pair.first) + " " + show(pair.second);
}

inline std::string called;  // the last method that ran in a stub, and its arguments
inline Status answer;       // what every method returns

template <typename... Args>
Status call(std::string text, const Args&... args) {
    ((text += " " + show(args)), ...);
    called = text;
    return answer;
}

template <typename T>
Status give(T* out, const T& value, const Status& status) {
    *out = value;
    return status;
}

struct HardwareInfo : com::tarq::hardwareInfo::BnHardwareInfoService {
    Status getHardwareInfo(Texts* out, bool* result) override {
        *out = {String16("wifi:null"), String16("tp:gt9")};
        return give(result, true, call("getHardwareInfo"));
    }
    Status isMatchHardwareInfo(const Texts& items, bool* result) override {
        return give(result, true, call("isMatchHardwareInfo", items));
    }
    Status setOtaTimestamp(int64_t time) override { return call("setOtaTimestamp", time); }
};

struct RgbLeds : com::tarq::rgbleds::BnRgbLedsService {
    Status setRgbColor(int32_t id, int32_t color, bool* result) override {
        return give(result, true, call("setRgbColor", id, color));
    }
    Status setRgbBrightness(int32_t id, int32_t brightness, bool* result) override {
        return give(result, false, call("setRgbBrightness", id, brightness));
    }
    Status loadXmlFile(const String16& path, int32_t* result) override {
        return give(result, -1, call("loadXmlFile", path));
    }
    Status stopLampEffect(int32_t* result) override {
        return give(result, 4, call("stopLampEffect"));
    }
    Status getRgbBrightness(int32_t id, int32_t* result) override {
        return give(result, 5, call("getRgbBrightness", id));
    }
    Status getRgbColor(int32_t id, int32_t* result) override {
        return give(result, 0xFF8000, call("getRgbColor", id));
    }
    Status setRgbEffect(int32_t id, int32_t type, int32_t color, int32_t brightness, int32_t cont,
                        int32_t val, int32_t* result) override {
        return give(result, 7, call("setRgbEffect", id, type, color, brightness, cont, val));
    }
    Status setLedList(const std::vector<int32_t>& ids, int32_t color, int32_t brightness,
                      bool* result) override {
        return give(result, true, call("setLedList", ids, color, brightness));
    }
    Status registerRgbLedsCallbacks(const sp<IRgbLedsCallbacks>& callback) override {
        return call("registerRgbLedsCallbacks", callback);
    }
};

struct RgbLedsCallbacks : com::tarq::rgbleds::BnRgbLedsCallbacks {
    Status onValueChange(int32_t value) override { return call("onValueChange", value); }
};

struct Shell : com::tarq::shell::BnShellService {
    Status executeCommand(const String16& command, Texts* output, int32_t* result) override {
        *output = {String16("hi\n")};
        return give(result, 0, call("executeCommand", command));
    }
};

struct RadioKey : com::tarq::radiokey::BnRadioKeyService {
    Status getRssiDBm(int32_t* result) override { return give(result, -70, call("getRssiDBm")); }
    Status registerRadioKeyCallback(const sp<IRadioKeyCallback>& callback) override {
        return call("registerRadioKeyCallback", callback);
    }
    Status getChipStatus(int32_t* result) override {
        return give(result, 3, call("getChipStatus"));
    }
    Status setRadiokeyFrequency(int32_t frequency) override {
        return call("setRadiokeyFrequency", frequency);
    }
};

struct RadioKeyCallback : com::tarq::radiokey::BnRadioKeyCallback {
    Status onClick(int32_t a, int32_t b, int32_t c, int32_t rssi) override {
        return call("onClick", a, b, c, rssi);
    }
};

}  // namespace tarq::recording
