// tarqctl radio against the daemon and a receiver that is played, recorded and replayed.
#include <gmock/gmock.h>

#include "tests/run_tarqctl.h"
#include "tests/test_board.h"
#include "tools/tarqctl/print_json.h"

using namespace testing;

namespace {

using tarq::tools::Json;
using Words = std::vector<std::string>;

constexpr char kFrequency[] = "/run/properties/persist.radiokey.frequence";
constexpr char kGate[] = "ro.vendor.433_check_enable";

class TarqctlRadio : public Test {
  protected:
    static void SetUpTestSuite() {
        static const TestBoard board("<receiver/>", std::string(kGate) + "=true\n");
        mBoard = &board;
    }
    void SetUp() override {
        std::filesystem::remove(mBoard->directory() + kFrequency);
        startDaemon();
    }
    void startDaemon() {
        mDaemon = nullptr;
        mDaemon = std::make_unique<ChildProcess>(
                Words{TARQD}, Words{"TARQ_LOG=" + mBoard->directory() + "/run/log"});
        ASSERT_EQ(runTarqctl("wait radiokey_service"), "");
    }

    // Registered, with what it says as in runTarqctl(), its first line among it.
    std::unique_ptr<ChildProcess> watch(const std::string& options, std::string* first) const {
        const std::string line = "exec " TARQCTL " radio watch " + options + " 2>&1";
        auto process = std::make_unique<ChildProcess>(Words{"sh", "-c", line});
        *first = said(*process);
        return process;
    }
    static std::string said(ChildProcess& process) {
        const std::string line = process.readLine();
        return line.rfind("tarqctl: ", 0) == 0 ? line.substr(line.rfind("watch")) : line;
    }

