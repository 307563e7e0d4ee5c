// Which update packages fit a board, with the reasons that are logged.
#include "hardware_info/peripheral_matching.h"

#include <gmock/gmock.h>

#include <array>
#include <tuple>

#include "hardware_info/HardwareInfoService.h"
#include "hardware_info/ota_timestamp.h"
#include "hardware_info/timestamp_check.h"
#include "tests/hardware_info_fixture.h"

using android::String16;
using std::string_literals::operator""s;
using testing::EndsWith;

static const std::string kTp = "/sys/class/tpinfo/tpinfo_ic_info";
static const std::string kTimes = "/vendor/etc/hardware_timestamp.txt";
static const std::string kFallback = "ro.vendor.ota_enter_timestamp_check";

// The board's touch panel tells that it is "gt9xx-5".
struct PeripheralMatching : PlainBoardTest {
    PeripheralMatching() { writeFile(file(kTp), "type:gt9xx\nid:5\n"); }

    // Without what the touch panel probe says of its own work.
    std::string reasons() {
        std::string text;
        for (const std::string& line : logged()) {
            if (line[0] != 'D' && line.rfind("I take tp info", 0) != 0) text += line + "\n";
        }
        return text;
    }
    // The reasons, then "fits" or "refused".
    std::string match(const std::vector<std::string>& items) {
        std::vector<String16> list;
        for (const std::string& item : items) list.emplace_back(item.c_str(), item.size());
        bool fits = false;
        com::tarq::hardwareInfo::HardwareInfoService().isMatchHardwareInfo(list, &fits);
        const std::string text = reasons() + (fits ? "fits" : "refused");
        const std::string dumped = "<<<hardware info Dump End\n";
        const size_t dump = text.find(dumped);
        return dump == text.npos ? text : text.substr(dump + dumped.size());
    }
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
    setProperty("ro.vendor.ota_skip_hw_info_no_hwid", "true");
    EXPECT_EQ(match({}), "I skip  hw match,beacause not find overlay id(hw id)\nfits");
    boardIdentity.overlayId = 5;
    setProperty("ro.vendor.ota_skip_hw_info", "TRUE");
    EXPECT_FALSE(isSkipHw());
    setProperty("ro.vendor.ota_skip_hw_info", "true");
    EXPECT_EQ(match({""}), "I skip  hw match,beacause ro.vendor.ota_skip_hw_info=true\nfits");
    EXPECT_EQ(peripheralTable[0].matchState, 7);
}

TEST_F(PeripheralMatching, overlay_id_must_be_listed_when_the_board_has_one) {
    const std::string longest = std::string(61, '7') + ",3";
    const std::string none = "W an item without \":\" has no value: overlay_id\n";
    const std::string tooLong =
            "E overlay ids of 64 bytes are not compared, at most 63 are allowed\n";
    for (const std::string& ids : {"1,2*3"s, " 03x"s, longest}) {
        boardIdentity.overlayId = 3;
        EXPECT_EQ(match({"overlay_id:" + ids}), "I isMatchoverlayId:1\nfits");
    }
    for (const auto& [item, ids, before] : std::vector<std::array<std::string, 3>>{
                 {"overlay_id:13", "13", ""},
                 {"overlay_id", "", none},
                 {"overlay_id:" + longest + ",", longest + ",", tooLong}}) {
        boardIdentity.overlayId = 3;
        EXPECT_EQ(match({item, "wifi"}), before + "I isMatchoverlayId:0\nE overlay ids(" + ids +
                                                 ") not include the one(3) on boards\nrefused");
        boardIdentity.overlayId = -1;
        EXPECT_EQ(match({item}), (before == none ? none : "") + "fits");
    }
}

