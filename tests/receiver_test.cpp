// The stand-in for libradiokey against the receiver of a virtual board, both switched off and on,
// tuned and made to fail.
#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "radiokey/radiokey.h"
#include "tests/test_board.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// One for all cases: the library finds its board once a process.
class Receiver : public testing::Test {
  protected:
    static void SetUpTestSuite() { sBoard = new TestBoard("<receiver rssi='-90'/>"); }
    static void TearDownTestSuite() { delete std::exchange(sBoard, nullptr); }

    ~Receiver() override {
        radiokey_uninit();
        run("fault receiver none");
    }

    static std::string run(const std::string& words, int code = 0) {
        return sBoard->ask(wordsOf(words), code);
    }
    static void expectRefusal(const std::string& words, const std::string& why) {
        EXPECT_THAT(run(words, 1), HasSubstr(why)) << words;
    }
    // The three values, and the signal strength right after; none when nothing came.
    static std::vector<int32_t> poll() {
        std::vector<int32_t> values(3);
        if (radiokey_recv_poll(&values[0], &values[1], &values[2]) != 0) return {};
        values.push_back(radiokey_get_rssi_dbm());
        return values;
    }
    static std::pair<int32_t, int32_t> state() {
        return {radiokey_detect_chip(), radiokey_get_rssi_dbm()};
    }

    static inline TestBoard* sBoard = nullptr;
};

TEST_F(Receiver, that_comes_late_goes_and_comes_back_is_heard_each_time) {
    run("fault receiver absent");
    radiokey_init(433);
    EXPECT_EQ(state(), std::pair(0, 0));
    const auto start = steady_clock::now();
    EXPECT_THAT(poll(), IsEmpty());
    EXPECT_GE(steady_clock::now() - start, milliseconds(900));
    run("fault receiver none");
    for (const int signal : {SIGTERM, SIGKILL}) {
        EXPECT_EQ(state(), std::pair(1, -90));
        run("key 1 2 3");
        sBoard->end(signal);
        EXPECT_EQ(std::filesystem::exists(sBoard->directory + "/run"), signal == SIGKILL);
        EXPECT_EQ(state(), std::pair(0, 0));
        sBoard->start();
        EXPECT_EQ(state(), std::pair(1, -90));
        EXPECT_THAT(poll(), ElementsAre(1, 2, 3, -90));
        EXPECT_EQ(state(), std::pair(1, -90));  // and is tuned
        run("key 4 5 6");
        EXPECT_THAT(poll(), ElementsAre(4, 5, 6, -90));
    }
}

TEST_F(Receiver, key_right_after_a_start_waits_for_a_program_that_polls) {
    radiokey_init(433);
    sBoard->end(SIGTERM);
    std::vector<int32_t> heard;
    std::thread poller([&heard] {
        for (int polls = 0; heard.empty() && polls < 5; ++polls) heard = poll();
    });
    sBoard->start();
    run("key 1 2 3");
    poller.join();
    EXPECT_THAT(heard, ElementsAre(1, 2, 3, -90));
}

TEST_F(Receiver, queued_keys_keep_their_order_and_each_its_signal_strength) {
    radiokey_init(433);
    run("key -2147483648 -2 2147483647 --rssi -60");
    run("key 4 5 6 --rssi -70 --repeat 2 --every 1");
    run("key 7 8 9");
    EXPECT_EQ(state(), std::pair(1, -70));
    run("set receiver_status -7");
    run("set receiver_rssi -90");
    EXPECT_THAT(poll(), ElementsAre(INT32_MIN, -2, INT32_MAX, -60));
    for (int i = 0; i < 2; ++i) EXPECT_THAT(poll(), ElementsAre(4, 5, 6, -70));
    EXPECT_THAT(poll(), ElementsAre(7, 8, 9, -70));
    EXPECT_EQ(state(), std::pair(-7, -90));
    run("set receiver_status 1");
}

