// The contract with every application: descriptors, codes, flags and bytes of the six interfaces.
// Each call goes through the generated proxy and the generated stub, and what passes between them
// is compared with bytes written by hand.
#include <com/tarq/hardwareInfo/BnHardwareInfoService.h>
#include <com/tarq/radiokey/BnRadioKeyCallback.h>
#include <com/tarq/radiokey/BnRadioKeyService.h>
#include <com/tarq/rgbleds/BnRgbLedsCallbacks.h>
#include <com/tarq/rgbleds/BnRgbLedsService.h>
#include <com/tarq/shell/BnShellService.h>
#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

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

// One implementation of each interface that keeps how it was called, and answers with what a test
// asked for.
std::string called;  // the last method that ran in a stub, its arguments and results
Status answer;       // what every method returns

template <typename... Values>
Status call(const std::string& name, const Values&... values) {
    called = name + testing::PrintToString(std::make_tuple(values...));
    return answer;
}

struct HardwareInfo : hardwareInfo::BnHardwareInfoService {
    Status getHardwareInfo(Texts* items, bool* out) override {
        *items = {String16("wifi:null"), String16("tp:gt9")};
        return call(__func__, *items, *out = true);
    }
    Status isMatchHardwareInfo(const Texts& items, bool* out) override {
        return call(__func__, items, *out = true);
    }
    Status setOtaTimestamp(int64_t time) override { return call(__func__, time); }
};

struct RgbLeds : rgbleds::BnRgbLedsService {
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

struct RgbLedsCallbacks : rgbleds::BnRgbLedsCallbacks {
    Status onValueChange(int32_t value) override { return call(__func__, value); }
};

struct Shell : shell::BnShellService {
    Status executeCommand(const String16& command, Texts* output, int32_t* out) override {
        *output = {String16("hi\n")};
        return call(__func__, command, *output, *out = 0);
    }
};

struct RadioKey : radiokey::BnRadioKeyService {
    Status getRssiDBm(int32_t* out) override { return call(__func__, *out = -70); }
    Status registerRadioKeyCallback(const sp<IRadioKeyCallback>& value) override {
        return call(__func__, value);
    }
    Status getChipStatus(int32_t* out) override { return call(__func__, *out = 3); }
    Status setRadiokeyFrequency(int32_t value) override { return call(__func__, value); }
};

struct RadioKeyCallback : radiokey::BnRadioKeyCallback {
    Status onClick(int32_t a, int32_t b, int32_t c, int32_t rssi) override {
        return call(__func__, a, b, c, rssi);
    }
};

// The reply of a stub that was sent a null where there must be none: the exception
// EX_NULL_POINTER (-4), no message, no stack trace.
constexpr char kNullPointer[] = "FC FF FF FF 00 00 00 00 00 00 00 00 00 00 00 00 ";
constexpr char kNoException[] = "00 00 00 00 ";
// A binder of the sending process, without the 16 bytes that say which.
constexpr char kObject[] = "85 2A 62 73 13 01 00 00 ";

using Request = std::tuple<uint32_t, uint32_t, std::string>;  // code, flags, bytes
using Reply = std::tuple<status_t, std::string>;              // status, bytes

struct Interface {
    std::string descriptor;
    uint32_t lastCode;
    sp<BBinder> stub;

    std::string token() const { return tarq::wire::token(descriptor); }
};

const Interface kHardwareInfo{"com.tarq.hardwareInfo.IHardwareInfoService", 3, new HardwareInfo};
const Interface kRgbLeds{"com.tarq.rgbleds.IRgbLedsService", 9, new RgbLeds};
const Interface kLedCallbacks{"com.tarq.rgbleds.IRgbLedsCallbacks", 1, new RgbLedsCallbacks};
const Interface kShell{"com.tarq.shell.IShellService", 1, new Shell};
const Interface kRadioKey{"com.tarq.radiokey.IRadioKeyService", 4, new RadioKey};
const Interface kKeyCallback{"com.tarq.radiokey.IRadioKeyCallback", 1, new RadioKeyCallback};

// Stands between proxy and stub, as the driver does, and keeps what passes.
struct Tap : BBinder {
    explicit Tap(const Interface& of) : stub(of.stub) {}
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* out, uint32_t flags) override {
        request = {code, flags, hex(data)};
        called.clear();
        const status_t status = stub->transact(code, data, out, flags);
        reply = {status, hex(*out)};
        return status;
    }

