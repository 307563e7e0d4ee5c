// The stand-in for libradiokey against the receiver of a virtual board.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <atomic>
#include <iterator>
#include <numeric>
#include <sstream>
#include <thread>
#include <vector>

#include "radiokey/radiokey.h"
#include "tests/test_board.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// One for all cases: the library finds its board once a process.
class Receiver : public testing::Test {
  protected:
    static void SetUpTestSuite() { sBoard = new TestBoard("<receiver rssi='-90'/>"); }
    static void TearDownTestSuite() { delete std::exchange(sBoard, nullptr); }

    ~Receiver() override {
        radiokey_uninit();
        run("fault receiver none");
    }

    // The exit code; sSaid is what was printed.
    static int ask(const std::string& words) {
        std::istringstream in(words);
        return sBoard->ask({std::istream_iterator<std::string>(in), {}}, &sSaid);
    }
    static void run(const std::string& words) { EXPECT_EQ(ask(words), 0) << words << sSaid; }
    // The three values, and the signal strength right after; none when nothing came.
    static std::vector<int32_t> poll() {
        std::vector<int32_t> values(3);
        if (radiokey_recv_poll(&values[0], &values[1], &values[2]) != 0) return {};
        values.push_back(radiokey_get_rssi_dbm());
        return values;
    }

    static TestBoard* sBoard;
    static std::string sSaid;
};
TestBoard* Receiver::sBoard = nullptr;
std::string Receiver::sSaid;