TEST_F(Receiver, key_that_nobody_hears_is_refused_with_the_reason) {
    expectRefusal("key 1 2 3", "key 1 2 3: not heard: no program listens");
    radiokey_init(433);
    radiokey_reset(-2147483647);
    expectRefusal(
            "key 1 2 3 --repeat 2",
            "not heard: the receiver is tuned to -2147483647, the key was sent at 433; 0 of 2 "
            "were heard");
    const std::string key = "key 1 2 3 --frequency -2147483647";
    run(key);
    EXPECT_THAT(poll(), ElementsAre(1, 2, 3, -90));
    run("fault receiver mute");
    expectRefusal(key, "not heard: the receiver is muted");
    run("fault receiver absent");
    expectRefusal(key, "not heard: the receiver is absent");
    run("fault receiver none");
    const std::string said = run(key + " --repeat 100000", 1);
    EXPECT_THAT(said, HasSubstr("not heard: nobody takes what it receives; "));
    int heard = std::stoi(said.substr(said.rfind("; ") + 2));
    while (!poll().empty()) --heard;
    EXPECT_EQ(heard, 0);
    radiokey_uninit();
    expectRefusal(key, "no program listens");
    const std::pair<const char*, const char*> kNodes[] = {
            {"set no_such_node 1", "/data, receiver_status, receiver_rssi\n"},
            {"fault no_such_node mute", "/data, receiver\n"},
            {"hold no_such_node", "/data\n"},
            {"hold receiver", "of a receiver, receiver_status and receiver_rssi can be set, "},
            {"fault coprocessor late", ": no co-processor is fitted\n"},
            {"set coprocessor_version 1.2.3", ": no co-processor is fitted\n"}};
    for (const auto& [words, why] : kNodes) expectRefusal(words, why);
    expectRefusal("fault receiver no_such", "mute");
}

TEST_F(Receiver, is_polled_while_others_tune_it_ask_and_switch_it_off_and_on) {
    std::atomic<bool> ends{false};
    std::atomic<int> count{0};
    std::vector<std::thread> threads;
    const auto repeat = [&](const std::function<void()>& call) {
        threads.emplace_back([&ends, call] {
            for (; !ends; usleep(100)) call();  // a lock is not fair to who waits for it
        });
    };
    repeat([] { radiokey_reset(433); });
    repeat([] { radiokey_get_rssi_dbm(); });
    repeat([&count] { count += poll() == std::vector<int32_t>{1, 2, 3, -90} ? 1 : 0; });
    for (const int due : {150, 300}) {
        sBoard->end(SIGTERM);
        sBoard->start();
        run("key 1 2 3 --repeat 150");
        EXPECT_TRUE(eventually([&] { return count == due; })) << count;
    }
    ends = true;
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(count, 300);
}

TEST_F(Receiver, replay_sends_nothing_of_a_recording_with_a_bad_line) {
    const std::string file = sBoard->directory + "/keys.jsonl";
    const auto play = [&](const std::string& second, int code, const std::string& how = "") {
        writeFile(file, R"({"ms":700,"value1":1,"value2":2,"value3":3,"rssi_dbm":-60})"
                        "\n" + second +
                                "\n");
        return run("key --replay " + file + how, code);
    };
    radiokey_init(433);
    play(R"({"ms":999999,"value1":4,"value2":5,"value3":6,"rssi_dbm":-9})", 0, " --fast");
    EXPECT_THAT(poll(), ElementsAre(1, 2, 3, -60));
    EXPECT_THAT(poll(), ElementsAre(4, 5, 6, -9));
    for (const std::string bad :
         {"3 keys", R"({"ms":699,"value1":1,"value2":2,"value3":3,"rssi_dbm":-60})",
          R"({"ms":700,"value1":2147483648,"value2":2,"value3":3,"rssi_dbm":-60})",
          R"({"ms":700,"value1":18446744073709551615,"value2":2,"value3":3,"rssi_dbm":1})",
          R"({"ms":700,"value1":1.5,"value2":2,"value3":3,"rssi_dbm":-60})",
          R"({"ms":700,"value1":1,"value2":2,"value3":3})"}) {
        EXPECT_THAT(play(bad, 2), HasSubstr(file + ":2: ")) << bad;
    }
    for (const char* words : {"key 1 2", "key 1 2 2147483648", "key 1 2 3 --repeat 0",
                              "key 1 2 3 --every -1", "key 1 2 3 --fast", "key 1 2 3 --replay -"}) {
        run(words, 2);
    }
    EXPECT_THAT(poll(), IsEmpty());
}

}  // namespace
