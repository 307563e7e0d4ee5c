// The probes and the match on hardware that answers, fails and is slow.
#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <set>
#include <thread>

#include "hardware_info/camera_probe.h"
#include "hardware_info/display_probe.h"
#include "hardware_info/peripheral_matching.h"
#include "hardware_info/timestamp_check.h"
#include "tests/hardware_info_fixture.h"
#include "tests/test_board.h"

using android::String16;
using testing::EndsWith;
using testing::HasSubstr;

// Panel 2 is fitted, and says so by two pins; the boot loader has left the first as an output.
struct HardwareProbes : HardwareInfoTest {
    void SetUp() override {
        board().skipWithoutFuse();
        setPart(PeripheralType::LCD, "P-0,P-1,P-2,P-3");
        otaTimestamp = 0;
    }
    void TearDown() override {
        for (const std::string& file : mFaulty) board().command({"fault", file, "none"});
    }
    static const TestBoard& board() {
        static const TestBoard instance(
                "<touch_panel type='GT' id='5'/><display reg='ffffff' hwid_flag='ffffffff' "
                "id1_gpio='42' id2_gpio='43'/><gpio number='42' level='1' direction='out'/>"
                "<gpio number='43' level='0'/><camera node='1' sensor='gc5035'/>"
                "<camera node='9' sensor='ov'/><camera node='10' sensor='beyond'/>",
                "ro.vendor.ota_enter_timestamp_check=true\n");
        return instance;
    }
    void fault(const std::string& file, const std::string& kind) {
        board().command({"fault", file, kind});
        mFaulty.insert(file);
    }
    static bool isExported(const std::string& pin) {
        return access(board().device(kGpio + pin).c_str(), F_OK) == 0;
    }
    // The log, then whether the list fits.
    std::string match(const std::vector<String16>& items) {
        const bool fits = _isMatchHardwareInfo(items);
        return loggedText() + (fits ? "fits" : "refused");
    }

    std::set<std::string> mFaulty;
};

TEST_F(HardwareProbes, panel_is_told_by_two_pins_that_are_exported_meanwhile) {
    for (const int panel : {2, 0, 3, 1, 2}) {
        board().command({"set", "gpio42", std::to_string(panel >> 1)});
        board().command({"set", "gpio43", std::to_string(panel & 1)});
        std::string item;
        EXPECT_TRUE(getLcdInfoFromXml(item));
        EXPECT_EQ(item, "P-" + std::to_string(panel));
        EXPECT_FALSE(isExported("gpio42") || isExported("gpio43"));
    }
}

TEST_F(HardwareProbes, pin_that_fails_on_the_way_is_read_by_the_next_call) {
    const std::string value = kGpio + "gpio42/value";
    const std::string notExported = "W Unable to open file: " + value +
                                    "\nW Unable to open gpio path: " + value +
                                    ", ready to export\nE ";
    int32_t level = -1;
    EXPECT_TRUE(getGpioValFromDsiId(kId1.c_str(), level));  // an input from now on
    for (const auto& [file, kind, reason] : std::vector<std::array<std::string, 3>>{
                 {"export", "unwritable", "Failed to export gpio: 42"},
                 {"gpio42/direction", "unwritable", "Failed to set gpio direction: 42"},
                 {"gpio42/value", "empty", "Unable to get gpio val: " + value}}) {
        fault(kGpio + file, kind);
        logged();
        EXPECT_FALSE(getGpioValFromDsiId(kId1.c_str(), level));
        EXPECT_EQ(loggedText(),
                  notExported + reason + "\nE Fail to get gpio value from gpio: 42\n");
        EXPECT_EQ(isExported("gpio42"), file != "export");
        fault(kGpio + file, "none");
        EXPECT_TRUE(getGpioValFromDsiId(kId1.c_str(), level));
        EXPECT_EQ(level, 1);
        std::ofstream(board().device(kGpio + "unexport")) << 42;
    }
}

TEST_F(HardwareProbes, first_camera_that_answers_is_the_one) {
    const auto name = [] {
        std::string text = "before";
        return getInternalCameraInfo(text) ? text : "no, " + text;
    };
    const auto withoutInput = [&name] {
        close(STDIN_FILENO);
        _exit(name() == "ov" ? 0 : 1);  // the first came as descriptor 0
    };
    const auto before = openDescriptors();
    EXPECT_EQ(name(), "gc5035");
    EXPECT_EXIT(withoutInput(), testing::ExitedWithCode(0), "");
    fault("camera1", "empty");  // refuses the request
    EXPECT_EQ(name(), "ov");
    fault("camera9", "absent");
    EXPECT_EQ(name(), "no, before");
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(loggedText(), "");
}

TEST_F(HardwareProbes, null_camera_means_gc5035_and_another_one_bars_the_times) {
    const std::string unmatched =
            "I isInternalCameraMatch: unmatch\nI internal_camera flag is unmatch\n";
    const std::vector<String16> items = {String16("lcd:P-2"), String16("internal_camera:null")};
    writeFile(board().device(kTimes), "--TP\nGT-5,1\n--INTERNAL_CAMERA\ngc5035,3\n--LCD\nP-2,2\n");
    setPart(PeripheralType::INTERNAL_CAMERA, "?");
    EXPECT_THAT(match(items), EndsWith("I isInternalCameraMatch: match\nfits"));
    EXPECT_THAT(match({}), EndsWith("I internal_camera flag is unmatch\nD Enter Time match failed: "
                                    "otaTimeStamp is 0(INVALID VALUE)\nrefused"));
    otaTimestamp = 4;
    EXPECT_THAT(match({}), HasSubstr("Time: 1\nI Peripheral Type:  INTERNAL_CAMERA\n"
                                     "I Earliest Support Time: 3\nI Peripheral Type:  LCD\n"
                                     "I Earliest Support Time: 2\n"));
    fault("camera1", "absent");
    EXPECT_THAT(match(items), EndsWith(unmatched + "I enter hw timestamp failue, beacause "
                                                   "is two supply camera\nrefused"));
    fault("camera9", "absent");
    EXPECT_THAT(match(items),
                HasSubstr("E Fail to get internal camera\n" + unmatched + "D otaTimeStamp is 4\n"));
}

TEST_F(HardwareProbes, slow_file_holds_up_its_own_call_which_tells_its_own_result) {
    const std::atomic<uint8_t>& state = peripheralTable[size_t(PeripheralType::TP)].matchState;
    setPart(PeripheralType::TP, "X");
    board().command({"hold", "touch_panel"});
    std::thread waiting([] { _isMatchHardwareInfo({String16("tp:X")}); });
    EXPECT_TRUE(eventually([&] { return state == 1; }));
    EXPECT_THAT(match({String16("lcd:P-2")}), HasSubstr("I tp flag is unmatch\n"));
    EXPECT_EQ(state, 2);
    board().command({"release", "touch_panel"});
    waiting.join();
    EXPECT_THAT(loggedText(), HasSubstr("I take tp info: GT-5\nI isTpMatchByTpInfo: match\n"));
}

TEST_F(HardwareProbes, eight_at_once_leave_pins_and_states_that_serve_the_next) {
    const std::vector<String16> items = {String16("lcd:P-2")};
    std::vector<std::thread> clients;
    for (int i = 0; i < 8; ++i) {
        clients.emplace_back([&items] {
            for (int n = 0; n < 20; ++n) _isMatchHardwareInfo(items);
        });
    }
    for (std::thread& client : clients) client.join();
    EXPECT_THAT(match(items), EndsWith("I isLcdMatchByHwId: match\nfits"));
}
