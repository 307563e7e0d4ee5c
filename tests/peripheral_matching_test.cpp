// Which update packages fit a board, with the reasons that are logged.

#include <gmock/gmock.h>

#include <array>

#include "hardware_info/HardwareInfoService.h"
#include "hardware_info/peripheral_matching.h"
#include "tests/hardware_info_fixture.h"

using android::String16;
using std::string_literals::operator""s;
using testing::EndsWith;

static const std::string kFallback = "ro.vendor.ota_enter_timestamp_check";

// The board's touch panel tells that it is "gt9xx-5".
struct PeripheralMatching : PlainBoardTest {
    PeripheralMatching() { writeFile(file(kTp), "type:gt9xx\nid:5\n"); }

    // The reasons, without the table and the touch panel's probing, then "fits" or "refused".
    std::string match(const std::vector<std::string>& items) {
        std::vector<String16> list;
        for (const std::string& item : items) list.emplace_back(item.c_str(), item.size());
        bool fits = false;
        service.isMatchHardwareInfo(list, &fits);
        std::string text;
        for (const std::string& line : logged()) {
            if (line[0] != 'D' && line.rfind("I take tp info", 0) != 0) text += line + "\n";
            if (line == "I <<<hardware info Dump End") text.clear();
        }
        return text + (fits ? "fits" : "refused");
    }

    com::tarq::hardwareInfo::HardwareInfoService service;
};

static std::string refusedFor(const std::string& name) {
    return "I " + name + " flag is unmatch\nI skip hw timestamp check, beacause " + kFallback +
           " is not set to true\nrefused";
}

static std::string differs(const std::string& name, const std::string& board,
                           const std::string& package) {
    return "E isPeripheraloneByOneMatch:peripheralNameInited:" + board +
           " not match peripheralNameOta:" + package + "\nE isPeripheralMatch,typeName:" + name +
           "," + board + " inited," + package + " given\n";
}

TEST_F(PeripheralMatching, skipping_is_by_property_and_changes_nothing) {
    peripheralTable[0].matchState = 7;
    setPart(PeripheralType::WIFI, "rtl");
    board.setProperty("ro.vendor.ota_skip_hw_info_no_hwid", "true");
    EXPECT_EQ(match({}), "I skip  hw match,beacause not find overlay id(hw id)\nfits");
    boardIdentity.overlayId = 5;
    board.setProperty("ro.vendor.ota_skip_hw_info", "TRUE");
    EXPECT_FALSE(isSkipHw());
    board.setProperty("ro.vendor.ota_skip_hw_info", "true");
    EXPECT_EQ(match({""}), "I skip  hw match,beacause ro.vendor.ota_skip_hw_info=true\nfits");
    EXPECT_EQ(peripheralTable[0].matchState, 7);
}

TEST_F(PeripheralMatching, overlay_id_must_be_listed_when_the_board_has_one) {
    const std::string longest = std::string(61, '7') + ",3";
    const std::string noValue = "W an item without \":\" has no value: overlay_id\n";
    const std::string tooLong =
            "E overlay ids of 64 bytes are not compared, at most 63 are allowed\n";
    EXPECT_EQ(match({"overlay_id"}), noValue + "fits");
    boardIdentity.overlayId = 3;
    for (const std::string& ids : {"1,2*3"s, " 03x"s, longest})
        EXPECT_EQ(match({"overlay_id:" + ids}), "I isMatchoverlayId:1\nfits");
    for (const auto& [item, ids, before] : std::vector<std::array<std::string, 3>>{
                 {"overlay_id:13", "13", ""},
                 {"overlay_id", "", noValue},
                 {"overlay_id:" + longest + ",", longest + ",", tooLong}}) {
        EXPECT_EQ(match({item, "wifi"}), before + "I isMatchoverlayId:0\nE overlay ids(" + ids +
                                                 ") not include the one(3) on boards\nrefused");
    }
}

TEST_F(PeripheralMatching, package_must_name_every_part_of_the_board) {
    const std::string filler(101 - 10, 'x');
    const std::string refused = refusedFor("codec");
    const std::tuple<std::string, std::vector<std::string>, std::string> cases[] = {
            {"abc def", {"codec:xxabcxx,def"}, "fits"},
            {"abc,*def", {"codec:abcDEF"}, differs("codec", "abc,*def", "abcDEF") + refused},
            {"abc", {"Codec:abc", "codec :abc"}, refused},
            {"a:b", {"codec:x:a:b"}, "fits"},
            {"abc", {"codec:x", "codec:abc"}, differs("codec", "abc", "x") + "fits"},
            {"abc", {"codec:abc", "codec:x"}, differs("codec", "abc", "x") + refused},
            {" ,*", {"codec:"}, "fits"},
            {"abc", {"codec:ab\0c"s}, differs("codec", "abc", "ab") + refused},
            {"abc", {"codec:abc," + filler}, "fits"},
            {"abc",
             {"codec:abc", "codec:abc,," + filler},
             "E an item of 102 bytes is not compared, at most 101 are allowed: codec:abc,," +
                     filler + "\n" + refused}};
    for (const auto& [board, items, result] : cases) {
        setPart(PeripheralType::CODEC, board);
        EXPECT_EQ(match(items), result);
    }
}

