// What the probes make of what drivers, the device tree and the description say.
#include <array>
#include <functional>
#include <tuple>

#include "hardware_info/display_probe.h"
#include "hardware_info/touch_panel_probe.h"
#include "tests/hardware_info_fixture.h"

using std::string_literals::operator""s;

static const std::string kTp = "/sys/class/tpinfo/tpinfo_ic_info";
static const std::string kTpOnBus = "/sys/class/i2c-dev/i2c-2/device/2-005d/tp_ic_info";
static const std::string kReg = "/sys/bus/mipi-dsi/devices/ff450000.dsi.0/of_node/id";
static const std::string kFlag = "/sys/bus/mipi-dsi/devices/ff450000.dsi.0/of_node/hwid-flag";
static const std::string kId1 = "/proc/device-tree/dsi@ff450000/dsi,id1";
static const std::string kId2 = "/proc/device-tree/dsi@ff450000/dsi,id2";

static std::string cannotOpen(const std::string& path) {
    return "W Unable to open file: " + path + "\n";
}

using Texts3 = std::array<std::string, 3>;
using Texts4 = std::array<std::string, 4>;

struct Probes : PlainBoardTest {
    // What is logged, then the answer or "no".
    std::string outcome(const std::function<bool(std::string&)>& probe) {
        std::string output = "no";
        const bool found = probe(output);
        return loggedText() + (found || output == "no" ? output : "a changed output");
    }
    std::string level(const std::string& path) {
        int32_t level = 7;
        const bool found = getGpioValFromDsiId(path.c_str(), level);
        return loggedText() + (found == (level != 7) ? std::to_string(level) : "a wrong level");
    }
};

TEST_F(Probes, touch_panel_text_is_lines_of_type_and_id) {
    const auto line = [](const std::string& key, const std::string& value) {
        return "D tp_ic_info: key=" + key + ", value=" + value + "\n";
    };
    const std::string type = line("type", "A");
    const Texts3 cases[] = {
            {"type:A\nid:3\n", type + line("id", "3"), "A-3"},
            {"id:3\ntype:A", line("id", "3") + type, "A-3"},
            {"type:A\n\nid:3\n", type + line("", ""), "no"},
            {"Type:A\n", line("Type", "A"), "no"},
            {"type :A\n", line("type ", "A"), "no"},
            {"type:A\nid: \t42\r\n", type + line("id", " \t42\r"), "A-42"},
            {"type:A\nid:-7x", type + line("id", "-7x"), "A--7"},
            {"type:A\nid:abc", type + line("id", "abc"), "A-0"},
            {"type:A\nid", type + line("id", ""), "A-0"},
            {"type:A", type, "A--1"},
            {"id:7", line("id", "7"), "-7"},
            {"type: A:B\r\n", line("type", " A:B\r"), " A:B\r--1"},
            {"id:1\ntype:A\nid:2\n", line("id", "1") + type + line("id", "2"), "A-2"}};
    for (const auto& [text, lines, info] : cases) {
        const std::string end =
                info == "no" ? "E fail to take tp info\n" : "I take tp info: " + info + "\n";
        const auto parse = [&text = text](auto& out) { return parseTpInfo(text, out); };
        EXPECT_EQ(outcome(parse), lines + end + info);
    }
}

TEST_F(Probes, first_touch_panel_file_with_content_decides) {
    const std::string fromBus = "D get tp info from " + kTpOnBus +
                                "\nD tp_ic_info: key=id, value=1\nI take tp info: -1\n-1";
    writeFile(file(kTpOnBus), "id:1");
    EXPECT_EQ(outcome(getTpInfo), cannotOpen(kTp) + fromBus);
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
            {"", 0, "no"},
            {"null", 1, noId + "null\nno"},
            {"A,A-,A-0", 0, noId + "A\n" + noId + "A-\nA-0"},
            {"A--5", 0, "A--5"},
            {"-5", 5, "-5"},
            {",A-1,", 2, "W LCD info is not in IC-ID format.\n" + other("1") + "no"},
            {"A-1, B-2,C-2", 2, other("1") + " B-2"},
            {"A- 7\t,B- 2\r", 2, other(" 7\t") + "B- 2\r"},
            {"A-1-2", 2, other("1") + "no"},
            {"A-1-2", 1, "A-1-2"},
            {"A-x", 0, "A-x"}};
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
    const std::string noFlag = "E Fail to get flag from hwid-flag\n" + cannotOpen(kId1) +
                               "E Fail to open dsi id: " + kId1 +
                               "\nE Fail to get dsi id\nE Fail to get lcd id, no more feedback\n"
                               "E Fail to get lcdid\nno";
    const auto flag = [](const std::string& hex) {
        return "D val: 0x" + hex + "\nD flag: 0x" + hex + "\n";
    };
    const std::string byFlag = "I Try to get lcd id by hwid-flag\n";
    const Texts4 cases[] = {
            {"\0\0\3"s, "\0\0\0\2"s, "B-768", byReg + "B-768"},
            {"\xff\xff\xfe", "", "B-0", byReg + "E Failed to convert 0 to int\nno"},
            {"\xff\xff\xff", "\0\0\0\2"s, "B-2", gotReg + flag("2") + byFlag + "B-2"},
            {"\0\0\0\3"s, "\x7f\xff\x80\1", "B-2147450881",
             flag("7fff8001") + byFlag + "B-2147450881"},
            {"\0\3"s, "\0\0\0\0"s, "B-0", flag("0") + byFlag + "B-0"},
            {"", "\x80\0\0\0"s, "B-0", flag("80000000") + noFlag},
            {"", "\0\0\2"s, "B-2", noFlag},
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
        return "D Read hw id gpios val (dis,id:val)(" + pin + ") from " + kId2 + "\n";
    };
    const auto failed = [](const std::string& why, const std::string& number) {
        return "E " + why + "\nE Fail to get gpio value from gpio: " + number + "\n7";
    };
    const Texts3 cases[] = {
            {"", "1", "E Fail to open dsi id: " + kId2 + "\n7"},
            {"\0\0\x7f"s, "1", "E Fail to open dsi id: " + kId2 + "\n7"},
            {"\0\0\0\x80"s, "1", failed("Invalid gpio: 128", "128")},
            {"\xff\xff\xff\xff", "1", failed("Invalid gpio: -1", "-1")},
            {"\0\0\0\x7f and more"s, " \t1\r\n", read("127:1") + "1"},
            {"\0\0\0\x7f"s, "x", read("127:0") + "0"},
            {"\0\0\0\x7f"s, "2", failed("Failed to convert 2 to int", "127")},
            {"\0\0\0\x7f"s, "-1\n", failed("Failed to convert -1\n to int", "127")}};
    for (const auto& [cell, value, result] : cases) {
        writeFile(file(kId2), cell);
        writeFile(file("/sys/class/gpio/gpio127/value"), value);
        EXPECT_EQ(level(kId2), result);
    }
}

TEST_F(Probes, files_of_a_pin_are_neither_made_nor_emptied) {
    writeFile(file(kId2), "\0\0\0\5"s);
    writeFile(file("/sys/class/gpio/export"), "####");
    std::filesystem::create_directories(file("/sys/class/gpio/gpio5"));
    EXPECT_EQ(level(kId2), cannotOpen("/sys/class/gpio/gpio5/value") +
                                   "W Unable to open gpio path: /sys/class/gpio/gpio5/value, ready "
                                   "to export\nE Failed to set gpio direction: 5\n"
                                   "E Fail to get gpio value from gpio: 5\n7");
    EXPECT_EQ(readFile(file("/sys/class/gpio/export")), "5###");
}