    const sp<BBinder> stub;
    Request request;
    Reply reply;
};

// One method with known values: the bytes behind the token and behind the status, the name with
// arguments and results as both sides have them, and the call through a proxy.
struct Method {
    const Interface& of;
    uint32_t code;
    uint32_t flags;
    std::string arguments;
    std::string results;
    std::string text;
    std::function<std::string(const sp<IBinder>&)> make;

    std::string name() const { return text.substr(0, text.find('(')); }
    bool oneway() const { return flags == IBinder::FLAG_ONEWAY; }
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
     calling(&Leds::registerRgbLedsCallbacks, sp<IRgbLedsCallbacks>(new RgbLedsCallbacks))},
    {kLedCallbacks, 1, IBinder::FLAG_ONEWAY, "40 00 00 00 ", "", "onValueChange(64)",
     calling(&IRgbLedsCallbacks::onValueChange, 64)},
    {kShell, 1, 0, "02 00 00 00 69 00 64 00 00 00 00 00 ",
     "00 00 00 00 " "01 00 00 00 " "03 00 00 00 68 00 69 00 0A 00 00 00 ",
     "executeCommand(id, { hi\n }, 0)",
     calling(&shell::IShellService::executeCommand, String16("id"), Texts(), 1)},
    {kRadioKey, 1, 0, "", "BA FF FF FF ", "getRssiDBm(-70)", calling(&Key::getRssiDBm, 0)},
    {kRadioKey, 2, 0, kObject, "", "registerRadioKeyCallback(com.tarq.radiokey.IRadioKeyCallback)",
     calling(&Key::registerRadioKeyCallback, sp<IRadioKeyCallback>(new RadioKeyCallback))},
    {kRadioKey, 3, 0, "", "03 00 00 00 ", "getChipStatus(3)", calling(&Key::getChipStatus, 0)},
    {kRadioKey, 4, 0, "B1 01 00 00 ", "", "setRadiokeyFrequency(433)",
     calling(&Key::setRadiokeyFrequency, 433)},
    {kKeyCallback, 1, IBinder::FLAG_ONEWAY,
     "01 00 00 00 02 00 00 00 03 00 00 00 C4 FF FF FF ", "", "onClick(1, 2, 3, -60)",
     calling(&IRadioKeyCallback::onClick, 1, 2, 3, -60)},
};
// clang-format on

// Sends bytes that no proxy of ours would send, and that must not reach a method.
Reply send(const Interface& to, uint32_t code, const std::string& request) {
    Parcel data;
    Parcel out;
    tarq::wire::fill(&data, request);
    called.clear();
    const status_t status = to.stub->transact(code, data, &out);
    EXPECT_EQ(called, "") << code << " " << request;
    return {status, hex(out)};
}

TEST(AidlMethod, bytes_of_request_and_reply) {
    for (const Method& method : kMethods) {
        SCOPED_TRACE(method.name());
        const sp<Tap> tap = new Tap(method.of);
        EXPECT_EQ(method.name() + method.make(tap), method.text);
        EXPECT_EQ(called, method.text);
        auto& [code, flags, bytes] = tap->request;
        if (method.arguments == kObject) bytes.resize(bytes.size() - 48);  // 16 bytes
        EXPECT_EQ(code, method.code);
        EXPECT_EQ(flags, method.flags);
        EXPECT_EQ(bytes, method.of.token() + method.arguments);
        EXPECT_EQ(tap->reply, Reply(OK, method.oneway() ? "" : kNoException + method.results));
    }
}

