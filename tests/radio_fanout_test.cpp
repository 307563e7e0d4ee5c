// Remote keys on their way from the board to client processes, one of which dies, one stops and one
// comes late, and to those of a daemon that follows on a killed one.
#include <gmock/gmock.h>

#include <filesystem>
#include <future>
#include <memory>

#include "tests/child_process.h"
#include "tests/test_board.h"

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

class RadioFanout : public testing::Test {
  protected:
    using Client = std::unique_ptr<ChildProcess>;

    static Client client(int registrations = 1) {
        auto started =
                std::make_unique<ChildProcess>(Words{RADIO_PEER, std::to_string(registrations)});
        EXPECT_EQ("registered", started->readLine());
        return started;
    }

    // Has the board send the events of these numbers, as fast as the daemon takes them.
    void play(int first, int last) const {
        std::string record;
        for (int i = first; i <= last; ++i) {
            const auto text = [i](int more) { return std::to_string(i + more); };
            record += R"({"ms":0,"value1":)" + text(0) + R"(,"value2":)" + text(1) +
                      R"(,"value3":)" + text(2) + R"(,"rssi_dbm":)" + std::to_string(-i) + "}\n";
        }
        writeFile(mBoard.directory() + "/keys.jsonl", record);
        std::string said;
        const Words words = {"key", "--replay", mBoard.directory() + "/keys.jsonl", "--fast"};
        EXPECT_EQ(mBoard.ask(words, &said), 0) << said;
    }

    static void expectEvents(ChildProcess& client, int first, int last) {
        if (HasFatalFailure()) return;  // the deadline of one is enough
        for (int i = first; i <= last; ++i) ASSERT_EQ(std::to_string(i), client.readLine());
    }

    // Each registration holds the socket to its client.
    size_t sockets() const {
        size_t count = 0;
        std::error_code gone;
        const std::string all = "/proc/" + std::to_string(mDaemon->pid()) + "/fd";
        for (const auto& entry : fs::directory_iterator(all)) {
            count += fs::read_symlink(entry, gone).string().rfind("socket:", 0) == 0 ? 1 : 0;
        }
        return count;
    }

    const TestBoard mBoard{"<receiver/>", "ro.vendor.433_check_enable=true\n"};
    const Words mLog = {"TARQ_LOG=/dev/null"};
    std::unique_ptr<ChildProcess> mDaemon = std::make_unique<ChildProcess>(Words{TARQD}, mLog);
};

TEST_F(RadioFanout, the_living_get_every_event_once_whatever_becomes_of_the_others) {
    const Client once = client();
    const Client thrice = client(3);
    const size_t socketsOfTheLiving = sockets();
    const Client dying = client();
    const Client stopped = client();

    const auto played = std::async(std::launch::async, [this] { play(1, 500); });
    expectEvents(*stopped, 1, 100);
    stopped->kill(SIGSTOP);
    expectEvents(*dying, 1, 200);
    dying->kill(SIGKILL);
    for (const Client* living : {&once, &thrice}) expectEvents(**living, 1, 500);
    played.wait();

    const Client late = client();
    play(501, 1000);
    for (const Client* living : {&once, &thrice, &late}) expectEvents(**living, 501, 1000);
    stopped->kill(SIGCONT);
    expectEvents(*stopped, 101, 1000);
    stopped->kill(SIGKILL);
    late->kill(SIGKILL);
    EXPECT_TRUE(eventually([&] { return sockets() == socketsOfTheLiving; }));

    mDaemon = nullptr;
    std::string refusal;
    EXPECT_EQ(1, mBoard.ask({"key", "1", "2", "3"}, &refusal));
    EXPECT_THAT(refusal, testing::HasSubstr("not heard: no program listens"));
    mDaemon = std::make_unique<ChildProcess>(Words{TARQD}, mLog);
    const Client newcomer = client();
    play(1001, 1002);
    expectEvents(*newcomer, 1001, 1002);
    for (const Client* old : {&once, &thrice}) {
        (*old)->kill(SIGKILL);
        EXPECT_EQ("", (*old)->readAll());
    }
}

}  // namespace
