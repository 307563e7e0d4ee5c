// tarqctl radio against the daemon and a receiver that is played, recorded and replayed.
#include <gmock/gmock.h>

#include <future>

#include "tests/run_tarqctl.h"
#include "tests/test_board.h"

using namespace testing;

namespace {

class TarqctlRadio : public Test {
  protected:
    static void SetUpTestSuite() {
        static const TestBoard board("<receiver/>", "ro.vendor.433_check_enable=true\n");
        mBoard = &board;
    }
    void SetUp() override {
        std::filesystem::remove(mBoard->properties() + "/persist.radiokey.frequence");
        startDaemon();
    }
    void startDaemon() {
        mDaemon = nullptr;
        mDaemon = mBoard->startDaemon(TARQD);
        ASSERT_EQ(tarqctlSays("wait radiokey_service"), "");
        ASSERT_TRUE(eventually([] { return tarqctlSays("radio status") == kReady; }));
    }
    // Has the board play it: "1 2 3". What it says when nothing hears it.
    static std::string key(const std::string& words, int code = 0) {
        return mBoard->ask(wordsOf("key " + words), code);
    }
    static std::string said(ChildProcess& watch) {
        const std::string line = watch.readLine();
        return line.rfind("tarqctl: ", 0) == 0 ? line.substr(line.find("watch")) : line;
    }

    using Client = std::unique_ptr<ChildProcess>;
    static Client watching(const std::string& options = "2>&1") {
        return std::make_unique<ChildProcess>(
                Words{"sh", "-c", "exec " TARQCTL " radio watch " + options});
    }
    static Client registered(const std::string& options = "2>&1") {
        Client watch = watching(options);
        EXPECT_THAT(said(*watch), HasSubstr("registered"));
        return watch;
    }

    // Has the board send the events of these numbers, as fast as the daemon takes them.
    static void play(int first, int last) {
        std::string record;
        for (int i = first; i <= last; ++i)
            record += R"({"ms":0,"value1":)" + text(i) + R"(,"value2":)" + text(i + 1) +
                      R"(,"value3":)" + text(i + 2) + R"(,"rssi_dbm":)" + text(-i) + "}\n";
        writeFile(mBoard->directory + "/keys.jsonl", record);
        key("--replay " + mBoard->directory + "/keys.jsonl --fast");
    }
    static void expectEvents(ChildProcess& watch, int first, int last) {
        if (HasFatalFailure()) return;  // the deadline of one is enough
        for (int i = first; i <= last; ++i) {
            std::string line = said(watch);
            while (line.rfind("watch: nothing", 0) == 0) line = said(watch);
            ASSERT_EQ(line,
                      text(i) + " " + text(i + 1) + " " + text(i + 2) + " -" + text(i) + " dBm");
        }
    }
    static std::string text(int number) { return std::to_string(number); }
    // Each registration holds the socket to its client.
    size_t sockets() const {
        size_t count = 0;
        std::error_code gone;
        const std::string all = "/proc/" + std::to_string(mDaemon->pid()) + "/fd";
        for (const auto& entry : std::filesystem::directory_iterator(all))
            count += read_symlink(entry, gone).string().rfind("socket:", 0) == 0 ? 1 : 0;
        return count;
    }

