// What the board says of itself, in properties and in its description file, and what becomes of it.
#include <gmock/gmock.h>

#include <set>

#include "hardware_info/board_identity.h"
#include "hardware_info/description_loader.h"
#include "hardware_info/entire_file.h"
#include "hardware_info/peripheral_list.h"
#include "tests/hardware_board.h"

static const std::string kPath = "/vendor/etc/hardwareInfo.xml";
static const std::string kError = "E Error opening xml file:" + kPath + ",err:";

class HardwareInfo : public HardwareBoard {
  protected:
    // What is logged while the file is loaded on a board with index 3.
    Lines load(const std::string& content, int32_t overlayId) {
        forget();
        writeFile(board() / ("root" + kPath), content);
        logged();
        loadDescription(3, overlayId);
        return logged();
    }
    // Product, overlay ids and version, then the rows that are not "null".
    static std::string state() {
        char identity[256];
        snprintf(identity, sizeof(identity), "%s|%.64s|%.64s", boardIdentity.product,
                 boardIdentity.xmlOverlayIds, boardIdentity.xmlHwVersion);
        std::string text = identity;
        for (const PeripheralEntry& entry : peripheralTable) {
            if (strcmp(entry.value, "null") == 0) continue;
            text += std::string(" ") + entry.name + "=" + entry.value;
        }
        return text;
    }
};

TEST_F(HardwareInfo, identity_comes_from_the_properties) {
    const std::string noIndex = "E not find index by ro.vendor.hardwareinfo_index,let index -1";
    const std::string noOverlay = "I overlay_id==0 || overlay_id==9,mean no overlay,change as -1";
    const std::string forced = "I index is -1, let overlay_id as -1,maybe no support hardware fw";
    const struct {
        const char *indexProperty, *overlayProperty;
        int index, storageId, overlayId;
        std::string beforeOverlay, behindOverlay;
    } cases[] = {{"", "", -1, -1, -1, noIndex, forced},
                 {"", "storageId-2_FindIdOK_overlayId-5-OK", -1, 2, 5, noIndex, forced},
                 {"3", "storageId-2_FindIdOK_overlayId-5-OK", 3, 2, 5, "", ""},
                 {"3", "storageId-2_FindIdOK_overlayId-9-OK", 3, 2, -1, noOverlay, ""},
                 {"abc", "storageId-0_FindIdOK_overlayId-0", 0, 0, -1, noOverlay, ""},
                 {"-2x", "storageId-+1_FindIdOK_overlayId--3x", -2, 1, -3, "", ""},
                 {"3", "storageId-7_FindId", 3, 7, -1, "", ""},
                 {"3", "StorageId-2_FindIdOK_overlayId-5-OK", 3, -1, -1, "", ""}};
    for (const auto& c : cases) {
        forget();
        writeFile(board() / "run/properties/ro.vendor.hardwareinfo_index", c.indexProperty);
        writeFile(board() / "run/properties/ro.boot.dtbo_overlay_st", c.overlayProperty);
        initHardwareInfo();
        Lines expected = {"I parse index prop,index:" + std::to_string(c.index), c.beforeOverlay,
                          "I parse dtbo st prop,get storage_id:" + std::to_string(c.storageId) +
                                  ",overlay_id:" + std::to_string(c.overlayId),
                          c.behindOverlay, kError + "No such file or directory\n"};
        expected.erase(std::remove(expected.begin(), expected.end(), ""), expected.end());
        Lines lines = logged();
        EXPECT_EQ(lines.size(), expected.size() + 18);  // the dump
        lines.resize(expected.size());
        EXPECT_EQ(lines, expected);
        EXPECT_EQ(boardIdentity.index, c.index);
        EXPECT_EQ(boardIdentity.overlayId, c.index == -1 ? -1 : c.overlayId);
    }
}

// A document with the board's variant on line 2 and what is inside it from line 3.
static std::string variant(const std::string& overlayIds, const std::string& inside = "") {
    return "<h product='p'>\n<hardwre_info index='3' overlay_id='" + overlayIds +
           "' hw_version='V1'>\n" + inside + "</hardwre_info></h>";
}
static std::string found(int overlayId, const std::string& ids, const std::string& version) {
    return "I index(3) element is found,overlay_id=" + std::to_string(overlayId) +
           ",read xml overlay id=" + ids + ",read xml hw_version=" + version;
}

TEST_F(HardwareInfo, description_of_the_boards_index_is_applied) {
    EXPECT_EQ(load(R"(<?xml version="1.0" encoding="utf-8"?>
<hardware product="demo_panel">
  <x><hardwre_info index="3"/></x>
  <hardwre_info index="3" overlay_id="1,5,7" hw_version="V1.2">
    <other/><hw Peripheral="tp">gt9xx</hw>
    <hw Peripheral="internal_camera"> gc5035 &amp; </hw>
  </hardwre_info>
  <hardwre_info index="4"/><hardware_info index="3"/>
</hardware>)",
                   5),
              (Lines{"I isMatchoverlayId:1", found(5, "1,5,7", "V1.2")}));
    EXPECT_EQ(state(), "demo_panel|1,5,7|V1.2 tp=gt9xx internal_camera= gc5035 & ");
}

