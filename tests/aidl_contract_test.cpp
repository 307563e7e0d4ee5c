// The contract with every application: descriptors, codes, flags and bytes of the six interfaces.
// Each generated proxy talks to a stand-in that keeps the request and answers with bytes written by
// hand. The stubs come from the same files; what they read is the other end of the same bytes.
#include <com/tarq/hardwareInfo/BpHardwareInfoService.h>
#include <com/tarq/radiokey/BnRadioKeyCallback.h>
#include <com/tarq/radiokey/BpRadioKeyService.h>
#include <com/tarq/rgbleds/BnRgbLedsCallbacks.h>
#include <com/tarq/rgbleds/BpRgbLedsService.h>
#include <com/tarq/shell/BpShellService.h>
#include <gmock/gmock.h>

#include <type_traits>

#include "tests/wire.h"

// For gtest: a text as it is, a callback as its descriptor.
namespace android {
static void PrintTo(const String16& text, std::ostream* out) {
    *out << String8(text).string();
}
template <typename T>
void PrintTo(const sp<T>& callback, std::ostream* out) {
    PrintTo(IInterface::asBinder(callback)->getInterfaceDescriptor(), out);
}
}  // namespace android

namespace {

using namespace android;    // NOLINT: this file is about nothing else
using namespace com::tarq;  // NOLINT
using binder::Status;
using radiokey::IRadioKeyCallback;
using rgbleds::IRgbLedsCallbacks;
using Hardware = hardwareInfo::IHardwareInfoService;
using Key = radiokey::IRadioKeyService;
using Leds = rgbleds::IRgbLedsService;
using tarq::wire::hex;
using Texts = std::vector<String16>;

struct LedCallbacks : rgbleds::BnRgbLedsCallbacks {
    Status onValueChange(int32_t) override { return Status::ok(); }
};

struct KeyCallback : radiokey::BnRadioKeyCallback {
    Status onClick(int32_t, int32_t, int32_t, int32_t) override { return Status::ok(); }
};

// Stands for the service at the other end.
struct Remote : BBinder {
    explicit Remote(std::string bytes) : reply(std::move(bytes)) {}
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* out, uint32_t flags) override {
        request = {code, flags, hex(data)};
        tarq::wire::fill(out, reply);
        return OK;
    }

    const std::string reply;
    std::tuple<uint32_t, uint32_t, std::string> request;  // code, flags, bytes
};

// A binder of the sending process, without the 16 bytes that say which.
constexpr char kObject[] = "85 2A 62 73 13 01 00 00 ";

// One method with known values: the bytes behind the token and behind the status, and the call
// with its name, its arguments and then its results as the caller has them.
struct Method {
    std::string descriptor;
    uint32_t code;
    uint32_t flags;
    std::string arguments;
    std::string results;
    std::string text;
    std::function<std::string(const sp<IBinder>&)> make;
};

template <typename Parameter, typename Value>
Parameter pass(Value& value) {
    if constexpr (std::is_pointer_v<Parameter>) {
        return &value;
    } else {
        return value;
    }
}

// values: the arguments, then what the results are before the call. Gives all of them after it, or
// what went wrong.
template <typename I, typename... Parameters, typename... Values>
auto calling(Status (I::*method)(Parameters...), Values... values) {
    return [=](const sp<IBinder>& remote) mutable {
        const sp<I> proxy = interface_cast<I>(remote);
        const Status status = ((*proxy).*method)(pass<Parameters>(values)...);
        return status.isOk() ? testing::PrintToString(std::make_tuple(values...))
                             : status.toString8().string();
    };
}

constexpr char kHardwareInfo[] = "com.tarq.hardwareInfo.IHardwareInfoService";
constexpr char kRgbLeds[] = "com.tarq.rgbleds.IRgbLedsService";
constexpr char kLedCallbacks[] = "com.tarq.rgbleds.IRgbLedsCallbacks";
constexpr char kShell[] = "com.tarq.shell.IShellService";
constexpr char kRadioKey[] = "com.tarq.radiokey.IRadioKeyService";
constexpr char kKeyCallback[] = "com.tarq.radiokey.IRadioKeyCallback";

