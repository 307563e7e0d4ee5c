// What the probes make of what drivers, the device tree and the description say.
#include <array>

#include "common/device_file.h"
#include "hardware_info/display_probe.h"
#include "hardware_info/touch_panel_probe.h"
#include "tests/hardware_info_fixture.h"

using std::string_literals::operator""s;

static const std::string kTpOnBus = "/sys/class/i2c-dev/i2c-2/device/2-005d/tp_ic_info";

struct Probes : PlainBoardTest {
    // What is logged, then the answer or "no".
    std::string outcome(const std::function<bool(std::string&)>& probe) {
        std::string output = "no";
        const bool found = probe(output);
        return loggedText() + (found || output == "no" ? output : "a changed output");
    }
    std::string levelOfPin1() {
        int32_t level = 7;
        const bool found = getGpioValFromDsiId(kId1.c_str(), level);
        return loggedText() + (found == (level != 7) ? std::to_string(level) : "a wrong level");
    }
};

TEST_F(Probes, files_are_on_the_board_for_the_devices_folders_only) {
    for (const char* path : {"/sys/class/rgbled/r", "/proc/device-tree", "/dev/ttyS3",
                             "/vendor/etc/hardwareInfo.xml", "/data", "/sys/"}) {
        EXPECT_EQ(deviceFile(path), board.directory + "/root" + path);
    }
    for (const char* path : {"/devices/x", "/system/sys/x", "/tmp/dev/x", "sys/x", "dev", "/", ""})
        EXPECT_EQ(deviceFile(path), path);
}

TEST_F(Probes, touch_panel_text_is_lines_of_type_and_id) {
    const std::pair<std::string, std::string> cases[] = {{"type:A\nid:3\n", "A-3"},
                                                         {"type:A\n\nid:3\n", "no"},
                                                         {"type :A\n", "no"},
                                                         {"type:A\nid: \t42\r\n", "A-42"},
                                                         {"id:-7x\ntype: A:B\r", " A:B\r--7"},
                                                         {"type:A\nid", "A-0"},
                                                         {"type:A", "A--1"},
                                                         {"id:1\nid:abc\n", "-0"}};
    for (const auto& [text, info] : cases) {
        std::string output = "no";
        EXPECT_EQ(parseTpInfo(text, output), info != "no");
        EXPECT_EQ(output, info);
    }
}

TEST_F(Probes, first_touch_panel_file_with_content_decides) {
    const std::string fromBus = "D get tp info from " + kTpOnBus +
                                "\nD tp_ic_info: key=id, value= 1\nI take tp info: -1\n-1";
    writeFile(file(kTpOnBus), "id: 1");
    EXPECT_EQ(outcome(getTpInfo), "W Unable to open file: " + kTp + "\n" + fromBus);
    writeFile(file(kTp), "");
    EXPECT_EQ(outcome(getTpInfo), fromBus);
    writeFile(file(kTp), "x");
    EXPECT_EQ(outcome(getTpInfo), "D get tp info from " + kTp +
                                          "\nD tp_ic_info: key=x, value=\n"
                                          "E fail to take tp info\nno");
}

TEST_F(Probes, panel_is_the_first_item_with_the_number) {
    const std::string noId = "W LCD info is not parse ID. ";
    const auto other = [](const std::string& id) {
        return "E Failed to convert " + id + " to int\n";
    };
    const std::tuple<std::string, int, std::string> cases[] = {
            {"null", 1, noId + "null\nno"},
            {"A,A-,A--5", 0, noId + "A\n" + noId + "A-\nA--5"},
            {",A-1,-5,", 5, "W LCD info is not in IC-ID format.\n" + other("1") + "-5"},
            {"A- 7\t, B- 2\r,C-2", 2, other(" 7\t") + " B- 2\r"},
            {"A-1-2,", 2, other("1") + "no"}};
    for (const auto& [list, id, result] : cases) {
        const auto search = [&list = list, &id = id](auto& out) {
            return findPanel(list, id, out);
        };
        EXPECT_EQ(outcome(search), result);
    }
}