TEST_F(HardwareInfo, later_variant_overwrites_earlier_one) {
    const Lines lines = load(R"(<h product="p">
<hardwre_info index="3" overlay_id="1" hw_version="A">
  <hw Peripheral="tp">a</hw><hw Peripheral="bt">a</hw></hardwre_info>
<hardwre_info index="3b" overlay_id="2" hw_version="B"><hw Peripheral="tp">b</hw></hardwre_info>
<hardwre_info index="3" overlay_id="" hw_version="C"/></h>)",
                             -1);
    EXPECT_EQ(lines, (Lines{found(-1, "1", "A"), found(-1, "2", "B"), found(-1, "", "C")}));
    EXPECT_EQ(state(), "p||C tp=b bt=a");
}

TEST_F(HardwareInfo, overlay_ids_are_compared_as_numbers) {
    for (const std::string ids : {"1 5", "1,5", "1*5", " ,*05x*"}) {
        EXPECT_EQ(load(variant(ids), 5)[0], "I isMatchoverlayId:1") << ids;
    }
    EXPECT_EQ(load(variant("15", "<hw Peripheral='tp'>a</hw>"), 5),
              (Lines{"I isMatchoverlayId:0",
                     "E ERR:index=3 is found,but  overlay id is not include, 5 in board,read 15",
                     found(5, "15", "V1")}));
    EXPECT_EQ(state(), "p|15|V1 tp=a");
}

TEST_F(HardwareInfo, mistakes_cost_only_themselves) {
    EXPECT_EQ(load(variant("5", R"(<hw Peripheral="WIFI">x</hw><hw Peripheral="tp"/>
<hw Peripheral="tp">  </hw><hw>y</hw><hw/><hw Peripheral="bt">z</hw>)"),
                   -1),
              (Lines{found(-1, "5", "V1"), "E ERR:(WIFI:x)init err", "E ERR:(tp:(null))init err",
                     "E ERR:(tp:(null))init err", "E ERR:((null):y)init err",
                     "E ERR:((null):(null))init err"}));
    EXPECT_EQ(state(), "p|5|V1 bt=z");

    EXPECT_EQ(load("<h>\n<hardwre_info/>\n<hardwre_info index='3'><hw Peripheral='tp'>a</hw>"
                   "</hardwre_info></h>",
                   5),
              (Lines{"E " + kPath + ":1: attribute product of the root element is missing",
                     "E " + kPath + ":2: attribute index of <hardwre_info> is missing",
                     "E " + kPath + ":3: attribute overlay_id of <hardwre_info> is missing",
                     "E " + kPath + ":3: attribute hw_version of <hardwre_info> is missing",
                     found(5, "(null)", "(null)")}));
    EXPECT_EQ(state(), "null|null|null tp=a");

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
    std::filesystem::remove(board() / ("root" + kPath));
    std::filesystem::create_directory(board() / ("root" + kPath));
    loadDescription(3, 5);
    EXPECT_EQ(logged(), Lines{kError + "Is a directory\n"});
}

TEST_F(HardwareInfo, entire_file_or_nothing) {
    std::string content(10000, 'x');  // more than is read at once, and bytes that end no text
    content.replace(4000, 3, {'\0', '\xff', '\n'});
    writeFile(board() / "root/proc/node", content);
    EXPECT_EQ(readEntireFile("/proc/node"), std::vector<uint8_t>(content.begin(), content.end()));
    EXPECT_TRUE(readEntireFile("/proc").empty());  // opens, but cannot be read
    EXPECT_EQ(logged(), Lines{});
    EXPECT_TRUE(readEntireFile("/proc/none").empty());
    EXPECT_EQ(logged(), Lines{"W Unable to open file: /proc/none"});
}

TEST_F(HardwareInfo, dump_shows_rows_then_identity) {
    load(texts(9), -1);
    boardIdentity.index = 3;
    dump_hardware();
    EXPECT_EQ(logged(),
              (Lines{"I >>>hardware info Dump Begin", "I wifi:null", "I codec:null", "I tp:null",
                     "I internal_camera:null", "I usb_camera:null", "I bt:null", "I lcd:null",
                     "I switch:null", "I emmc:null", "I led_ic:null", "I keyboard_ic:null",
                     "I hw overLayId:-1", "I read xml overLayId:5," + std::string(62, 'o'),
                     "I read xml hwVersion:" + std::string(64, 'v'), "I index:3", "I product:null",
                     "I <<<hardware info Dump End"}));
}

TEST_F(HardwareInfo, demo_panel_is_described_without_a_mistake) {
    const std::string content = readFile(TARQ_BOARDS "/demo_panel" + kPath);
    writeFile(board() / ("root" + kPath), content);
    std::set<std::string> states;
    std::vector<android::String16> list;
    for (const int32_t index : {1, 2, 3, 4}) {
        forget();
        loadDescription(index, index == 3 ? 5 : -1);
        states.insert(state());
        EXPECT_TRUE(_getHardwareInfo(&list));  // no item is too long
    }
    EXPECT_EQ(states.size(), 4U);
    const Lines lines = logged();
    EXPECT_THAT(lines, testing::Each(testing::StartsWith("I ")));
    EXPECT_THAT(lines, testing::Contains("I isMatchoverlayId:1"));
}
