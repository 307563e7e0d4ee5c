// The contract with every application: descriptors, codes, flags and bytes of the six interfaces.
// Each call goes through the generated proxy and the generated stub, and what passes between them
// is compared with bytes written by hand.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/recording_stubs.h"
#include "tests/wire.h"

namespace {

using namespace android;          // NOLINT: this file is about nothing else
using namespace com::tarq;        // NOLINT
using namespace tarq::recording;  // NOLINT
using hardwareInfo::IHardwareInfoService;
using radiokey::IRadioKeyService;
using rgbleds::IRgbLedsService;
using shell::IShellService;
using tarq::wire::hex;
using tarq::wire::token;

// The reply of a stub that was sent a null where there must be none: the exception
// EX_NULL_POINTER (-4), no message, no stack trace.
constexpr char kNullPointer[] = "FC FF FF FF 00 00 00 00 00 00 00 00 00 00 00 00 ";
constexpr char kNoException[] = "00 00 00 00 ";

// Stands between proxy and stub, as the driver does, and keeps what passes.
struct Tap : BBinder {
    explicit Tap(const sp<BBinder>& stub) : stub(stub) {}
    status_t onTransact(uint32_t newCode, const Parcel& data, Parcel* out,
                        uint32_t newFlags) override {
        code = newCode;
        flags = newFlags;
        request = hex(data);
        called.clear();
        status = stub->transact(code, data, out, flags);
        reply = hex(*out);
        return status;
    }

    const sp<BBinder> stub;
    uint32_t code = 0;
    uint32_t flags = 0;
    std::string request;
    status_t status = OK;
    std::string reply;
};

struct Interface {
    std::string descriptor;
    uint32_t lastCode;
    std::function<sp<BBinder>()> make;
};

template <typename Stub>
Interface interface(const char* descriptor, uint32_t lastCode) {
    return {descriptor, lastCode, [] { return sp<BBinder>(new Stub); }};
}

const Interface kHardwareInfo =
        interface<HardwareInfo>("com.tarq.hardwareInfo.IHardwareInfoService", 3);
const Interface kRgbLeds = interface<RgbLeds>("com.tarq.rgbleds.IRgbLedsService", 9);
const Interface kRgbLedsCallbacks =
        interface<RgbLedsCallbacks>("com.tarq.rgbleds.IRgbLedsCallbacks", 1);
const Interface kShell = interface<Shell>("com.tarq.shell.IShellService", 1);
const Interface kRadioKey = interface<RadioKey>("com.tarq.radiokey.IRadioKeyService", 4);
const Interface kRadioKeyCallback =
        interface<RadioKeyCallback>("com.tarq.radiokey.IRadioKeyCallback", 1);

// One method with known arguments. The bytes are what follows the token, and the status.
struct Method {
    const Interface& of;
    uint32_t code;
    uint32_t flags;
    std::string arguments;
    std::string results;
    std::string called;
    std::string returned;
    std::function<std::string(const sp<IBinder>&)> make;