TEST_F(PeripheralMatching, package_must_name_every_part_of_the_board) {
    const std::string filler(101 - 10, 'x');
    const std::string refused = refusedFor("codec");
    const std::tuple<std::string, std::vector<std::string>, std::string> cases[] = {
            {"null", {}, "fits"},
            {"abc def", {"codec:xxabcxx,def"}, "fits"},
            {"abc,*def", {"codec:abc"}, differs("codec", "abc,*def", "abc") + refused},
            {"abc", {"codec:ABC"}, differs("codec", "abc", "ABC") + refused},
            {"abc", {"Codec:abc", "codec :abc"}, refused},
            {"a:b", {"codec:x:a:b"}, "fits"},
            {"abc", {"codec:x", "codec:abc"}, differs("codec", "abc", "x") + "fits"},
            {"abc", {"codec:abc", "codec:x"}, differs("codec", "abc", "x") + refused},
            {" ,*", {"codec:"}, "fits"},
            {"abc", {"codec:ab\0c"s}, differs("codec", "abc", "ab") + refused},
            {"abc",
             {"codec"},
             "W an item without \":\" has no value: codec\n" + differs("codec", "abc", "") +
                     refused},
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
    for (const std::string value : {"X-1,gt9xx-5", ",gt9xx-5,"}) {
        EXPECT_EQ(match({"tp:" + value}), differs("tp", "ABC", value) + is + "match\nfits");
    }
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

TEST_F(PeripheralMatching, time_must_be_later_than_all_of_the_boards_parts) {
    const auto record = [](const std::string& time, const std::string& kind = "TP") {
        return "I Peripheral Type:  " + kind + "\nI Earliest Support Time: " + time + "\n";
    };
    const auto verdict = [](const std::string& records, const std::string& text) {
        return "I >>>hardware timestamp Dump Begin\n" + records +
               "I <<<hardware timestamp Dump End\nI otaTimeStamp Match " + text;
    };
    const auto later = [&](const std::string& records, const std::string& than) {
        return verdict(records, "success: otaTimeStamp(101) later than  maxEarliestSupportTime(" +
                                        than + ")\nyes");
    };
    const std::string earlier =
            "failed: otaTimeStamp(101) earlier than  maxEarliestSupportTime(101)\nno";
    const std::string nothing =
            "I otaTimeStamp Match success: cannot find the timestamps of the board peripherals "
            "in " +
            kTimes + ", default match success\nyes";
    const std::string noComma = "E Fail to parse " + kTimes + " because cannot find \",\"\nno";
    const std::string noTime = "E Fail to get timestamp in " + kTimes + "\n";
    const std::pair<std::string, std::string> cases[] = {
            {"--TP\ngt9xx-5,100\n", later(record("100"), "100")},
            {"--TP\ngt9xx-5,101", verdict(record("101"), earlier)},
            {"--TP\ngt9xx-5,1\ngt9xx-5, \t7x\r\n--TP\ngt9xx-5,-3\n",
             later(record("1") + record("7") + record("-3"), "7")},
            {"--TP\ngt9xx-5,\n", noTime + later(record("0"), "0")},
            {"x,1\n,99\n", later(record("99", ""), "99")},
            {"--TP\ngt911-1,900\ngt9xx-5 , 900\n", nothing},
            {"--TP\ngt9xx-5,100\n\n", noComma},
            {"-\n", noComma},
            {"--\n", "E Fail to find PeripheralType after \"--\" in " + kTimes + "\nno"},
            {"--TP\ngt9xx-5,1\n--WIFI\n", "E Fail to find WIFI in borad\nno"},
            {"--CODEC\n", "E Fail to find CODEC in borad\nno"},
            {"--USB_CAMERA", "E Fail to find USB_CAMERA in borad\nno"},
            {"--BT\n", "E Fail to find BT in borad\nno"},
            {"--SWITCH\n", "E Fail to find SWITCH in borad\nno"},
            {"--EMMC\n", "E Fail to find EMMC in borad\nno"},
            {"--LED_IC\n", "E Fail to find LED_IC in borad\nno"},
            {"--KEYBOARD_IC\n", "E Fail to find KEYBOARD_IC in borad\nno"},
            {"--TP\r\n", "E Invalid Peripheral Type: TP\r\nE Fail to find TP\r in borad\nno"},
            {"--INTERNAL_CAMERA\n", "E Fail to find INTERNAL_CAMERA in borad\nno"}};
    for (const auto& [content, result] : cases) {
        writeFile(file(kTimes), content);
        const bool isLater = _isLaterTimestamp(101);
        EXPECT_EQ(reasons() + (isLater ? "yes" : "no"),
                  "I get timestamp info from " + kTimes + "\n" + result);
    }
}

TEST_F(PeripheralMatching, mismatch_falls_back_to_the_time) {
    setPart(PeripheralType::CODEC, "abc");
    setProperty(kFallback, "true");
    otaTimestamp = 101;
    for (const auto& [time, result] :
         {std::pair{"100", "(100)\nfits"}, {"101", "(101)\nrefused"}}) {
        writeFile(file(kTimes), "--TP\ngt9xx-5,"s + time);
        EXPECT_THAT(match({}),
                    testing::AllOf(testing::StartsWith("I codec flag is unmatch\nI get "),
                                   EndsWith(result)));
    }
}
