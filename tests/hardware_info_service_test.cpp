// The service's methods, and the state behind them.
#include "hardware_info/HardwareInfoService.h"

#include <gmock/gmock.h>
#include <utils/String8.h>

#include "hardware_info/ota_timestamp.h"
#include "hardware_info/peripheral_list.h"
#include "tests/hardware_board.h"

using android::String16;
using android::String8;
using com::tarq::hardwareInfo::HardwareInfoService;

class HardwareInfoCalls : public HardwareBoard {
  protected:
    static void setPart(PeripheralType type, const std::string& name) {
        strcpy(peripheralTable[static_cast<size_t>(type)].value, name.c_str());
    }

    HardwareInfoService service;
    std::vector<String16> list;
    bool result = false;
};

TEST_F(HardwareInfoCalls, list_is_appended_in_table_order_and_logged_whole) {
    setPart(PeripheralType::TP, "gt9xx");
    setPart(PeripheralType::KEYBOARD_IC, " k\u00e4y ");
    boardIdentity.index = 3;
    boardIdentity.overlayId = 5;
    memset(boardIdentity.xmlHwVersion, 'v', sizeof(boardIdentity.xmlHwVersion));
    strcpy(boardIdentity.product, "demo_panel");
    list = {String16("before")};
    EXPECT_TRUE(service.getHardwareInfo(&list, &result).isOk());
    EXPECT_TRUE(result);
    Lines expected = {"before",
                      "wifi:null",
                      "codec:null",
                      "tp:gt9xx",
                      "internal_camera:null",
                      "usb_camera:null",
                      "bt:null",
                      "lcd:null",
                      "switch:null",
                      "emmc:null",
                      "led_ic:null",
                      "keyboard_ic: k\u00e4y "};
    EXPECT_EQ(list.back(), String16(u"keyboard_ic: k\u00e4y "));
    Lines items;
    for (const String16& item : list) items.emplace_back(String8(item).string());
    EXPECT_EQ(items, expected);
    for (std::string& item : expected) item.insert(0, "I ");
    expected.insert(expected.begin(),
                    "I service get peripherals(index=3,overlay id=5,xml hwVersions=" +
                            std::string(64, 'v') + ",product:demo_panel):");
    EXPECT_EQ(logged(), expected);
}

TEST_F(HardwareInfoCalls, item_of_100_bytes_is_fatal) {
    const std::string longest(94, 'x');  // "wifi:" and these are 99
    setPart(PeripheralType::WIFI, longest);
    service.getHardwareInfo(&list, &result);
    EXPECT_EQ(logged()[1], "I wifi:" + longest);

    setPart(PeripheralType::WIFI, longest + "x");
    const auto callWithTheUsualLog = [this] {
        tarq::host::setLogSink({});
        service.getHardwareInfo(&list, &result);
    };
    EXPECT_EXIT(callWithTheUsualLog(), testing::KilledBySignal(SIGABRT),
                "F HardwareInfoService: .*\"wifi:\" is 100 bytes long, at most 99 fit");
}

TEST_F(HardwareInfoCalls, last_timestamp_is_kept_and_no_package_accepted) {
    for (const int64_t time : {INT64_MIN, int64_t{7}}) {
        EXPECT_TRUE(service.setOtaTimestamp(time).isOk());
        EXPECT_EQ(otaTimestamp.load(), time);
    }
    result = true;
    EXPECT_TRUE(service.isMatchHardwareInfo({String16("tp:null")}, &result).isOk());
    EXPECT_FALSE(result);
    EXPECT_THAT(logged(), testing::ElementsAre(testing::StartsWith("E isMatchHardwareInfo: ")));
}
