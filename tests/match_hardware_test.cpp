// What is said of a package when the hardware that is to be asked is not there.
#include <gmock/gmock.h>

#include "tests/test_board.h"

using namespace testing;
namespace {

constexpr char kDevices[] =
        "<touch_panel type='GT' id='5'/><display id1_gpio='42' id2_gpio='43'/>"
        "<gpio number='42' level='1'/><gpio number='43'/><camera node='0' sensor='gc5035'/>";
constexpr char kProperties[] = "ro.vendor.hardwareinfo_index=3\n";

// A daemon on a board that lists a touch panel, a panel and a camera.
struct Device {
    explicit Device(const std::string& with = "") : board(kDevices, kProperties, with) {
        writeFile(board.device("/vendor/etc/hardwareInfo.xml"),
                  "<hardware product='p'><hardwre_info index='3' overlay_id='5' hw_version='1'>"
                  "<hw Peripheral='tp'>gt9</hw><hw Peripheral='lcd'>A-1,B-2</hw>"
                  "<hw Peripheral='internal_camera'>imx</hw></hardwre_info></hardware>");
        daemon = board.startDaemon(TARQD);
        board.ask({"wait"});
    }

    void expect(Words items, int code, const Matcher<std::string>& answer) const {
        items.insert(items.begin(), "match");
        EXPECT_THAT(board.ask(items, code), answer) << PrintToString(items);
    }

    const TestBoard board;
    std::unique_ptr<ChildProcess> daemon;
};

const Words kByPanel = {"tp:gt9", "lcd:B-2", "internal_camera:imx"};
const Words kByCamera = {"tp:gt9", "lcd:A-1,B-2", "internal_camera:gc5035"};
const Words kByTouchPanel = {"tp:GT-5", "lcd:A-1,B-2", "internal_camera:imx"};
const Words kLacksTouchPanel = {"lcd:B-2", "internal_camera:imx"};

TEST(MatchHardware, refusal_of_a_board_that_has_ended_is_unknown) {
    Device device;
    if (!device.board.withoutFuse().empty()) GTEST_SKIP() << device.board.withoutFuse();
    for (const Words& items : {kByPanel, kByCamera, kByTouchPanel})
        device.expect(items, 0, StartsWith("yes: all 3 board parts fit\n"));
    // What is absent or goes wrong is hardware that has been asked.
    for (const char* node : {"camera0", "touch_panel", "dsi_id1"}) {
        device.board.command({"fault", node, "absent"});
        device.expect({"tp:GT-5", "lcd:B-2", "internal_camera:gc5035"}, 1,
                      StartsWith("no: 1 of 3 board parts does not fit"));
        device.board.command({"fault", node, "none"});
    }
    const_cast<TestBoard&>(device.board).end(SIGKILL);
    const std::string ended = ": the board in " + device.board.directory + " has ended";
    for (const auto& [items, part] :
         {std::pair(kByPanel, "lcd"), {kByCamera, "internal_camera"}, {kByTouchPanel, "tp"}}) {
        device.expect(items, 2,
                      AllOf(StartsWith("unknown: could not ask what is fitted as " +
                                       (part + ended) + "; the service says no: 1 of 3 board"),
                            Not(HasSubstr("to make it fit")), EndsWith("\nhint: scripts/run\n")));
    }
    device.expect(kLacksTouchPanel, 1,
                  AllOf(StartsWith("no: 2 of 3 board parts do not fit"),
                        HasSubstr("; could not ask what is fitted as lcd" + ended),
                        HasSubstr("\nto make it fit:\n  add tp:gt9\nhint: ")));
    device.expect({"tp:gt9", "lcd:A-1,B-2", "internal_camera:imx"}, 0, StartsWith("yes: "));
    device.expect(
            {"--json", "tp:gt9", "lcd:B-2", "internal_camera:imx"}, 2,
            AllOf(StartsWith("{\"verdict\":\"unknown\",\"service\":\"no\",\"sentence\":\"could"),
                  HasSubstr("\"verdict\":\"unknown\",\"reason\":\"no \\\"A-1\\\" in")));
    // Without its reasons no refusal is known to be more than that.
    std::filesystem::remove(device.board.log());
    device.expect({"x:y"}, 2, HasSubstr("says no: the reasons are not known, "));
}

TEST(MatchHardware, age_of_a_package_is_not_judged_by_hardware_that_has_ended) {
    Device device;
    if (!device.board.withoutFuse().empty()) GTEST_SKIP() << device.board.withoutFuse();
    const std::string times = device.board.device("/vendor/etc/hardware_timestamp.txt");
    writeFile(device.board.properties() + "/ro.vendor.ota_enter_timestamp_check", "true");
    const auto check = [&](const std::string& file, int code, const std::string& answer) {
        writeFile(times, file);
        device.expect({"--ota-time", "7", "tp:gt9"}, code, StartsWith(answer));
    };
    check("--TP\nGT-5,6\n", 0, "yes: 2 of 3 board parts do not fit, but the package is late");
    const_cast<TestBoard&>(device.board).end(SIGKILL);
    check("--TP\nGT-5,6\n", 2, "unknown: could not ask what is fitted as tp: ");
    check("x,6\n", 2, "unknown: could not ask what is fitted as internal_camera: ");
    check("x\n", 1, "no: ");
}

TEST(MatchHardware, plain_files_answer_for_what_they_can_stand_in_for) {
    if (!TestBoard::canHideFuse()) GTEST_SKIP() << "unshare -m is refused";
    const Device device(TestBoard::kHideFuse);
    for (const auto& [items, part] : {std::pair(kByPanel,
                                                "lcd: the board plays plain files without "
                                                "/sys/class/gpio/"),
                                      {kByCamera,
                                       "internal_camera: the board plays plain files "
                                       "without /dev/v4l-subdev0: "}}) {
        device.expect(
                items, 2,
                AllOf(StartsWith("unknown: could not ask what is fitted as " + std::string(part)),
                      EndsWith("\nhint: tarqctl --board " + device.board.directory + " board\n")));
    }
    device.expect(kByTouchPanel, 0, StartsWith("yes: all 3 board parts fit\n"));
    device.expect({"tp:GT-6", "lcd:A-1,B-2", "internal_camera:imx"}, 1, StartsWith("no: 1 of 3"));
    device.expect(kLacksTouchPanel, 1, StartsWith("no: 2 of 3 board parts do not fit"));
    EXPECT_THAT(device.board.ask({"board"}),
                AllOf(HasSubstr(" is played by plain files, which play no GPIO, camera or fault: "),
                      ContainsRegex("\ncamera0  +/dev/v4l-subdev0  +not played +-\n"),
                      ContainsRegex("\ntouch_panel  +/sys/class/tpinfo/[a-z_/]+  +there +-\n")));
}

}  // namespace
