// What the board says of itself, in properties and in its description file, what becomes of it, and
// what the service tells its callers.
#include <gmock/gmock.h>

#include "hardware_info/HardwareInfoService.h"
#include "hardware_info/board_identity.h"
#include "hardware_info/description_loader.h"
#include "hardware_info/entire_file.h"
#include "hardware_info/peripheral_list.h"
#include "tests/hardware_info_fixture.h"

using android::String16;
using Lines = std::vector<std::string>;

static const std::string kPath = "/vendor/etc/hardwareInfo.xml";
static const std::string kError = "E Error opening xml file:" + kPath + ",err:";

struct HardwareInfo : PlainBoardTest {
    // What is logged while the file is loaded on a board with index 3.
    Lines load(const std::string& content, int32_t overlayId) {
        forget();
        writeFile(file(kPath), content);
        loadDescription(3, overlayId);
        return logged();
    }
    // Product, overlay ids and version, then the rows that are not "null".
    static std::string state() {
        const BoardIdentity& id = boardIdentity;
        std::string text = id.product;
        for (const auto& field : {id.xmlOverlayIds, id.xmlHwVersion})
            text += "|" + std::string(field, strnlen(field, 64));
        for (const PeripheralEntry& entry : peripheralTable) {
            if (strcmp(entry.value, "null") == 0) continue;
            text += std::string(" ") + entry.name + "=" + entry.value;
        }
        return text;
    }

    com::tarq::hardwareInfo::HardwareInfoService service;
    std::vector<String16> list;
    bool result = false;
};

TEST_F(HardwareInfo, identity_comes_from_the_properties) {
    const std::string noOverlay = "I overlay_id==0 || overlay_id==9,mean no overlay,change as -1\n";
    const std::string noIndex = "E not find index by ro.vendor.hardwareinfo_index,let index -1\n";
    const std::string forced = "I index is -1, let overlay_id as -1,maybe no support hardware fw\n";
    const struct {
        const char *indexProperty, *overlayProperty;
        int index, storageId, overlayId;
        std::string reason;
    } cases[] = {{"", "", -1, -1, -1, ""},
                 {"", "storageId-2_FindIdOK_overlayId-5-OK", -1, 2, 5, ""},
                 {"3", "storageId-2_FindIdOK_overlayId-5-OK", 3, 2, 5, ""},
                 {"3", "storageId-2_FindIdOK_overlayId-9-OK", 3, 2, -1, noOverlay},
                 {"abc", "storageId-0_FindIdOK_overlayId-0", 0, 0, -1, noOverlay},
                 {"-2x", "storageId-+1_FindIdOK_overlayId--3x", -2, 1, -3, ""},
                 {"3", "storageId-7_FindId", 3, 7, -1, ""}};
    for (const auto& c : cases) {
        board.setProperty("ro.vendor.hardwareinfo_index", c.indexProperty);
        board.setProperty("ro.boot.dtbo_overlay_st", c.overlayProperty);
        initHardwareInfo();
        EXPECT_THAT(loggedText(),
                    testing::StartsWith(
                            "I parse index prop,index:" + std::to_string(c.index) + "\n" +
                            (c.index == -1 ? noIndex : "") + c.reason +
                            "I parse dtbo st prop,get storage_id:" + std::to_string(c.storageId) +
                            ",overlay_id:" + std::to_string(c.overlayId) + "\n" +
                            (c.index == -1 ? forced : "") + kError +
                            "No such file or directory\n\nI >>>hardware info Dump Begin\n"));
        EXPECT_EQ(boardIdentity.index, c.index);
        EXPECT_EQ(boardIdentity.overlayId, c.index == -1 ? -1 : c.overlayId);
    }
}

static std::string found(int overlayId, const std::string& ids, const std::string& version) {
    return "I index(3) element is found,overlay_id=" + std::to_string(overlayId) +
           ",read xml overlay id=" + ids + ",read xml hw_version=" + version;
}

