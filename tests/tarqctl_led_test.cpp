// tarqctl led against the daemon and a LED driver that answers and fails.
#include <gmock/gmock.h>

#include "tests/run_tarqctl.h"
#include "tests/test_board.h"
#include "tools/tarqctl/commands/led_commands.h"

using namespace testing;

namespace {

class TarqctlLed : public Test {
  protected:
    static void SetUpTestSuite() {
        static const TestBoard board("<leds count='12'/>");
        mBoard = &board;
        const std::string effects = board.path("/vendor/etc/leds");
        std::filesystem::create_directories(effects);
        std::filesystem::copy(SOURCES "/host/board/boards/demo_panel/vendor/etc/leds", effects);
        mDaemon = std::make_unique<ChildProcess>(
                std::vector<std::string>{TARQD},
                std::vector<std::string>{"TARQ_LOG=" + board.directory() + "/run/log"});
    }
    static void TearDownTestSuite() { mDaemon.reset(); }
    void SetUp() override {
        if (!mBoard->withoutFuse().empty()) GTEST_SKIP() << mBoard->withoutFuse();
        ASSERT_EQ(tarqctl("wait"), "");
    }

    static std::string tarqctl(const std::string& line) { return runTarqctl(line); }
    static std::string trace() {
        std::string said;
        EXPECT_EQ(mBoard->ask({"trace"}, &said), 0);
        return said;
    }

    static inline const TestBoard* mBoard = nullptr;
    static inline std::unique_ptr<ChildProcess> mDaemon;
};

TEST_F(TarqctlLed, values_are_set_and_read_back) {
    const std::pair<const char*, const char*> kLines[] = {
            {"led color 3 #Ff8000", ""},
            {"led color 3", "ff8000\n"},
            {"led color 3 --json", "{\"color\":\"ff8000\"}\n"},
            {"led color 11", "000000\n"},
            {"led brightness 10 128 --json", "{}\n"},
            {"led brightness 10", "128\n"},
            {"--json led brightness 10", "{\"brightness\":128}\n"},
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
            {"led colour 1", "there is no such command, only color brightness"},
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
    for (const auto& [line, why] : kLines) {
        EXPECT_THAT(tarqctl(line), AllOf(HasSubstr(why), HasSubstr("\nusage: "), EndsWith("2")));
    }
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
                                         mBoard->directory() + " log\n1");
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
                                                   file + ":3: attribute s of <eff> is missing\n");
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
                          "xml_effect_trans_data 0 ff\\n 5\nxml_effect_trans_state 0\n");
    }
    std::filesystem::current_path(before);
    EXPECT_THAT(tarqctl("led play --json --dry-run " + file),
                AllOf(HasSubstr("{\"leftOut\":\"attribute s of <eff> is missing\",\"line\":3}\n"),
                      HasSubstr("\"text\":\"0 ff\\n 5\",\"line\":3}\n")));
    for (const std::string word : {"nothing", "/nowhere/x.xml", "/vendor"}) {
        EXPECT_THAT(tarqctl("led play " + word), AllOf(HasSubstr("the daemon cannot open it"),
                                                       HasSubstr(" log\n"), EndsWith("1")));
        EXPECT_THAT(tarqctl("led play --dry-run " + word), EndsWith("led play --help\n1"));
    }
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
            << line("1", "getRgbColor:id=3,reg=0xfe") << line("2", "getRgbColor:id=3,reg=0xff");
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
}

TEST_F(TarqctlLed, examples_work_and_the_trace_has_the_times_of_the_log) {
    for (const tarq::tools::Command& command : tarq::tools::ledCommands()) {
        EXPECT_THAT(tarqctl(std::string("led --help ") + command.name),
                    HasSubstr(command.sentence));
        const std::string line = std::string(command.example).substr(strlen("tarqctl "));
        EXPECT_THAT(tarqctl(line), Not(HasSubstr("hint"))) << line;
    }
    tarqctl("led color 15 a0b0c0");
    EXPECT_THAT(tarqctl("trace --times"),
                MatchesRegex("(.*\n)*[0-9]{2}-[0-9]{2} [0-9:]{8}\\.[0-9]{3} set_color f a0b0c0 "
                             "\\(refused\\)\n"));
    const std::string trace = mBoard->directory() + "/run/leds.jsonl";
    std::filesystem::rename(trace, trace + ".away");
    EXPECT_EQ(tarqctl("trace"), trace + ": No such file or directory\nhint: scripts/run\n2");
    std::filesystem::rename(trace + ".away", trace);
}

}  // namespace