TEST_F(Receiver, that_comes_late_goes_and_comes_back_is_heard_each_time) {
    const auto isAbsent = [] {
        return radiokey_detect_chip() == 0 && radiokey_get_rssi_dbm() == 0;
    };
    run("fault receiver absent");
    radiokey_init(433);
    EXPECT_TRUE(isAbsent());
    EXPECT_EQ(poll(), std::vector<int32_t>());
    run("fault receiver none");
    EXPECT_EQ(radiokey_detect_chip(), 1);
    EXPECT_EQ(radiokey_get_rssi_dbm(), -90);
    run("key 1 2 3");
    EXPECT_THAT(poll(), ElementsAre(1, 2, 3, -90));

    sBoard->end(SIGTERM);
    EXPECT_FALSE(std::filesystem::exists(sBoard->directory() + "/run"));
    EXPECT_TRUE(isAbsent());
    sBoard->start();
    EXPECT_EQ(radiokey_detect_chip(), 1);  // and tunes it
    run("key 4 5 6");
    EXPECT_THAT(poll(), ElementsAre(4, 5, 6, -90));
    struct stat status = {};
    EXPECT_EQ(stat((sBoard->directory() + "/run/radio.sock").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, S_IFSOCK | 0600u);
}

TEST_F(Receiver, queued_keys_keep_their_order_and_each_its_signal_strength) {
    radiokey_init(433);
    run("key -2147483648 -2 2147483647 --rssi -60");
    run("key 4 5 6 --rssi -70 --repeat 2 --every 1");
    run("key 7 8 9");
    run("set receiver_status -7");
    EXPECT_EQ(radiokey_detect_chip(), 1);  // as it was when the first key came
    EXPECT_THAT(poll(), ElementsAre(INT32_MIN, -2, INT32_MAX, -60));
    for (int i = 0; i < 2; ++i) EXPECT_THAT(poll(), ElementsAre(4, 5, 6, -70));
    EXPECT_THAT(poll(), ElementsAre(7, 8, 9, -70));
    EXPECT_EQ(radiokey_detect_chip(), -7);
    run("set receiver_status 1");
    run("set receiver_rssi -90");
    EXPECT_EQ(radiokey_get_rssi_dbm(), -90);
}

TEST_F(Receiver, key_that_nobody_hears_is_refused_with_the_reason) {
    const auto refusal = [](const std::string& words) {
        EXPECT_EQ(ask(words), 1);
        return sSaid;
    };
    EXPECT_EQ(refusal("key 1 2 3"), "virtual_board: key 1 2 3: not heard: no program listens\n");
    radiokey_init(433);
    radiokey_reset(315);
    EXPECT_THAT(refusal("key 1 2 3 --repeat 2"),
                HasSubstr("not heard: the receiver is tuned to 315; 0 of 2 were heard"));
    run("key 1 2 3 --frequency 315");
    EXPECT_EQ(poll().size(), 4u);
    run("fault receiver mute");
    EXPECT_THAT(refusal("key 1 2 3 --frequency 315"),
                HasSubstr("not heard: the receiver is muted"));
    run("fault receiver absent");
    EXPECT_THAT(refusal("key 1 2 3 --frequency 315"),
                HasSubstr("not heard: the receiver is absent"));
    run("fault receiver none");
    EXPECT_EQ(radiokey_detect_chip(), 1);
    EXPECT_THAT(refusal("key 1 2 3 --frequency 315 --repeat 100000"),
                HasSubstr("not heard: nobody takes what it receives"));
    while (!poll().empty()) continue;
    EXPECT_THAT(refusal("set no_such_node 1"),
                HasSubstr(", receiver, receiver_status, receiver_rssi"));
}

TEST_F(Receiver, is_polled_while_others_tune_it_and_ask_for_its_status) {
    std::atomic<bool> ends{false};
    std::vector<std::thread> others;
    for (const auto call : {+[] { radiokey_reset(433); }, +[] { radiokey_init(433); },
                            +[] { radiokey_detect_chip(); }, +[] { radiokey_get_rssi_dbm(); }}) {
        others.emplace_back([call, &ends] {
            while (!ends) {
                call();
                usleep(100);  // a lock is not fair to who waits for it
            }
        });
    }
    std::vector<int32_t> received;
    std::atomic<size_t> count{0};
    std::thread receive([&] {
        while (!ends) {
            const std::vector<int32_t> values = poll();
            if (values.empty()) continue;
            received.push_back(values[0]);
            ++count;
        }
    });
    EXPECT_TRUE(eventually([] { return ask("key 0 0 0 --rssi -90") == 0; }));
    std::string recording;
    for (int i = 1; i < 300; ++i) {
        recording += "{\"ms\":0,\"value1\":" + std::to_string(i) +
                     ",\"value2\":0,\"value3\":0,\"rssi_dbm\":-90}\n";
    }
    writeFile(sBoard->directory() + "/keys.jsonl", recording);
    run("key --replay " + sBoard->directory() + "/keys.jsonl");
    EXPECT_TRUE(eventually([&] { return count == 300; }));
    ends = true;
    receive.join();
    for (std::thread& other : others) other.join();
    std::vector<int32_t> sent(300);
    std::iota(sent.begin(), sent.end(), 0);
    EXPECT_EQ(received, sent);
}

TEST_F(Receiver, replay_keeps_the_gaps_and_sends_nothing_of_a_recording_with_a_bad_line) {
    using std::chrono::steady_clock;
    const std::string file = sBoard->directory() + "/keys.jsonl";
    const std::string good = R"({"ms":700,"value1":1,"value2":2,"value3":3,"rssi_dbm":-60})"
                             "\n";
    const auto play = [&](const std::string& second, const std::string& how = "") {
        writeFile(file, good + second);
        return ask("key --replay " + file + how);
    };
    const std::string later = R"({"ms":1000,"value1":4,"value2":5,"value3":6,"rssi_dbm":-90})";
    radiokey_init(433);
    auto start = steady_clock::now();
    EXPECT_EQ(play(later), 0) << sSaid;
    EXPECT_GE(steady_clock::now() - start, std::chrono::milliseconds(300));
    EXPECT_THAT(poll(), ElementsAre(1, 2, 3, -60));
    EXPECT_THAT(poll(), ElementsAre(4, 5, 6, -90));
    EXPECT_EQ(
            play(R"({"ms":999999999,"value1":4,"value2":5,"value3":6,"rssi_dbm":-90})", " --fast"),
            0);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(poll().size(), 4u);
    for (const std::string bad :
         {"", "3 keys", R"({"ms":699,"value1":1,"value2":2,"value3":3,"rssi_dbm":-60})",
          R"({"ms":700,"value1":2147483648,"value2":2,"value3":3,"rssi_dbm":-60})",
          R"({"ms":700,"value1":18446744073709551615,"value2":2,"value3":3,"rssi_dbm":1})",
          R"({"ms":700,"value1":1.5,"value2":2,"value3":3,"rssi_dbm":-60})",
          R"({"ms":700,"value1":1,"value2":2,"value3":3})"}) {
        EXPECT_EQ(play(bad + "\n"), 2) << bad;
        EXPECT_THAT(sSaid, HasSubstr(file + ":2: ")) << bad;
    }
    for (const char* words : {"key 1 2", "key 1 2 2147483648", "key 1 2 3 --repeat 0",
                              "key 1 2 3 --every -1", "key 1 2 3 --fast", "key 1 2 3 --replay -"}) {
        EXPECT_EQ(ask(words), 2) << words;
    }
    EXPECT_EQ(poll(), std::vector<int32_t>());
}

}  // namespace