TEST_F(HardwareInfo, variants_of_the_boards_index_are_applied_and_the_last_wins) {
    const std::string content = R"(<?xml version="1.0" encoding="utf-8"?>
<hardware product="demo_panel">
  <x><hardwre_info index="3"/></x><hardwre_info index="4"/><hardware_info index="3"/>
  <hardwre_info index="3" overlay_id="1*05" hw_version="V1.2">
    <other/><hw Peripheral="tp">gt9xx</hw>
    <hw Peripheral="internal_camera"> gc5035 &amp; </hw>
  </hardwre_info>
  <hardwre_info index="3b" overlay_id="15" hw_version="V2"><hw Peripheral="tp">b</hw></hardwre_info>
</hardware>)";
    EXPECT_EQ(load(content, 5),
              (Lines{"I isMatchoverlayId:1", found(5, "1*05", "V1.2"), "I isMatchoverlayId:0",
                     "E ERR:index=3 is found,but  overlay id is not include, 5 in board,read 15",
                     found(5, "15", "V2")}));
    EXPECT_EQ(state(), "demo_panel|15|V2 tp=b internal_camera= gc5035 & ");
}

TEST_F(HardwareInfo, mistakes_cost_only_themselves) {
    EXPECT_EQ(load(R"(<h>
<hardwre_info/>
<hardwre_info index="3"><hw Peripheral="WIFI">x</hw><hw Peripheral="tp"/>
<hw Peripheral="tp">  </hw><hw>y</hw><hw/><hw Peripheral="bt">z</hw></hardwre_info></h>)",
                   5),
              (Lines{"E " + kPath + ":1: attribute product of the root element is missing",
                     "E " + kPath + ":2: attribute index of <hardwre_info> is missing",
                     "E " + kPath + ":3: attribute overlay_id of <hardwre_info> is missing",
                     "E " + kPath + ":3: attribute hw_version of <hardwre_info> is missing",
                     found(5, "(null)", "(null)"), "E ERR:(WIFI:x)init err",
                     "E ERR:(tp:(null))init err", "E ERR:(tp:(null))init err",
                     "E ERR:((null):y)init err", "E ERR:((null):(null))init err"}));
    EXPECT_EQ(state(), "null|null|null bt=z");
    EXPECT_EQ(load("<!-- -->", 5), Lines{"E " + kPath + " has no element, so no entries"});
}

// All texts of a document, so many bytes beyond what is still taken whole.
static std::string texts(size_t beyond) {
    return "<h product='" + std::string(31 + beyond, 'p') +
           "'><hardwre_info index='3' overlay_id='5," + std::string(61 + beyond, 'o') +
           "' hw_version='" + std::string(64 + beyond, 'v') + "'>\n<hw Peripheral='tp'>" +
           std::string(127 + beyond, 't') + "</hw></hardwre_info></h>";
}

TEST_F(HardwareInfo, texts_are_taken_up_to_their_limits) {
    EXPECT_EQ(load(texts(0), 5)[0], "I isMatchoverlayId:1");
    EXPECT_EQ(state(), std::string(31, 'p') + "|5," + std::string(61, 'o') + "|" +
                               std::string(64, 'v') + " tp=" + std::string(127, 't'));

    const std::string ids = "5," + std::string(62, 'o');
    const auto tooLong = [](const std::string& what, size_t length) {
        return "E " + kPath + what + " is " + std::to_string(length) + " bytes long, at most " +
               std::to_string(length - 1) + " are allowed";
    };
    EXPECT_EQ(load(texts(1), 5),
              (Lines{tooLong(":1: attribute product of the root element", 32),
                     tooLong(":1: attribute overlay_id of <hardwre_info>", 64),
                     found(5, ids, std::string(65, 'v')), tooLong(":2: the text of <hw>", 128)}));
    EXPECT_EQ(state(), "null|" + ids + "|" + std::string(64, 'v'));
    EXPECT_EQ(load(texts(9), -1).size(), 3U);  // nothing to compare, so the overlay ids are cut
}