    std::string name() const { return called.substr(0, called.find(' ')); }
    bool oneway() const { return flags == IBinder::FLAG_ONEWAY; }
    friend void PrintTo(const Method& method, std::ostream* out) { *out << method.name(); }
};

std::string outcome(const Status& status, const std::string& returned) {
    return status.isOk() ? returned : status.toString8().string();
}

template <typename I, typename F>
auto calling(F method) {
    return [method](const sp<IBinder>& remote) {
        return outcome(method(*interface_cast<I>(remote)), "");
    };
}

template <typename I, typename Out, typename F>
auto calling(F method) {
    return [method](const sp<IBinder>& remote) {
        Out out{};
        const Status status = method(*interface_cast<I>(remote), &out);
        return outcome(status, show(out));
    };
}

// clang-format off
const Method kMethods[] = {
    {kHardwareInfo, 1, 0, "",
     "01 00 00 00 " "02 00 00 00 "
     "09 00 00 00 77 00 69 00 66 00 69 00 3A 00 6E 00 75 00 6C 00 6C 00 00 00 "
     "06 00 00 00 74 00 70 00 3A 00 67 00 74 00 39 00 00 00 00 00 ",
     "getHardwareInfo", "true [wifi:null,tp:gt9]",
     calling<IHardwareInfoService, std::pair<bool, Texts>>(
             [](auto& s, auto* out) { return s.getHardwareInfo(&out->second, &out->first); })},
    {kHardwareInfo, 2, 0,
     "02 00 00 00 " "02 00 00 00 41 00 42 00 00 00 00 00 " "00 00 00 00 00 00 00 00 ",
     "01 00 00 00 ", "isMatchHardwareInfo [AB,]", "true",
     calling<IHardwareInfoService, bool>([](auto& s, auto* out) {
         return s.isMatchHardwareInfo({String16("AB"), String16("")}, out); })},
    {kHardwareInfo, 3, 0, "01 02 03 04 05 06 07 80 ", "",
     "setOtaTimestamp -9221395093405892095", "",
     calling<IHardwareInfoService>([](auto& s) { return s.setOtaTimestamp(-9221395093405892095); })},

    {kRgbLeds, 1, 0, "02 00 00 00 FF 00 00 00 ", "01 00 00 00 ", "setRgbColor 2 255", "true",
     calling<IRgbLedsService, bool>([](auto& s, auto* out) { return s.setRgbColor(2, 255, out); })},
    {kRgbLeds, 2, 0, "FF FF FF FF 09 00 00 00 ", "00 00 00 00 ", "setRgbBrightness -1 9", "false",
     calling<IRgbLedsService, bool>(
             [](auto& s, auto* out) { return s.setRgbBrightness(-1, 9, out); })},
    {kRgbLeds, 3, 0, "03 00 00 00 2F 00 65 00 66 00 00 00 ", "FF FF FF FF ", "loadXmlFile /ef", "-1",
     calling<IRgbLedsService, int32_t>(
             [](auto& s, auto* out) { return s.loadXmlFile(String16("/ef"), out); })},
    {kRgbLeds, 4, 0, "", "04 00 00 00 ", "stopLampEffect", "4",
     calling<IRgbLedsService, int32_t>([](auto& s, auto* out) { return s.stopLampEffect(out); })},
    {kRgbLeds, 5, 0, "03 00 00 00 ", "05 00 00 00 ", "getRgbBrightness 3", "5",
     calling<IRgbLedsService, int32_t>(
             [](auto& s, auto* out) { return s.getRgbBrightness(3, out); })},
    {kRgbLeds, 6, 0, "04 00 00 00 ", "00 80 FF 00 ", "getRgbColor 4", "16744448",
     calling<IRgbLedsService, int32_t>([](auto& s, auto* out) { return s.getRgbColor(4, out); })},
    {kRgbLeds, 7, 0,
     "01 00 00 00 02 00 00 00 03 00 00 00 04 00 00 00 05 00 00 00 06 00 00 00 ",
     "07 00 00 00 ", "setRgbEffect 1 2 3 4 5 6", "7",
     calling<IRgbLedsService, int32_t>(
             [](auto& s, auto* out) { return s.setRgbEffect(1, 2, 3, 4, 5, 6, out); })},
    {kRgbLeds, 8, 0, "03 00 00 00 01 00 00 00 02 00 00 00 07 00 00 00 " "00 01 00 00 08 00 00 00 ",
     "01 00 00 00 ", "setLedList [1,2,7] 256 8", "true",
     calling<IRgbLedsService, bool>(
             [](auto& s, auto* out) { return s.setLedList({1, 2, 7}, 256, 8, out); })},

    {kRgbLedsCallbacks, 1, IBinder::FLAG_ONEWAY, "40 00 00 00 ", "", "onValueChange 64", "",
     calling<IRgbLedsCallbacks>([](auto& s) { return s.onValueChange(64); })},

    {kShell, 1, 0, "02 00 00 00 69 00 64 00 00 00 00 00 ",
     "00 00 00 00 " "01 00 00 00 " "03 00 00 00 68 00 69 00 0A 00 00 00 ",
     "executeCommand id", "0 [hi\n]",
     calling<IShellService, std::pair<int32_t, Texts>>([](auto& s, auto* out) {
         return s.executeCommand(String16("id"), &out->second, &out->first); })},

    {kRadioKey, 1, 0, "", "BA FF FF FF ", "getRssiDBm", "-70",
     calling<IRadioKeyService, int32_t>([](auto& s, auto* out) { return s.getRssiDBm(out); })},
    {kRadioKey, 3, 0, "", "03 00 00 00 ", "getChipStatus", "3",
     calling<IRadioKeyService, int32_t>([](auto& s, auto* out) { return s.getChipStatus(out); })},
    {kRadioKey, 4, 0, "B1 01 00 00 ", "", "setRadiokeyFrequency 433", "",
     calling<IRadioKeyService>([](auto& s) { return s.setRadiokeyFrequency(433); })},

    {kRadioKeyCallback, 1, IBinder::FLAG_ONEWAY,
     "01 00 00 00 02 00 00 00 03 00 00 00 C4 FF FF FF ", "", "onClick 1 2 3 -60", "",
     calling<IRadioKeyCallback>([](auto& s) { return s.onClick(1, 2, 3, -60); })},
};
// clang-format on

// Sends bytes that no proxy of ours would send.
status_t send(const Interface& to, uint32_t code, const std::string& request, std::string* reply) {
    Parcel data;
    Parcel out;
    tarq::wire::fill(&data, request);
    called.clear();
    const status_t status = to.make()->transact(code, data, &out);
    *reply = hex(out);
    return status;
}

struct AidlMethod : testing::TestWithParam<Method> {};

TEST_P(AidlMethod, bytes_of_request_and_reply) {
    const Method& method = GetParam();
    const sp<Tap> tap = new Tap(method.of.make());
    EXPECT_EQ(method.make(tap), method.returned);
    EXPECT_EQ(tap->code, method.code);
    EXPECT_EQ(tap->flags, method.flags);
    EXPECT_EQ(tap->request, token(method.of.descriptor) + method.arguments);
    EXPECT_EQ(called, method.called);
    EXPECT_EQ(tap->status, OK);
    EXPECT_EQ(tap->reply, method.oneway() ? "" : kNoException + method.results);
}

TEST_P(AidlMethod, truncated_arguments_do_not_reach_it) {
    const Method& method = GetParam();
    constexpr size_t word = 12;  // four bytes as text
    for (size_t cut = 0; cut < method.arguments.size(); cut += word) {
        std::string reply;
        const std::string arguments = method.arguments.substr(0, cut);
        const status_t status =
                send(method.of, method.code, token(method.of.descriptor) + arguments, &reply);
        EXPECT_EQ(called, "") << arguments;
        if (status == OK) {
            EXPECT_EQ(reply, kNullPointer) << arguments;
        } else {  // BAD_VALUE: a count above what follows, which the device finds out later
            EXPECT_THAT(status, testing::AnyOf(NOT_ENOUGH_DATA, BAD_VALUE)) << arguments;
            EXPECT_EQ(reply, "") << arguments;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, AidlMethod, testing::ValuesIn(kMethods),
                         [](const auto& info) { return info.param.name(); });

// Makes every call that waits for an answer, with the stubs giving this one.
void expectReply(const Status& given, status_t status, const std::string& reply) {
    answer = given;
    for (const Method& method : kMethods) {
        if (method.oneway()) continue;
        const sp<Tap> tap = new Tap(method.of.make());
        EXPECT_EQ(method.make(tap), given.toString8().string()) << method.name();
        EXPECT_EQ(tap->status, status) << method.name();
        EXPECT_EQ(tap->reply, reply) << method.name();
    }
    answer = Status::ok();
}

TEST(AidlReply, refused_call_is_empty) {
    expectReply(Status::fromStatusT(-1), -1, "");
}

TEST(AidlReply, exception_comes_without_results) {
    expectReply(Status::fromExceptionCode(Status::EX_ILLEGAL_ARGUMENT, "AB"), OK,
                "FD FF FF FF 02 00 00 00 41 00 42 00 00 00 00 00 00 00 00 00 ");
}

const Interface* const kInterfaces[] = {&kHardwareInfo, &kRgbLeds,  &kRgbLedsCallbacks,
                                        &kShell,        &kRadioKey, &kRadioKeyCallback};

struct AidlInterface : testing::TestWithParam<const Interface*> {};

TEST_P(AidlInterface, stub_tells_its_descriptor) {
    const sp<BBinder> stub = GetParam()->make();
    Parcel data;
    Parcel reply;
    EXPECT_EQ(stub->transact(IBinder::INTERFACE_TRANSACTION, data, &reply), OK);
    EXPECT_EQ(hex(reply), tarq::wire::text(GetParam()->descriptor));
}

TEST_P(AidlInterface, only_its_own_token_is_accepted) {
    std::vector<std::string> requests = {"",
                                         "00 00 40 00 ",
                                         "00 00 40 00 FF FF FF FF ",
                                         token(""),
                                         token(GetParam()->descriptor.substr(1)),
                                         token(GetParam()->descriptor + "s")};
    for (const Interface* other : kInterfaces) {
        if (other != GetParam()) requests.push_back(token(other->descriptor));
    }
    for (const std::string& request : requests) {
        for (uint32_t code = 1; code <= GetParam()->lastCode; ++code) {
            std::string reply;
            EXPECT_EQ(send(*GetParam(), code, request, &reply), BAD_TYPE) << code << request;
            EXPECT_EQ(reply, "");
            EXPECT_EQ(called, "");
        }
    }
}

TEST_P(AidlInterface, codes_of_no_method_are_unknown) {
    for (const uint32_t code : {0u, GetParam()->lastCode + 1, 0x00FFFFFFu, 0xFFFFFFFFu}) {
        std::string reply;
        EXPECT_EQ(send(*GetParam(), code, token(GetParam()->descriptor), &reply),
                  UNKNOWN_TRANSACTION)
                << code;
        EXPECT_EQ(reply, "");
    }
}

INSTANTIATE_TEST_SUITE_P(All, AidlInterface, testing::ValuesIn(kInterfaces), [](const auto& info) {
    return info.param->descriptor.substr(info.param->descriptor.rfind('.') + 1);
});

// The two methods that take a callback, as bytes cannot say which object it is.
template <typename Service, typename Callback>
void registersCallbacks(const Interface& of, uint32_t code, const sp<Callback>& callback,
                        Status (Service::*method)(const sp<Callback>&), const char* name) {
    const std::string object = "85 2A 62 73 13 01 00 00 ";  // a binder of the sending process
    const sp<Tap> tap = new Tap(of.make());
    const sp<Service> proxy = interface_cast<Service>(sp<IBinder>(tap));
    EXPECT_TRUE(((*proxy).*method)(callback).isOk());
    EXPECT_EQ(tap->code, code);
    EXPECT_EQ(tap->flags, 0u);
    EXPECT_EQ(tap->request.find(token(of.descriptor) + object), 0u) << tap->request;
    EXPECT_EQ(called, name + (" " + show(callback)));
    EXPECT_EQ(tap->reply, kNoException);

    EXPECT_EQ(((*proxy).*method)(nullptr).exceptionCode(), Status::EX_NULL_POINTER);
    const std::string zeros = "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 ";
    EXPECT_EQ(tap->request, token(of.descriptor) + object + zeros);
    EXPECT_EQ(tap->reply, kNullPointer);
    EXPECT_EQ(called, "");

    std::string reply;  // bytes that claim to be an object
    EXPECT_EQ(send(of, code, token(of.descriptor) + object + "01 " + zeros.substr(3), &reply),
              BAD_TYPE);
    EXPECT_EQ(reply, "");
    EXPECT_EQ(called, "");
}

TEST(AidlCallbacks, led_callback_is_registered) {
    registersCallbacks(kRgbLeds, 9, sp<IRgbLedsCallbacks>(new RgbLedsCallbacks),
                       &IRgbLedsService::registerRgbLedsCallbacks, "registerRgbLedsCallbacks");
}

TEST(AidlCallbacks, key_callback_is_registered) {
    registersCallbacks(kRadioKey, 2, sp<IRadioKeyCallback>(new RadioKeyCallback),
                       &IRadioKeyService::registerRadioKeyCallback, "registerRadioKeyCallback");
}

TEST(AidlHostile, null_strings_are_answered_with_an_exception) {
    const std::string null = "FF FF FF FF ";
    const std::tuple<const Interface&, uint32_t, std::string> cases[] = {
            {kShell, 1, null}, {kRgbLeds, 3, null}, {kHardwareInfo, 2, "01 00 00 00 " + null}};
    for (const auto& [of, code, arguments] : cases) {
        std::string reply;
        EXPECT_EQ(send(of, code, token(of.descriptor) + arguments, &reply), OK);
        EXPECT_EQ(reply, kNullPointer);
        EXPECT_EQ(called, "");
    }
}

TEST(AidlConstants, key_service_is_registered_under_a_short_name) {
    EXPECT_EQ(IRadioKeyService::SERVICE_NAME(), String16("radiokey_service"));
}

}  // namespace