TEST_F(PeripheralMatching, part_that_the_board_does_not_list_refuses_nothing) {
    EXPECT_TRUE(_isMatchHardwareInfo({String16("wifi:rtl"), String16("codec:null")}));
    const std::string text = loggedText();
    const std::string begin =
            "I service get match peripherals,peripherals given:\nI wifi:rtl\nI codec:null\n"
            "I service  hardwareInfo inited:\nI >>>hardware info Dump Begin\n";
    EXPECT_EQ(text.substr(0, begin.size()), begin);
    EXPECT_THAT(text, EndsWith("\nI <<<hardware info Dump End\nI isPeripheralMatch,"
                               "typeName:wifi,rtl given,null inited,add abiltiy...\n"));
    EXPECT_EQ(peripheralTable[0].matchState, 2);
    EXPECT_EQ(peripheralTable[1].matchState, 0);
    EXPECT_EQ(peripheralTable[10].matchState, 2);
}

TEST_F(PeripheralMatching, either_text_or_probe_is_enough) {
    const std::string is = "I isTpMatchByTpInfo: ";
    setPart(PeripheralType::TP, "ABC");
    for (const std::string value : {"X-1,gt9xx-5", ",gt9xx-5,"})
        EXPECT_EQ(match({"tp:" + value}), differs("tp", "ABC", value) + is + "match\nfits");
    for (const std::string value : {"gt9xx-5 ", "gt9xx-55", ""}) {
        EXPECT_EQ(match({"tp:" + value}),
                  differs("tp", "ABC", value) + is + "unmatch\n" + refusedFor("tp"));
    }
    EXPECT_EQ(match({"tp:ABC"}), is + "match\nfits");
    std::filesystem::remove_all(file(kTp));
    EXPECT_THAT(match({"tp:ABC"}), EndsWith("\nE Fail to get tpinfo\n" + is + "match\nfits"));
    EXPECT_THAT(match({"lcd:A-1"}), EndsWith("E Fail to get lcd info\nI isLcdMatchByHwId: "
                                             "unmatch\n" +
                                             refusedFor("tp")));
}

TEST_F(PeripheralMatching, mismatch_passes_if_the_time_is_later_than_all_of_the_boards_parts) {
    const auto record = [](const std::string& kind, const std::string& time) {
        return "I Peripheral Type:  " + kind + "\nI Earliest Support Time: " + time + "\n";
    };
    const std::string begin = "I >>>hardware timestamp Dump Begin\n";
    const std::string end = "I <<<hardware timestamp Dump End\nI otaTimeStamp Match ";
    const std::string later =
            end + "success: otaTimeStamp(101) later than  maxEarliestSupportTime(";
    const std::string noComma = "E Fail to parse " + kTimes + " because cannot find \",\"\nrefused";
    std::vector<std::pair<std::string, std::string>> cases = {
            {"--TP\ngt9xx-5,101", begin + record("TP", "101") + end +
                                          "failed: otaTimeStamp(101) earlier than  "
                                          "maxEarliestSupportTime(101)\nrefused"},
            {"x,1\n,-9\n--TP\ngt9xx-5, \t100x\r\ngt9xx-5,1",
             begin + record("", "-9") + record("TP", "100") + record("TP", "1") + later +
                     "100)\nfits"},
            {"--TP\ngt9xx-5,\n", "E Fail to get timestamp in " + kTimes + "\n" + begin +
                                         record("TP", "0") + later + "0)\nfits"},
            {"--TP\ngt911-1,900\ngt9xx-5 , 900\n",
             "I otaTimeStamp Match success: cannot find the timestamps of the board peripherals "
             "in " + kTimes +
                     ", default match success\nfits"},
            {"--TP\ngt9xx-5,100\n\n", noComma},
            {"-\n", noComma},
            {"--\n", "E Fail to find PeripheralType after \"--\" in " + kTimes + "\nrefused"},
            {"--TP\r\n", "E Invalid Peripheral Type: TP\r\nE Fail to find TP\r in borad\nrefused"}};
    for (const std::string kind : {"WIFI", "CODEC", "INTERNAL_CAMERA", "USB_CAMERA", "BT", "SWITCH",
                                   "EMMC", "LED_IC", "KEYBOARD_IC"}) {
        cases.emplace_back("--TP\ngt9xx-5,1\n--" + kind,
                           "E Fail to find " + kind + " in borad\nrefused");
    }
    setPart(PeripheralType::CODEC, "abc");
    board.setProperty(kFallback, "true");
    for (const int64_t time : {INT64_MIN, int64_t{101}}) service.setOtaTimestamp(time);
    for (const auto& [content, result] : cases) {
        writeFile(file(kTimes), content);
        EXPECT_EQ(match({}),
                  "I codec flag is unmatch\nI get timestamp info from " + kTimes + "\n" + result);
    }
}