// clang-format off
const Method kMethods[] = {
    {kHardwareInfo, 1, 0, "",
     "01 00 00 00 " "02 00 00 00 "
     "09 00 00 00 77 00 69 00 66 00 69 00 3A 00 6E 00 75 00 6C 00 6C 00 00 00 "
     "06 00 00 00 74 00 70 00 3A 00 67 00 74 00 39 00 00 00 00 00 ",
     "getHardwareInfo({ wifi:null, tp:gt9 }, true)",
     calling(&Hardware::getHardwareInfo, Texts(), false)},
    {kHardwareInfo, 2, 0,
     "02 00 00 00 " "02 00 00 00 41 00 42 00 00 00 00 00 " "00 00 00 00 00 00 00 00 ",
     "01 00 00 00 ", "isMatchHardwareInfo({ AB,  }, true)",
     calling(&Hardware::isMatchHardwareInfo, Texts{String16("AB"), String16("")}, false)},
    {kHardwareInfo, 3, 0, "01 02 03 04 05 06 07 80 ", "", "setOtaTimestamp(-9221395093405892095)",
     calling(&Hardware::setOtaTimestamp, -9221395093405892095)},
    {kRgbLeds, 1, 0, "02 00 00 00 FF 00 00 00 ", "01 00 00 00 ", "setRgbColor(2, 255, true)",
     calling(&Leds::setRgbColor, 2, 255, false)},
    {kRgbLeds, 2, 0, "FF FF FF FF 09 00 00 00 ", "00 00 00 00 ", "setRgbBrightness(-1, 9, false)",
     calling(&Leds::setRgbBrightness, -1, 9, true)},
    {kRgbLeds, 3, 0, "03 00 00 00 2F 00 65 00 66 00 00 00 ", "FF FF FF FF ", "loadXmlFile(/ef, -1)",
     calling(&Leds::loadXmlFile, String16("/ef"), 0)},
    {kRgbLeds, 4, 0, "", "04 00 00 00 ", "stopLampEffect(4)", calling(&Leds::stopLampEffect, 0)},
    {kRgbLeds, 5, 0, "03 00 00 00 ", "05 00 00 00 ", "getRgbBrightness(3, 5)",
     calling(&Leds::getRgbBrightness, 3, 0)},
    {kRgbLeds, 6, 0, "04 00 00 00 ", "00 80 FF 00 ", "getRgbColor(4, 16744448)",
     calling(&Leds::getRgbColor, 4, 0)},
    {kRgbLeds, 7, 0, "01 00 00 00 02 00 00 00 03 00 00 00 04 00 00 00 05 00 00 00 06 00 00 00 ",
     "07 00 00 00 ", "setRgbEffect(1, 2, 3, 4, 5, 6, 7)",
     calling(&Leds::setRgbEffect, 1, 2, 3, 4, 5, 6, 0)},
    {kRgbLeds, 8, 0, "03 00 00 00 01 00 00 00 02 00 00 00 07 00 00 00 " "00 01 00 00 08 00 00 00 ",
     "01 00 00 00 ", "setLedList({ 1, 2, 7 }, 256, 8, true)",
     calling(&Leds::setLedList, std::vector<int32_t>{1, 2, 7}, 256, 8, false)},
    {kRgbLeds, 9, 0, kObject, "", "registerRgbLedsCallbacks(com.tarq.rgbleds.IRgbLedsCallbacks)",
     calling(&Leds::registerRgbLedsCallbacks, sp<IRgbLedsCallbacks>(new LedCallbacks))},
    {kLedCallbacks, 1, IBinder::FLAG_ONEWAY, "40 00 00 00 ", "", "onValueChange(64)",
     calling(&IRgbLedsCallbacks::onValueChange, 64)},
    {kShell, 1, 0, "02 00 00 00 69 00 64 00 00 00 00 00 ",
     "00 00 00 00 " "01 00 00 00 " "03 00 00 00 68 00 69 00 0A 00 00 00 ",
     "executeCommand(id, { hi\n }, 0)",
     calling(&shell::IShellService::executeCommand, String16("id"), Texts(), 1)},
    {kRadioKey, 1, 0, "", "BA FF FF FF ", "getRssiDBm(-70)", calling(&Key::getRssiDBm, 0)},
    {kRadioKey, 2, 0, kObject, "", "registerRadioKeyCallback(com.tarq.radiokey.IRadioKeyCallback)",
     calling(&Key::registerRadioKeyCallback, sp<IRadioKeyCallback>(new KeyCallback))},
    {kRadioKey, 3, 0, "", "03 00 00 00 ", "getChipStatus(3)", calling(&Key::getChipStatus, 0)},
    {kRadioKey, 4, 0, "B1 01 00 00 ", "", "setRadiokeyFrequency(433)",
     calling(&Key::setRadiokeyFrequency, 433)},
    {kKeyCallback, 1, IBinder::FLAG_ONEWAY,
     "01 00 00 00 02 00 00 00 03 00 00 00 C4 FF FF FF ", "", "onClick(1, 2, 3, -60)",
     calling(&IRadioKeyCallback::onClick, 1, 2, 3, -60)},
};
// clang-format on

TEST(AidlContract, methods_have_these_codes_and_bytes_and_the_key_service_its_name) {
    EXPECT_EQ(Key::SERVICE_NAME(), String16("radiokey_service"));
    for (const Method& method : kMethods) {
        SCOPED_TRACE(method.text);
        const sp<Remote> remote = new Remote("00 00 00 00 " + method.results);
        EXPECT_EQ(method.text.substr(0, method.text.find('(')) + method.make(remote), method.text);
        auto& [code, flags, bytes] = remote->request;
        if (method.arguments == kObject) bytes.resize(bytes.size() - 48);  // 16 bytes
        EXPECT_EQ(code, method.code);
        EXPECT_EQ(flags, method.flags);
        EXPECT_EQ(bytes, tarq::wire::token(method.descriptor) + method.arguments);
    }
}

}  // namespace