TEST_F(Probes, panel_number_comes_by_the_first_way_that_tells_one) {
    const std::string gotReg = "D get lcd info from " + kReg + "\n";
    const std::string byReg = gotReg + "I Try to get lcd id by reg\n";
    const std::string noFlag = "E Fail to get flag from hwid-flag\nW Unable to open file: " + kId1 +
                               "\nE Fail to open dsi id: " + kId1 +
                               "\nE Fail to get dsi id\nE Fail to get lcd id, no more feedback\n"
                               "E Fail to get lcdid\nno";
    const auto flag = [](const std::string& hex) {
        return "D val: 0x" + hex + "\nD flag: 0x" + hex + "\n";
    };
    const std::string byFlag = "I Try to get lcd id by hwid-flag\n";
    const std::array<std::string, 4> cases[] = {
            {"\0\0\3"s, "\0\0\0\2"s, "B-768", byReg + "B-768"},
            {"\xff\xff\xfe", "", "B-0", byReg + "E Failed to convert 0 to int\nno"},
            {"\xff\xff\xff", "\0\0\0\2"s, "B-2", gotReg + flag("2") + byFlag + "B-2"},
            {"\0\0\0\3"s, "\0\0\x80\1"s, "B-32769", flag("8001") + byFlag + "B-32769"},
            {"\0\3"s, "\0\0\0\0"s, "B-0", flag("0") + byFlag + "B-0"},
            {"", "\x80\0\0\0"s, "B-0", flag("80000000") + noFlag},
            {"", "\0\0\0\2\0"s, "B-2", noFlag}};
    for (const auto& [reg, cell, list, result] : cases) {
        writeFile(file(kReg), reg);
        writeFile(file(kFlag), cell);
        setPart(PeripheralType::LCD, list);
        EXPECT_EQ(outcome(getLcdInfoFromXml), result);
    }
}

TEST_F(Probes, pin_is_below_128_and_its_level_0_or_1) {
    const auto read = [](const std::string& pin) {
        return "D Read hw id gpios val (dis,id:val)(" + pin + ") from " + kId1 + "\n";
    };
    const auto failed = [](const std::string& why, const std::string& number) {
        return "E " + why + "\nE Fail to get gpio value from gpio: " + number + "\n7";
    };
    const std::array<std::string, 3> cases[] = {
            {"\0\0\x7f"s, "1", "E Fail to open dsi id: " + kId1 + "\n7"},
            {"\0\0\0\x80"s, "1", failed("Invalid gpio: 128", "128")},
            {"\xff\xff\xff\xff", "1", failed("Invalid gpio: -1", "-1")},
            {"\0\0\0\x7f and more"s, " \t1\r\n", read("127:1") + "1"},
            {"\0\0\0\x7f"s, "x", read("127:0") + "0"},
            {"\0\0\0\x7f"s, "2", failed("Failed to convert 2 to int", "127")},
            {"\0\0\0\x7f"s, "-1\n", failed("Failed to convert -1\n to int", "127")}};
    for (const auto& [cell, value, result] : cases) {
        writeFile(file(kId1), cell);
        writeFile(file(kGpio + "gpio127/value"), value);
        EXPECT_EQ(levelOfPin1(), result);
    }
}

TEST_F(Probes, files_of_a_pin_are_neither_made_nor_emptied) {
    writeFile(file(kId1), "\0\0\0\5"s);
    writeFile(file(kGpio + "export"), "####");
    std::filesystem::create_directories(file(kGpio + "gpio5"));
    levelOfPin1();
    EXPECT_EQ(readFile(file(kGpio + "export")), "5###");
    EXPECT_TRUE(std::filesystem::is_empty(file(kGpio + "gpio5")));
}
