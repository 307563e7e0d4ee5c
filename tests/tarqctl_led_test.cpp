// tarqctl led against the daemon and a LED driver that answers and fails.
#include <gmock/gmock.h>

#include <regex>

#include "tests/run_tarqctl.h"
#include "tests/test_board.h"
#include "tools/tarqctl/log/led_outcome.h"

using namespace testing;

namespace {

const std::string kHelp = "tarqctl led play --help\n1";

class TarqctlLed : public Test {
  protected:
    static void SetUpTestSuite() {
        static const TestBoard board("<leds count='12'/>");
        mBoard = &board;
        std::filesystem::copy(SOURCES "/host/board/boards/demo_panel/vendor",
                              board.device("/vendor"), std::filesystem::copy_options::recursive);
        mDaemon = board.startDaemon(TARQD);
    }
    static void TearDownTestSuite() { mDaemon.reset(); }
    void SetUp() override {
        if (!mBoard->withoutFuse().empty()) GTEST_SKIP() << mBoard->withoutFuse();
        ASSERT_EQ(tarqctl("wait"), "");
    }

    static std::string tarqctl(const std::string& line) { return tarqctlSays(line); }
    static std::string trace() { return mBoard->ask({"trace"}); }

    static inline const TestBoard* mBoard = nullptr;
    static inline std::unique_ptr<ChildProcess> mDaemon;
};

TEST_F(TarqctlLed, values_are_set_and_read_back) {
    const std::pair<const char*, const char*> kLines[] = {
            {"led color 3 #Ff8000", ""},
            {"led color 3", "ff8000\n"},
            {"led color 11", "000000\n"},
            {"led brightness 10 128", ""},
            {"led brightness 10", "128\n"},
            {"led set --color 00000f --brightness 7 4 10", ""},
            {"led color 4", "00000f\n"},
            {"led brightness 10", "7\n"},
            {"led effect 1 val=16 type=2 cont=10 brightness=255 color=ff0000", ""},
            {"led stop", ""}};
    for (const auto& [line, said] : kLines) EXPECT_EQ(tarqctl(line), said) << line;
    EXPECT_THAT(trace(), EndsWith("\nstandby_effect 1 2 ff0000 ff 10 10\n"
                                  "xml_effect_trans_state 2\n"));
}

TEST_F(TarqctlLed, wrong_usage_is_told_and_nothing_is_sent) {
    const std::string before = trace();
    const std::pair<const char*, const char*> kLines[] = {
            {"led", "no command is given; there are color brightness"},
            {"led colour 1", "there is no such command; did you mean color?"},
            {"led color 1 ff800", "RRGGBB: \"ff800\" is no colour"},
            {"led color 1 -f8000", "-f8000"},
            {"led color 1 #-f8000", "\"#-f8000\""},
            {"led color 0x1 ff8000", "ID: \"0x1\" is no decimal number"},
            {"led brightness 2147483648", "\"2147483648\""},
            {"led set --color ff8000 1", "--brightness is required"},
            {"led set --color ff8000 --brightness 1", "ID is required"},
            {"led effect 1 type=1 color=ff0000 brightness=1 cont=1", "val: it is not given"},
            {"led effect 1 type=1 type=2", "type: it is given twice"},
            {"led effect 1 type", "type: it is none of type="}};
    for (const auto& [line, why] : kLines)
        EXPECT_THAT(tarqctl(line), AllOf(HasSubstr(why), HasSubstr("\nusage: "), EndsWith("2")));
    EXPECT_THAT(tarqctl("led color x"), HasSubstr("\nhint: tarqctl led color --help\n"));
    EXPECT_EQ(trace(), before);
}

TEST_F(TarqctlLed, attribute_that_the_daemon_cannot_open_is_named) {
    const std::tuple<const char*, const char*, const char*> kRows[] = {
            {"set_color", "absent", "led color 1 ff8000"},
            {"set_color", "unwritable", "led set --color ff8000 --brightness 1 1 1"},
            {"get_brightness", "absent", "led brightness 1"},
            {"standby_effect", "absent",
             "led effect 1 type=1 color=ff0000 brightness=1 cont=1 val=1"},
            {"xml_effect_trans_vals", "absent", "led play alert"}};
    for (const auto& [attribute, fault, line] : kRows) {
        mBoard->command({"fault", attribute, fault});
        EXPECT_EQ(tarqctl(line), "the daemon cannot open /sys/class/rgbled/" +
                                         std::string(attribute) + "\nhint: tarqctl --board " +
                                         mBoard->directory + " log\n1");
        mBoard->command({"fault", attribute, "none"});
        EXPECT_THAT(tarqctl(line), Not(HasSubstr("hint"))) << line;
    }
}

TEST_F(TarqctlLed, dry_run_is_what_playing_sends) {
    for (const std::string name : {"alert", "wave_fast.xml"}) {
        const std::string before = trace();
        EXPECT_EQ(tarqctl("led play " + name), "");
        EXPECT_EQ(tarqctl("led play --dry-run " + name), trace().substr(before.size()));
    }
    const TemporaryDirectory directory;
    const std::string file = directory / "x.xml";
    writeFile(file,
              "<e loop='1' interval='5'>\n<led id='0'><eff id='7'/>\n<eff>3</eff>"
              "<eff s='5'>ff\n</eff></led></e>");
    EXPECT_EQ(tarqctl("led play " + file), "left out: " + file +
                                                   ":1: attribute duration of <e> is missing\n"
                                                   "left out: a step without a text, its id is 7\n"
                                                   "left out: " +
                                                   file + ":3: attribute s of <eff> is missing\n" +
                                                   file +
                                                   ": the driver refuses to play it: the effect "
                                                   "has no duration\nhint: " +
                                                   kHelp);
    const std::string before = std::filesystem::current_path();
    std::filesystem::current_path(directory.path());
    for (const std::string word : {"x.xml", "./x.xml"}) {
        const std::string place = "# " + directory / word;
        EXPECT_EQ(tarqctl("--board /nowhere led play --dry-run " + word),
                  "xml_effect_trans_state 1\nxml_effect_trans_vals loop 1\n"
                  "xml_effect_trans_vals interval 5\n" +
                          place + ":1: left out: attribute duration of <e> is missing\n" + place +
                          ":2: left out: a step without a text, its id is 7\n" + place +
                          ":3: left out: attribute s of <eff> is missing\n"
                          "xml_effect_trans_data 0 ff\\n 5\nxml_effect_trans_state 0\n" +
                          place +
                          ": the driver refuses to play it: the effect has no duration\ntarqctl: "
                          "led play --dry-run " +
                          word +
                          ": no board tells how many LEDs there are; LEDs 0 to 254 are taken to be "
                          "there\n1");
    }
    EXPECT_THAT(
            tarqctl("led play x"),
            HasSubstr("; the board has alert, breathing, progress, rainbow, wave_fast; x.xml of "
                      "this directory is another file\nhint: tarqctl --board " +
                      mBoard->directory + " led play ./x.xml\n1"));
    std::filesystem::current_path(before);
    EXPECT_THAT(tarqctl("led play --json --dry-run " + file),
                AllOf(HasSubstr("{\"left_out\":\"attribute s of <eff> is missing\",\"line\":3}\n"),
                      HasSubstr("\"text\":\"0 ff\\n 5\",\"line\":3}\n")));
    for (const std::string word : {"nothing", "/nowhere/x.xml", "/vendor"}) {
        const char* why = word == "/vendor" ? "Is a directory" : "No such file or directory";
        EXPECT_THAT(tarqctl("led play " + word), AllOf(HasSubstr(why), EndsWith("\n1")));
        EXPECT_THAT(tarqctl("led play --dry-run " + word),
                    AllOf(HasSubstr(why), EndsWith(word == "nothing" ? "led play alert\n1"
                                                                     : "led play --help\n1")));
    }
}

TEST_F(TarqctlLed, refusal_of_the_driver_is_told_with_its_reason_and_its_place_in_the_file) {
    const std::string none = "LED 12 (hexadecimal c) is not within 0 to 11\nhint: tarqctl led ";
    const std::pair<const char*, std::string> kLines[] = {
            {"led color 12", "the driver refuses get_color \"c\": " + none + "color --help\n1"},
            {"led brightness 12",
             "the driver refuses get_brightness \"c\": " + none + "brightness --help\n1"},
            {"led color -1",
             "the driver refuses get_color \"ffffffff\": LED -1 (hexadecimal "
             "ffffffff) is not within 0 to 11\nhint: tarqctl led color --help\n1"},
            {"led color 12 ff0000",
             "the driver refuses set_color \"c ff0000\": " + none + "color --help\n1"},
            {"led brightness 3 300",
             "the driver refuses set_brightness \"3 12c\": brightness 300 (hexadecimal 12c) is not "
             "within 0 to 255\nhint: tarqctl led brightness --help\n1"},
            {"led set --color 0000ff --brightness 1 1 12",
             "the driver refuses set_color \"c ff\": LED 12 (hexadecimal c) is not within 0 to 11\n"
             "the driver refuses set_brightness \"c 1\": " +
                     none + "set --help\n1"},
            {"led effect 3 type=9 color=ff0000 brightness=1 cont=-1 val=1",
             "the driver refuses standby_effect \"3 9 ff0000 1 -1 1\": type 9 is not within 0 to "
             "3\n"
             "hint: tarqctl led effect --help\n1"}};
    for (const auto& [line, said] : kLines) EXPECT_EQ(tarqctl(line), said) << line;
    const TemporaryDirectory directory;
    const std::string file = directory / "x.xml";
    writeFile(file,
              "<e loop='2' interval='5' duration='9'>\n<led id='c'>\n<eff s='1'>1</eff>\n"
              "<eff s='1'>1</eff></led></e>");
    const std::string loop = file +
                             ":1: the driver refuses \"loop 2\": loop 2 is not within 0 to 1\n",
                      third = file +
                              ":3: the driver refuses \"c 1 1\": LED 12 (hexadecimal c) is not "
                              "within 0 to 11\n",
                      fourth = std::regex_replace(third, std::regex(":3:"), ":4:"),
                      end = file + ": the driver refuses to play it: the effect has no loop\n";
    EXPECT_EQ(tarqctl("led play " + file), loop + third + fourth + end + "hint: " + kHelp);
    EXPECT_THAT(tarqctl("led play --dry-run " + file),
                AllOf(HasSubstr("vals loop 2\n# " + loop), HasSubstr("data c 1 1\n# " + third),
                      HasSubstr("data c 1 1\n# " + fourth), EndsWith("state 0\n# " + end + "1")));
}

TEST_F(TarqctlLed, transfer_past_its_time_is_said_to_go_on) {
    const auto inTime = [](const std::string& command) {  // which ends the process
        return ChildProcess({"sh", "-c", TARQCTL " --timeout 0.3 " + command + " 2>&1"}).readAll();
    };
    mBoard->command({"hold", "xml_effect_trans_vals"});
    EXPECT_THAT(inTime("wait radiokey_service"),
                HasSubstr(": property ro.vendor.433_check_enable is not \"true\"\nhint: "));
    tarqctl("setprop ro.vendor.433_check_enable true");
    EXPECT_THAT(inTime("wait radiokey_service"),
                AllOf(HasSubstr(": radiokey_service: xml_effect_trans_vals is held\nhint: "),
                      EndsWith(" release xml_effect_trans_vals\n")));
    std::filesystem::remove(mBoard->properties() + "/ro.vendor.433_check_enable");
    EXPECT_THAT(inTime("wait nobody"), HasSubstr(": nobody: no service of that name is known\n"));
    EXPECT_THAT(inTime("led play alert"),
                AllOf(HasSubstr("; xml_effect_trans_vals is held; the daemon goes on with the "
                                "transfer, so do not start another\n"),
                      EndsWith(" release xml_effect_trans_vals\n")));
    mBoard->command({"release", "xml_effect_trans_vals"});
    EXPECT_TRUE(eventually([] { return trace().rfind("trans_state 0\n") == trace().size() - 14; }));
}

TEST(LedLog, tells_a_call_from_others_by_thread_operation_and_arguments) {
    const TemporaryDirectory directory;
    const auto line = [](const char* thread, const char* text) {
        return std::string("01-02 03:04:05.006   512  ") + thread + " E rgbLedsService: " + text +
               "\n";
    };
    const char* const failure = "open file /a failed!";
    writeFile(directory / "log", line("1", failure));
    tarq::tools::LedLog log(directory / "log");
    std::ofstream(directory / "log", std::ios::app)
            << line("1", "open file /b failed!") << line("2", failure)
            << line("1", "setRgbColor:id=3,reg=6") << line("1", "setRgbBrightness:id=3,reg=5")
            << line("2", "stopLampEffect") << line("2", "setRgbColor:id=3,reg=5")
            << line("2", "open file /c failed!") << line("2", "open file /c failed!")
            << line("1", "getRgbColor:id=3,reg=0xfe") << line("2", "getRgbColor:id=3,reg=0xff")
            << line("1", "loadXmlFile:path=/a");
    const std::string all = readFile(directory / "log");
    const auto notOpened = [&](const std::string& operation, std::vector<std::string> arguments) {
        writeFile(directory / "log", "");  // and all of it anew
        EXPECT_FALSE(log.find("", {}));
        writeFile(directory / "log", all);
        const auto call = log.find(operation, arguments);
        return call ? call->notOpened : std::vector<std::string>{"no such call"};
    };
    EXPECT_THAT(notOpened("setRgbColor", {"3", "6"}), ElementsAre("/a", "/b"));
    EXPECT_THAT(notOpened("setRgbColor", {"3", "5"}), IsEmpty());
    EXPECT_THAT(notOpened("setRgbBrightness", {"3", "5"}), IsEmpty());
    EXPECT_THAT(notOpened("getRgbColor", {"3", "ff"}), ElementsAre("/c"));
    EXPECT_THAT(notOpened("getRgbColor", {"3", "fe"}), IsEmpty());
    EXPECT_THAT(notOpened("setRgbColor", {"4", "5"}), ElementsAre("no such call"));
    EXPECT_THAT(notOpened("loadXmlFile", {"/a\nb"}), IsEmpty());
    EXPECT_THAT(notOpened("loadXmlFile", {"/ab"}), ElementsAre("no such call"));
}

TEST_F(TarqctlLed, fault_of_the_driver_is_named_instead_of_a_value) {
    mBoard->command({"fault", "get_color", "empty"});
    EXPECT_THAT(tarqctl("led color 1"), AllOf(HasSubstr("the fault \"empty\" of get_color\nhint: "),
                                              EndsWith("fault get_color none\n2")));
    mBoard->command({"fault", "get_color", "none"});
}

TEST_F(TarqctlLed, trace_has_the_times_of_the_log) {
    tarqctl("led color 15 a0b0c0");
    EXPECT_THAT(tarqctl("trace --times"),
                MatchesRegex("(.*\n)*[0-9]{2}-[0-9]{2} [0-9:]{8}\\.[0-9]{3} set_color f a0b0c0 "
                             "\\(refused: LED 15 .*\\)\n"));
    const std::string trace = mBoard->ledRecords();
    std::filesystem::rename(trace, trace + ".away");
    EXPECT_EQ(tarqctl("trace"), trace + ": No such file or directory\nhint: scripts/run\n2");
    std::filesystem::rename(trace + ".away", trace);
}

}  // namespace
