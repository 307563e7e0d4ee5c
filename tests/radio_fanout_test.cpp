// Remote keys on their way from the board to client processes, one of which dies, one stops and one
// comes late, and to those of a daemon that follows on a killed one.
#include <future>

#include "tests/test_board.h"

namespace {

namespace fs = std::filesystem;

class RadioFanout : public testing::Test {
  protected:
    using Client = std::unique_ptr<ChildProcess>;

    // That is registered.
    static Client client() {
        EXPECT_TRUE(eventually([] {
            return ChildProcess({TARQCTL, "radio", "status"}).wait() == 0;
        }));
        auto started = std::make_unique<ChildProcess>(
                Words{"sh", "-c", "exec " TARQCTL " radio watch 2>&1"});
        EXPECT_NE(started->readLine().find("registered"), std::string::npos);
        return started;
    }

    static std::string text(int number) { return std::to_string(number); }
    // Has the board send the events of these numbers, as fast as the daemon takes them.
    void play(int first, int last) const {
        std::string record;
        for (int i = first; i <= last; ++i) {
            record += R"({"ms":0,"value1":)" + text(i) + R"(,"value2":)" + text(i + 1) +
                      R"(,"value3":)" + text(i + 2) + R"(,"rssi_dbm":)" + text(-i) + "}\n";
        }
        writeFile(mBoard.directory + "/keys.jsonl", record);
        mBoard.ask({"key", "--replay", mBoard.directory + "/keys.jsonl", "--fast"});
    }

    static void expectEvents(ChildProcess& client, int first, int last) {
        if (HasFatalFailure()) return;  // the deadline of one is enough
        for (int i = first; i <= last; ++i) {
            std::string line = client.readLine();
            while (line.rfind("tarqctl: ", 0) == 0) line = client.readLine();  // of a silence
            ASSERT_EQ(line,
                      text(i) + " " + text(i + 1) + " " + text(i + 2) + " -" + text(i) + " dBm");
        }
    }

    // Each registration holds the socket to its client.
    size_t sockets() const {
        size_t count = 0;
        std::error_code gone;
        const std::string all = "/proc/" + std::to_string(mDaemon->pid()) + "/fd";
        for (const auto& entry : fs::directory_iterator(all))
            count += fs::read_symlink(entry, gone).string().rfind("socket:", 0) == 0 ? 1 : 0;
        return count;
    }

    const TestBoard mBoard{"<receiver/>", "ro.vendor.433_check_enable=true\n"};
    std::unique_ptr<ChildProcess> mDaemon = mBoard.startDaemon(TARQD);
};

TEST_F(RadioFanout, the_living_get_every_event_once_whatever_becomes_of_the_others) {
    const Client one = client();
    const Client other = client();
    const size_t socketsOfTheLiving = sockets();
    const Client dying = client();
    const Client stopped = client();

    const auto played = std::async(std::launch::async, [this] { play(1, 500); });
    expectEvents(*stopped, 1, 100);
    stopped->kill(SIGSTOP);
    expectEvents(*dying, 1, 200);
    dying->kill(SIGKILL);
    for (const Client* living : {&one, &other}) expectEvents(**living, 1, 500);
    played.wait();

    const Client late = client();
    play(501, 1000);
    for (const Client* living : {&one, &other, &late}) expectEvents(**living, 501, 1000);
    stopped->kill(SIGCONT);
    expectEvents(*stopped, 101, 1000);
    stopped->kill(SIGKILL);
    late->kill(SIGKILL);
    EXPECT_TRUE(eventually([&] { return sockets() == socketsOfTheLiving; }));

    mDaemon = nullptr;
    mDaemon = mBoard.startDaemon(TARQD);
    const Client newcomer = client();
    play(1001, 1002);
    expectEvents(*newcomer, 1001, 1002);
}

}  // namespace