    static inline const TestBoard* mBoard = nullptr;
    std::unique_ptr<ChildProcess> mDaemon;
};

TEST_F(TarqctlRadio, status_and_strength_are_the_receivers) {
    const std::tuple<const char*, const char*, const char*, const char*> kRows[] = {
            {"receiver_status", "1", "status", "ready, chip status 1\n"},
            {"receiver_status", "7", "status --json", "{\"ready\":true,\"chip_status\":7}\n"},
            {"receiver_status", "0", "status",
             "ready, chip status 0\non a virtual board chip status 0 says that no receiver "
             "answers\n"},
            {"receiver_status", "-1", "status",
             "not ready: the receiver is being started or set to another frequency\n1"},
            {"receiver_status", "-1", "status --json", "{\"ready\":false,\"chip_status\":-1}\n1"},
            {"receiver_rssi", "-60", "rssi", "-60 dBm\n"},
            {"receiver_rssi", "-100", "rssi --json", "{\"rssi_dbm\":-100}\n"}};
    for (const auto& [name, value, line, expected] : kRows) {
        mBoard->command({"set", name, value});
        // The board tells the library on a socket of its own.
        std::string answer;
        eventually([&, line = line, expected = expected] {
            return (answer = runTarqctl(std::string("radio ") + line)) == expected;
        });
        EXPECT_EQ(answer, expected) << name << " " << value;
    }
    mBoard->command({"set", "receiver_status", "1"});
}

TEST_F(TarqctlRadio, frequency_is_kept_for_the_next_start_and_heard) {
    const std::pair<const char*, const char*> kLines[] = {
            {"radio frequency", "433 (default)\n"},
            {"radio frequency --json", "{\"frequency\":433,\"stored\":null}\n"},
            {"radio frequency 2147483647", "2147483647, also after restarts\n"},
            {"radio frequency", "2147483647\n"},
            {"radio frequency -2147483648", "-2147483648, also after restarts\n"},
            {"radio frequency --json", "{\"frequency\":-2147483648,\"stored\":\"-2147483648\"}\n"},
            {"setprop persist.radiokey.frequence abc", ""},
            {"radio frequency", "0 (what the daemon makes of \"abc\")\n"},
            {"radio frequency 0 --json", "{\"frequency\":0}\n"},
            {"radio frequency", "0\n"},
            {"radio frequency 315", "315, also after restarts\n"}};
    for (const auto& [line, expected] : kLines) EXPECT_EQ(runTarqctl(line), expected) << line;
    startDaemon();
    std::string first, refusal;
    const auto process = watch("-n 1", &first);
    EXPECT_EQ(first, "watch -n 1: registered; frequency 315, chip status 1");
    EXPECT_EQ(mBoard->ask({"key", "1", "2", "3"}, &refusal), 1);
    EXPECT_THAT(refusal, HasSubstr("tuned to 315"));
    mBoard->command({"key", "1", "-2", "3", "--frequency", "315", "--rssi", "-44"});
    EXPECT_EQ(said(*process), "1 -2 3 -44 dBm");
    EXPECT_EQ(said(*process), "watch -n 1: 1 event");
    EXPECT_EQ(process->wait(), 0);
    for (const std::string number : {"frequency 2147483648", "frequency x", "watch -n 0"}) {
        EXPECT_THAT(runTarqctl("radio " + number),
                    AllOf(HasSubstr("\"" + number.substr(number.rfind(' ') + 1) + "\" is "),
                          HasSubstr("\nusage: "), EndsWith("2")));
    }
}

TEST_F(TarqctlRadio, what_was_watched_is_replayed_and_watched_again) {
    std::string first;
    std::vector<Json> events[2];
    const TemporaryDirectory directory;
    const std::string record = directory / "keys.jsonl";
    const Words plays[] = {
            {"key", "-1", "2147483647", "0", "--rssi", "-60", "--repeat", "3", "--every", "120"},
            {"key", "--replay", record}};
    for (int i = 0; i < 2; ++i) {
        const auto process = watch("--json -n 4", &first);
        if (i == 0) mBoard->command({"key", "1", "2", "3", "--rssi", "-2147483648"});
        mBoard->command(plays[i]);
        std::string lines;
        for (int n = 0; n < 4; ++n) {
            const std::string line = process->readLine();
            events[i].push_back(Json::parse(line, nullptr, false));
            ASSERT_TRUE(events[i].back().contains("ms")) << line;
            lines += line + "\n";
        }
        EXPECT_EQ(said(*process), "watch -n 4: 4 events");
        writeFile(record, lines);
    }
    EXPECT_EQ(events[0][0]["rssi_dbm"], INT32_MIN);
    for (int n = 0; n < 4; ++n) {
        const int64_t gap = events[1][n]["ms"].get<int64_t>() -
                            events[1][n > 0 ? n - 1 : 0]["ms"].get<int64_t>();
        EXPECT_GE(gap, n > 1 ? 100 : 0);
        events[0][n]["ms"] = events[1][n]["ms"];
        EXPECT_EQ(events[0][n], events[1][n]);
    }
    mBoard->command({"set", "receiver_rssi", "-100"});
}

TEST_F(TarqctlRadio, silence_is_explained_by_the_link_that_is_silent) {
    std::string first;
    const auto process = watch("", &first);
    EXPECT_EQ(first, "watch: registered; frequency 433 (default), chip status 1");
    const std::string silence = "watch: nothing for 5 s: ";
    const std::string ready = silence + "the receiver is ready (chip status 1), no key has come";
    EXPECT_EQ(said(*process), ready);
    mBoard->command({"fault", "receiver", "absent"});
    EXPECT_EQ(said(*process), silence + "no receiver answers (chip status 0)");
    mBoard->command({"fault", "receiver", "none"});
    EXPECT_EQ(said(*process), ready);
    mBoard->command({"set", "receiver_status", "-1"});
    EXPECT_EQ(said(*process), silence +
                                      "the receiver is being started or set to another "
                                      "frequency (chip status -1)");
    mBoard->command({"set", "receiver_status", "1"});
    EXPECT_EQ(said(*process), ready);
    mBoard->command({"key", "1", "2", "3"});
    EXPECT_EQ(said(*process), "1 2 3 -100 dBm");
    process->kill(SIGINT);
    EXPECT_EQ(said(*process), "watch: 1 event");
    EXPECT_EQ(process->wait(), 0);
}

TEST_F(TarqctlRadio, watch_ends_with_the_daemon_or_with_its_output) {
    std::string first;
    const auto process = watch("", &first);
    const auto full = watch("2>&1 >/dev/full #", &first);
    mBoard->command({"key", "1", "2", "3"});
    EXPECT_EQ(full->wait(), 2);
    EXPECT_EQ(said(*process), "1 2 3 -100 dBm");
    mDaemon->kill(SIGKILL);
    EXPECT_EQ(said(*process), "watch: 1 event");
    EXPECT_EQ(said(*process), "watch: the daemon ended");
    EXPECT_EQ(process->readLine(), "hint: tarqctl --board " + mBoard->directory() + " log");
    EXPECT_EQ(process->wait(), 2);
}

TEST(TarqctlRadioGate, without_the_property_the_reason_is_told_and_nobody_waits) {
    const TemporaryDirectory board;
    std::filesystem::create_directories(board / "run/properties");
    const Words environment = {"TARQ_BOARD=" + board.path(), "TARQ_LOG=" + board / "run/log"};
    const ChildProcess daemon({TARQD}, environment);
    ChildProcess tool({"sh", "-c",
                       TARQCTL " wait && " TARQCTL " services radiokey_service; " TARQCTL
                               " radio watch 2>&1"},
                      environment);
    const std::string absent = "property " + std::string(kGate) + " is not \"true\"\n";
    EXPECT_EQ(tool.readAll(),
              "radiokey_service absent: " + absent +
                      "tarqctl: radio watch: radiokey_service is not registered: " + absent +
                      "hint: tarqctl --board " + board.path() + " services\n");
    EXPECT_EQ(tool.wait(), 2);
}

}  // namespace
