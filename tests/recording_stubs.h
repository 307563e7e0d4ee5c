// One implementation of each of the six interfaces that keeps how it was called, and answers with
// what a test asked for.
#pragma once

#include <com/tarq/hardwareInfo/BnHardwareInfoService.h>
#include <com/tarq/radiokey/BnRadioKeyCallback.h>
#include <com/tarq/radiokey/BnRadioKeyService.h>
#include <com/tarq/rgbleds/BnRgbLedsCallbacks.h>
#include <com/tarq/rgbleds/BnRgbLedsService.h>
#include <com/tarq/shell/BnShellService.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <tuple>
#include <vector>

// For gtest: a text as it is, a callback as its descriptor.
namespace android {
inline void PrintTo(const String16& text, std::ostream* out) {
    *out << String8(text).string();
}
template <typename T>
void PrintTo(const sp<T>& callback, std::ostream* out) {
    PrintTo(IInterface::asBinder(callback)->getInterfaceDescriptor(), out);
}
}  // namespace android

namespace tarq::recording {

using android::sp;
using android::String16;
using android::binder::Status;
using com::tarq::radiokey::IRadioKeyCallback;
using com::tarq::rgbleds::IRgbLedsCallbacks;
using Texts = std::vector<String16>;

inline std::string called;  // the last method that ran in a stub, its arguments and results
inline Status answer;       // what every method returns

template <typename... Values>
Status call(const std::string& name, const Values&... values) {
    called = name + testing::PrintToString(std::make_tuple(values...));
    return answer;
}

struct HardwareInfo : com::tarq::hardwareInfo::BnHardwareInfoService {
    Status getHardwareInfo(Texts* items, bool* out) override {
        *items = {String16("wifi:null"), String16("tp:gt9")};
        return call(__func__, *items, *out = true);
    }
    Status isMatchHardwareInfo(const Texts& items, bool* out) override {
        return call(__func__, items, *out = true);
    }
    Status setOtaTimestamp(int64_t time) override { return call(__func__, time); }
};

struct RgbLeds : com::tarq::rgbleds::BnRgbLedsService {
    Status setRgbColor(int32_t id, int32_t color, bool* out) override {
        return call(__func__, id, color, *out = true);
    }
    Status setRgbBrightness(int32_t id, int32_t brightness, bool* out) override {
        return call(__func__, id, brightness, *out = false);
    }
    Status loadXmlFile(const String16& path, int32_t* out) override {
        return call(__func__, path, *out = -1);
    }
    Status stopLampEffect(int32_t* out) override { return call(__func__, *out = 4); }
    Status getRgbBrightness(int32_t id, int32_t* out) override {
        return call(__func__, id, *out = 5);
    }
    Status getRgbColor(int32_t id, int32_t* out) override {
        return call(__func__, id, *out = 0xFF8000);
    }
    Status setRgbEffect(int32_t id, int32_t type, int32_t color, int32_t brightness, int32_t cont,
                        int32_t val, int32_t* out) override {
        return call(__func__, id, type, color, brightness, cont, val, *out = 7);
    }
    Status setLedList(const std::vector<int32_t>& ids, int32_t color, int32_t brightness,
                      bool* out) override {
        return call(__func__, ids, color, brightness, *out = true);
    }
    Status registerRgbLedsCallbacks(const sp<IRgbLedsCallbacks>& value) override {
        return call(__func__, value);
    }
};

struct RgbLedsCallbacks : com::tarq::rgbleds::BnRgbLedsCallbacks {
    Status onValueChange(int32_t value) override { return call(__func__, value); }
};

struct Shell : com::tarq::shell::BnShellService {
    Status executeCommand(const String16& command, Texts* output, int32_t* out) override {
        *output = {String16("hi\n")};
        return call(__func__, command, *output, *out = 0);
    }
};

struct RadioKey : com::tarq::radiokey::BnRadioKeyService {
    Status getRssiDBm(int32_t* out) override { return call(__func__, *out = -70); }
    Status registerRadioKeyCallback(const sp<IRadioKeyCallback>& value) override {
        return call(__func__, value);
    }
    Status getChipStatus(int32_t* out) override { return call(__func__, *out = 3); }
    Status setRadiokeyFrequency(int32_t value) override { return call(__func__, value); }
};

struct RadioKeyCallback : com::tarq::radiokey::BnRadioKeyCallback {
    Status onClick(int32_t a, int32_t b, int32_t c, int32_t rssi) override {
        return call(__func__, a, b, c, rssi);
    }
};

}  // namespace tarq::recording