TEST(AidlMethod, truncated_arguments_do_not_reach_it) {
    constexpr size_t word = 12;  // four bytes as text
    for (const Method& method : kMethods) {
        for (size_t cut = 0; cut < method.arguments.size(); cut += word) {
            const std::string request = method.of.token() + method.arguments.substr(0, cut);
            // BAD_VALUE: a count above what follows, which the device finds out later. BAD_TYPE:
            // half an object.
            EXPECT_THAT(send(method.of, method.code, request),
                        testing::AnyOf(Reply(OK, kNullPointer), Reply(NOT_ENOUGH_DATA, ""),
                                       Reply(BAD_VALUE, ""), Reply(BAD_TYPE, "")))
                    << method.name();
        }
    }
}

TEST(AidlReply, refusal_and_exception_come_without_results) {
    const std::pair<Status, Reply> cases[] = {
            {Status::fromStatusT(-1), {-1, ""}},
            {Status::fromExceptionCode(Status::EX_ILLEGAL_ARGUMENT, "AB"),
             {OK, "FD FF FF FF 02 00 00 00 41 00 42 00 00 00 00 00 00 00 00 00 "}}};
    for (const auto& [given, reply] : cases) {
        answer = given;
        for (const Method& method : kMethods) {
            if (method.oneway()) continue;
            const sp<Tap> tap = new Tap(method.of);
            EXPECT_EQ(method.make(tap), given.toString8().string()) << method.name();
            EXPECT_EQ(tap->reply, reply) << method.name();
        }
    }
    answer = Status::ok();
}

TEST(AidlInterface, names_are_fixed_and_only_its_own_token_and_codes_accepted) {
    EXPECT_EQ(Key::SERVICE_NAME(), String16("radiokey_service"));
    const Interface* const all[] = {&kHardwareInfo, &kRgbLeds,  &kLedCallbacks,
                                    &kShell,        &kRadioKey, &kKeyCallback};
    for (const Interface* of : all) {
        EXPECT_THAT(send(*of, IBinder::INTERFACE_TRANSACTION, ""),
                    Reply(OK, tarq::wire::text(of->descriptor)));
        for (uint32_t code = 1; code <= of->lastCode; ++code) {
            EXPECT_EQ(send(*of, code, ""), Reply(BAD_TYPE, ""));
            for (const Interface* other : all) {
                if (other == of) continue;
                EXPECT_EQ(send(*of, code, other->token()), Reply(BAD_TYPE, ""));
            }
        }
        for (const uint32_t code : {0U, of->lastCode + 1, 0x00FFFFFFU, 0xFFFFFFFFU}) {
            EXPECT_EQ(send(*of, code, of->token()), Reply(UNKNOWN_TRANSACTION, "")) << code;
        }
    }
}

TEST(AidlHostile, nulls_are_answered_with_an_exception_and_false_objects_refused) {
    const std::string null = "FF FF FF FF ";
    const std::string zeros = "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 ";
    const std::string claimed = "01 " + zeros.substr(3);
    const Reply exception(OK, kNullPointer);
    const std::tuple<const Interface&, uint32_t, std::string, Reply> cases[] = {
            {kShell, 1, null, exception},
            {kHardwareInfo, 2, "01 00 00 00 " + null, exception},
            {kRgbLeds, 3, null, exception},
            {kRgbLeds, 9, kObject + zeros, exception},
            {kRadioKey, 2, kObject + zeros, exception},
            {kRgbLeds, 9, kObject + claimed, Reply(BAD_TYPE, "")},
            {kRadioKey, 2, kObject + claimed, Reply(BAD_TYPE, "")}};
    for (const auto& [of, code, arguments, reply] : cases) {
        EXPECT_EQ(send(of, code, of.token() + arguments), reply);
    }
}

}  // namespace
