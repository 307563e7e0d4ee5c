// The service as a caller sees it: transactions to the object in this process.
#include <gmock/gmock.h>

#include "hardware_info/HardwareInfoService.h"
#include "hardware_info/ota_timestamp.h"
#include "hardware_info/peripheral_list.h"
#include "tests/hardware_board.h"

using android::Parcel;
using android::sp;
using android::status_t;
using android::String16;
using com::tarq::hardwareInfo::HardwareInfoService;
using testing::ElementsAre;

class HardwareInfoBinder : public HardwareBoard {
  protected:
    enum Code { GET = 1, MATCH = 2, SET_TIME = 3 };

    HardwareInfoBinder() { request.writeInterfaceToken(HardwareInfoService::descriptor); }
    status_t call(uint32_t code) { return service->transact(code, request, &reply); }
    static void setPart(PeripheralType type, const std::string& name) {
        strcpy(peripheralTable[static_cast<size_t>(type)].value, name.c_str());
    }

    sp<HardwareInfoService> service = new HardwareInfoService;
    Parcel request;
    Parcel reply;
};

TEST_F(HardwareInfoBinder, list_has_eleven_items_in_table_order) {
    setPart(PeripheralType::TP, "gt9xx");
    setPart(PeripheralType::KEYBOARD_IC, " k\xc3\xa4y ");
    ASSERT_EQ(call(GET), android::OK);
    EXPECT_EQ(reply.readInt32(), 0);
    EXPECT_TRUE(reply.readBool());
    std::vector<String16> items;
    ASSERT_EQ(reply.readString16Vector(&items), android::OK);
    EXPECT_THAT(items,
                ElementsAre(String16("wifi:null"), String16("codec:null"), String16("tp:gt9xx"),
                            String16("internal_camera:null"), String16("usb_camera:null"),
                            String16("bt:null"), String16("lcd:null"), String16("switch:null"),
                            String16("emmc:null"), String16("led_ic:null"),
                            String16(u"keyboard_ic: k\u00e4y ")));
    EXPECT_EQ(reply.dataAvail(), 0U);
}

TEST_F(HardwareInfoBinder, list_is_appended_to_and_logged_whole) {
    boardIdentity.index = 3;
    boardIdentity.overlayId = 5;
    memset(boardIdentity.xmlHwVersion, 'v', sizeof(boardIdentity.xmlHwVersion));
    strcpy(boardIdentity.product, "demo_panel");
    std::vector<String16> list = {String16("before")};
    EXPECT_TRUE(_getHardwareInfo(&list));
    EXPECT_EQ(list.size(), 12U);
    EXPECT_THAT(
            logged(),
            ElementsAre("I service get peripherals(index=3,overlay id=5,xml hwVersions=" +
                                std::string(64, 'v') + ",product:demo_panel):",
                        "I before", "I wifi:null", "I codec:null", "I tp:null",
                        "I internal_camera:null", "I usb_camera:null", "I bt:null", "I lcd:null",
                        "I switch:null", "I emmc:null", "I led_ic:null", "I keyboard_ic:null"));
}

TEST_F(HardwareInfoBinder, item_of_100_bytes_is_fatal) {
    const std::string longest(94, 'x');  // "wifi:" and these are 99
    setPart(PeripheralType::WIFI, longest);
    ASSERT_EQ(call(GET), android::OK);
    EXPECT_EQ(logged()[1], "I wifi:" + longest);

    setPart(PeripheralType::WIFI, longest + "x");
    const auto callWithTheUsualLog = [this] {
        tarq::host::setLogSink({});
        call(GET);
    };
    EXPECT_EXIT(callWithTheUsualLog(), testing::KilledBySignal(SIGABRT),
                "F HardwareInfoService: .*\"wifi:\" is 100 bytes long, at most 99 fit");
}

TEST_F(HardwareInfoBinder, last_timestamp_is_kept) {
    for (const int64_t time : {int64_t{1700000000}, INT64_MIN, int64_t{0}, int64_t{7}}) {
        Parcel data;
        data.writeInterfaceToken(HardwareInfoService::descriptor);
        data.writeInt64(time);
        ASSERT_EQ(service->transact(SET_TIME, data, &reply), android::OK);
        EXPECT_EQ(otaTimestamp.load(), time);
    }
    request.writeInt32(8);  // half of one
    EXPECT_EQ(call(SET_TIME), android::NOT_ENOUGH_DATA);
    EXPECT_EQ(otaTimestamp.load(), 7);
}

TEST_F(HardwareInfoBinder, no_package_is_accepted) {
    request.writeString16Vector({String16("tp:null")});
    ASSERT_EQ(call(MATCH), android::OK);
    EXPECT_EQ(reply.readInt32(), 0);
    EXPECT_FALSE(reply.readBool());
    EXPECT_THAT(logged(), ElementsAre(testing::StartsWith("E isMatchHardwareInfo: ")));
}