    static constexpr char kReady[] = "ready, chip status 1\n";
    static inline const TestBoard* mBoard = nullptr;
    std::unique_ptr<ChildProcess> mDaemon;
};

TEST_F(TarqctlRadio, status_and_strength_are_the_receivers) {
    const std::tuple<const char*, const char*, const char*, const char*> kRows[] = {
            {"status", "0", "status",
             "ready, chip status 0, with which a virtual board says that no receiver answers\n"},
            {"status", "-1", "status",
             "not ready, chip status -1: the receiver is being started or tuned, or says so "
             "itself\n1"},
            {"status", "1", "status --json", "{\"ready\":true,\"chip_status\":1}\n"},
            {"rssi", "-60", "rssi", "-60 dBm\n"},
            {"rssi", "-100", "rssi --json", "{\"rssi_dbm\":-100}\n"}};
    for (const auto& [name, value, line, expected] : kRows) {
        mBoard->command({"set", std::string("receiver_") + name, value});
        EXPECT_EQ(tarqctlSays(std::string("radio ") + line), expected) << value;
    }
}

TEST_F(TarqctlRadio, frequency_is_kept_for_the_next_start) {
    const std::pair<const char*, const char*> kLines[] = {
            {"radio frequency", "433 (default)\n"},
            {"radio frequency --json", "{\"frequency\":433,\"stored\":null}\n"},
            {"radio frequency 2147483647", "2147483647, also after restarts\n"},
            {"radio frequency -2147483648 --json",
             "{\"frequency\":-2147483648}\ntarqctl: radio frequency -2147483648: the number was "
             "handed to the receiver as it is; nobody "
             "tells whether it can be tuned to that\n"},
            {"radio frequency --json", "{\"frequency\":-2147483648,\"stored\":\"-2147483648\"}\n"},
            {"setprop persist.radiokey.frequence abc", ""},
            {"radio frequency", "0 (what the daemon makes of \"abc\")\n"},
            {"radio frequency 315", "315, also after restarts\n"}};
    for (const auto& [line, expected] : kLines) EXPECT_EQ(tarqctlSays(line), expected) << line;
    EXPECT_EQ(key("1 2 3 --frequency 315"), "");
    startDaemon();
    const Client watch = watching("-n 1 2>&1");
    EXPECT_EQ(said(*watch), "watch -n 1: registered; chip status 1; frequency at a start: 315");
    EXPECT_THAT(key("1 2 3", 1),
                HasSubstr("the receiver is tuned to 315, the key was sent at 433"));
    EXPECT_EQ(key("1 -2 3 --frequency 315"), "");
    EXPECT_EQ(said(*watch), "1 -2 3 -100 dBm");
    for (const std::string line : {"frequency 2147483648", "frequency x", "watch -n 0"})
        EXPECT_THAT(tarqctlSays("radio " + line), HasSubstr("\nusage: ")) << line;
}

// A key may be late on its way, so two of them arrive as far apart as they please; but none comes
// before it was sent, and that is not before the watcher has registered.
TEST_F(TarqctlRadio, what_was_watched_is_replayed_and_watched_again) {
    const TemporaryDirectory directory;
    const std::string record = directory / "keys.jsonl";
    int sentAt[4] = {0, 0, 100, 200};  // at the earliest
    for (const bool isReplay : {false, true}) {
        const Client watch = registered("--json -n 4 2>&1");
        if (isReplay) {
            EXPECT_EQ(key("--replay " + record), "");
        } else {
            EXPECT_EQ(key("1 2 3 --rssi -2147483648"), "");
            EXPECT_EQ(key("-1 2147483647 0 --rssi -60 --repeat 3 --every 100"), "");
        }
        std::string lines;
        std::string keys;
        int first = 0;
        for (int& time : sentAt) {
            const std::string line = said(*watch);
            int ms = 0;
            ASSERT_EQ(sscanf(line.c_str(), "{\"ms\":%d,", &ms), 1) << line;
            EXPECT_GE(ms, time);
            if (lines.empty()) first = ms;
            time = ms - first;
            lines += line + "\n";
            keys += line.substr(line.find(','));
        }
        const std::string held = R"(,"value1":-1,"value2":2147483647,"value3":0,"rssi_dbm":-60})";
        EXPECT_EQ(keys, R"(,"value1":1,"value2":2,"value3":3,"rssi_dbm":-2147483648})" + held +
                                held + held);
        EXPECT_EQ(said(*watch), "watch -n 4: 4 events");
        writeFile(record, lines);
    }
    mBoard->command({"set", "receiver_rssi", "-100"});
}

TEST_F(TarqctlRadio, silence_is_explained_by_the_link_that_is_silent) {
    const Client watch = watching();
    EXPECT_EQ(said(*watch),
              "watch: registered; chip status 1; frequency at a start: 433 (default)");
    const std::string nothing = "watch: nothing for 3 s: ";
    const std::string ready = nothing + "the receiver is ready (chip status 1), no key has come";
    EXPECT_EQ(said(*watch), ready);
    mBoard->command({"set", "receiver_status", "-1"});
    EXPECT_THAT(said(*watch), HasSubstr("chip status -1: the receiver is being started or tuned"));
    mBoard->command({"fault", "receiver", "absent"});
    EXPECT_EQ(said(*watch),
              nothing + "chip status 0, with which a virtual board says that no receiver answers");
    mBoard->command({"set", "receiver_status", "1"});
    mBoard->command({"fault", "receiver", "none"});
    EXPECT_EQ(said(*watch), ready);
    EXPECT_EQ(key("1 2 3"), "");
    EXPECT_EQ(said(*watch), "1 2 3 -100 dBm");
    watch->kill(SIGINT);
    EXPECT_EQ(said(*watch), "watch: 1 event");
    EXPECT_EQ(watch->wait(), 0);
}

TEST_F(TarqctlRadio, watch_ends_with_its_output_or_with_the_daemon) {
    const Client watch = registered(), full = registered("2>&1 >/dev/full");
    const Client closed = watching("2>&1 >&-");
    EXPECT_THAT(closed->readAll(), EndsWith("standard output: cannot be written: it is closed\n"));
    EXPECT_EQ(closed->wait(), 2);
    mDaemon->kill(SIGSTOP);
    EXPECT_EQ(key("1 2 3 --rssi -60"), "");
    mBoard->command({"set", "receiver_rssi", "-100"});  // leaves the key's strength as it was
    mDaemon->kill(SIGCONT);
    EXPECT_EQ(full->wait(), 2);
    mDaemon->kill(SIGKILL);
    EXPECT_EQ(watch->readAll(),
              "1 2 3 -60 dBm\ntarqctl: radio watch: 1 event\n"
              "tarqctl: radio watch: the daemon ended\nhint: tarqctl --board " +
                      mBoard->directory + " log\n");
    EXPECT_EQ(watch->wait(), 2);
}

TEST_F(TarqctlRadio, watch_ends_with_its_time_whoever_is_stopped_meanwhile) {
    const Client forever = watching("--for 0.1 2>&1");
    EXPECT_THAT(forever->readAll(), EndsWith("watch --for 0.1: 0 events in 0.1 s\n"));
    EXPECT_EQ(forever->wait(), 0);
    const Client enough = registered("-n 1 --for 20 2>&1"), few = registered("-n 2 --for 5 2>&1");
    EXPECT_EQ(key("1 2 3 --rssi -100"), "");
    EXPECT_EQ(enough->wait(), 0);
    EXPECT_EQ(said(*few), "1 2 3 -100 dBm");
    mDaemon->kill(SIGSTOP);
    EXPECT_THAT(said(*few), HasSubstr("nothing for 3 s: the daemon is stopped (process "));
    EXPECT_EQ(said(*few), "watch -n 2 --for 5: 1 event in 5 s, 2 were to come");
    EXPECT_EQ(few->wait(), 1);
    mDaemon->kill(SIGCONT);
}

TEST_F(TarqctlRadio, watch_and_followers_end_with_the_board) {
    TestBoard board("<receiver/><leds count='1'/><coprocessor manufacturer='1' version='1.2.3'/>",
                    "ro.vendor.433_check_enable=true\n");
    const auto daemon = board.startDaemon(TARQD);
    EXPECT_EQ(ChildProcess({TARQCTL, "wait"}).wait(), 0);
    const Client watch = registered();
    ChildProcess trace({"sh", "-c", "exec " TARQCTL " trace -f 2>&1"});
    ChildProcess serial({"sh", "-c", "exec " TARQCTL " serial -f 2>&1"});
    writeFile(board.device("/sys/class/rgbled/set_color"), "0 ff0000");
    EXPECT_EQ(said(trace), "set_color 0 ff0000");
    EXPECT_TRUE(eventually([&] {  // it follows
        return readFile("/proc/" + std::to_string(serial.pid()) + "/wchan") == "hrtimer_nanosleep";
    }));
    board.end(SIGTERM);
    setenv("TARQ_BOARD", mBoard->directory.c_str(), 1);
    EXPECT_THAT(watch->readAll(), EndsWith(" has ended\nhint: scripts/run\n"));
    EXPECT_EQ(watch->wait(), 2);
    EXPECT_THAT(serial.readAll(), HasSubstr("skipped\ntarqctl: serial -f: the board in "));
    EXPECT_EQ(serial.wait(), 2);
    EXPECT_THAT(trace.readAll(), HasSubstr("tarqctl: trace -f: the board in "));
}

// One of the watchers dies, one stops and one comes late; and the daemon is followed by another.
TEST_F(TarqctlRadio, the_living_get_every_event_once_whatever_becomes_of_the_others) {
    const Client one = registered(), other = registered();
    const size_t socketsOfTheLiving = sockets();
    const Client dying = registered(), stopped = registered();

    const auto played = std::async(std::launch::async, [] { play(1, 500); });
    expectEvents(*stopped, 1, 100);
    stopped->kill(SIGSTOP);
    expectEvents(*dying, 1, 200);
    dying->kill(SIGKILL);
    for (const Client* living : {&one, &other}) expectEvents(**living, 1, 500);
    played.wait();

    const Client late = registered();
    play(501, 1000);
    for (const Client* living : {&one, &other, &late}) expectEvents(**living, 501, 1000);
    stopped->kill(SIGCONT);
    expectEvents(*stopped, 101, 1000);
    stopped->kill(SIGKILL);
    late->kill(SIGKILL);
    EXPECT_TRUE(eventually([&] { return sockets() == socketsOfTheLiving; }));

    startDaemon();
    const Client newcomer = registered();
    play(1001, 1002);
    expectEvents(*newcomer, 1001, 1002);
}

}  // namespace