TEST_F(HardwareInfo, unreadable_file_is_one_error_line) {
    for (const char* content : {"", "<h product='p'>", "<h product='p'></x>", "<\xff\x01"}) {
        errno = ENOENT;  // an old error that has nothing to do with the file
        EXPECT_EQ(load(content, 5), Lines{kError + "Success\n"}) << content;
        EXPECT_EQ(state(), "null|null|null");
    }
}

TEST_F(HardwareInfo, entire_file_or_nothing) {
    std::string content(10000, 'x');  // more than is read at once, and bytes that end no text
    content.replace(4000, 3, {'\0', '\xff', '\n'});
    writeFile(file("/proc/node"), content);
    EXPECT_EQ(readEntireFile("/proc/node"), std::vector<uint8_t>(content.begin(), content.end()));
    EXPECT_TRUE(readEntireFile("/proc").empty());  // opens, but cannot be read
    EXPECT_TRUE(readEntireFile("/proc/none").empty());
    EXPECT_EQ(logged(), Lines{"W Unable to open file: /proc/none"});
}

TEST_F(HardwareInfo, demo_panel_is_described_without_a_mistake) {
    writeFile(file(kPath), readFile(SOURCES "/host/board/boards/demo_panel" + kPath));
    for (const int32_t index : {1, 2, 3, 4}) {
        forget();
        loadDescription(index, index == 3 ? 5 : -1);
        EXPECT_STRNE(boardIdentity.xmlHwVersion, "null") << index;
        EXPECT_TRUE(_getHardwareInfo(&list));  // no item is too long
    }
    EXPECT_THAT(logged(), testing::Each(testing::StartsWith("I ")));
}

TEST_F(HardwareInfo, list_and_dump_show_the_rows_in_table_order) {
    const std::string longest(96, 'x');  // "tp:" and these are 99 bytes
    setPart(PeripheralType::TP, longest);
    setPart(PeripheralType::KEYBOARD_IC, " k\u00e4y ");
    boardIdentity.index = 3;
    boardIdentity.overlayId = 5;
    memset(boardIdentity.xmlOverlayIds, 'o', sizeof(boardIdentity.xmlOverlayIds));
    memset(boardIdentity.xmlHwVersion, 'v', sizeof(boardIdentity.xmlHwVersion));
    const std::string rows = "I wifi:null\nI codec:null\nI tp:" + longest +
                             "\nI internal_camera:null\nI usb_camera:null\n"
                             "I bt:null\nI lcd:null\nI switch:null\nI emmc:null\nI led_ic:null\n"
                             "I keyboard_ic: k\u00e4y \n";
    list = {String16("before")};
    EXPECT_TRUE(service.getHardwareInfo(&list, &result).isOk());
    EXPECT_TRUE(result);
    dump_hardware();
    EXPECT_EQ(loggedText(),
              "I service get peripherals(index=3,overlay id=5,xml hwVersions=" +
                      std::string(64, 'v') + ",product:null):\nI before\n" + rows +
                      "I >>>hardware info Dump Begin\n" + rows +
                      "I hw overLayId:5\nI read xml overLayId:" + std::string(64, 'o') +
                      "\nI read xml hwVersion:" + std::string(64, 'v') +
                      "\nI index:3\nI product:null\nI <<<hardware info Dump End\n");
    EXPECT_EQ(list.size(), 1 + kPeripheralCount);
}

TEST_F(HardwareInfo, item_of_100_bytes_is_fatal) {
    setPart(PeripheralType::TP, std::string(97, 'x'));
    const auto callWithTheUsualLog = [this] {
        tarq::host::setLogSink({});
        service.getHardwareInfo(&list, &result);
    };
    EXPECT_EXIT(callWithTheUsualLog(), testing::KilledBySignal(SIGABRT),
                "F HardwareInfoService: .*\"tp:\" is 100 bytes long, at most 99 fit");
}
