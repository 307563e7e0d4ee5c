// Remote keys on their way to many client processes, some of which die, stop or come late. The test
// is the board's receiver.
#include <host/receiver_packets.h>
#include <sys/socket.h>

#include <filesystem>
#include <memory>

#include "host/board/board_socket.h"
#include "tests/child_process.h"
#include "tests/temporary_directory.h"

namespace {

namespace fs = std::filesystem;
using tarq::host::ReceiverPacket;
constexpr int kEvents = 10'000;
constexpr int kStep = 50;  // so many are sent, and their receipt is told, at a time

class RadioFanout : public testing::Test {
  protected:
    using Client = std::unique_ptr<ChildProcess>;

    RadioFanout() {
        setenv("TARQ_BOARD", mBoard.path().c_str(), 1);
        setenv("TARQ_LOG", "/dev/null", 1);
        fs::create_directories(mBoard / "run/properties");
        fs::permissions(mBoard / "run", fs::perms::owner_all);
        writeFile(mBoard / "run/properties/ro.vendor.433_check_enable", "true");
        mListener = tarq::board::listenAt(mBoard.path(), tarq::host::kReceiverSocket);
        startDaemon();
    }
    ~RadioFanout() override {
        for (const int fd : {mListener, mReceiver}) close(fd);
    }

    void startDaemon() {
        mDaemon.reset();
        close(mReceiver);
        mDaemon = std::make_unique<ChildProcess>(std::vector<std::string>{TARQD});
        mReceiver = accept4(mListener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        tell({ReceiverPacket::kState, {1, 0, 0, 0}});
    }

    void tell(const ReceiverPacket& packet) const {
        ASSERT_EQ(static_cast<ssize_t>(sizeof(packet)),
                  ::send(mReceiver, &packet, sizeof(packet), 0));
    }

    static Client client(int registrations = 1) {
        const std::vector<std::string> command = {RADIO_PEER, std::to_string(registrations),
                                                  std::to_string(kStep)};
        auto started = std::make_unique<ChildProcess>(command);
        EXPECT_EQ("registered", started->readLine());
        return started;
    }

    // The next kStep events. The socket has room for them, unless the receive thread waits.
    void send() {
        for (const int end = mSent + kStep; mSent < end && !HasFatalFailure();) {
            ++mSent;
            tell({ReceiverPacket::kReception, {mSent, mSent + 1, mSent + 2, -mSent}});
        }
    }

    void expectTold(const std::string& what) {
        for (const Client& one : mLiving) ASSERT_EQ(what, one->readLine());
    }

    // Sends while the events of the call before may still be on their way, no further ahead.
    void sendMore() {
        send();
        expectTold(std::to_string(mSent - kStep));
    }

    // A client that comes and dies while events flow: it misses none that is sent after it came.
    void visit() {
        const Client visitor = client();
        const int due = mSent + 1;
        sendMore();
        int first = 0;
        ASSERT_EQ(1, sscanf(visitor->readLine().c_str(), "first %d", &first));
        EXPECT_LE(first, due);
        EXPECT_EQ(std::to_string((first + kStep - 1) / kStep * kStep), visitor->readLine());
    }

    // It was told of the events up to last, and of the last one sent, at the latest after a gap.
    void expectOneGap(ChildProcess* client, int last) const {
        int gaps = 0;
        while (last < mSent) {
            const std::string line = client->readLine();
            int number = 0;
            int before = last;
            gaps += sscanf(line.c_str(), "%d after %d", &number, &before) == 2 ? 1 : 0;
            ASSERT_TRUE(last <= before && before <= number) << line;
            last = number;
        }
        EXPECT_EQ(1, gaps);
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

    const TemporaryDirectory mBoard;
    int mListener = -1;
    int mReceiver = -1;  // as the daemon has connected to it
    int mSent = 0;
    std::unique_ptr<ChildProcess> mDaemon;
    std::vector<Client> mLiving;
};

TEST_F(RadioFanout, the_living_get_every_event_once_whatever_becomes_of_the_others) {
    mLiving.push_back(client());
    const size_t socketsWithOne = sockets();
    for (const int registrations : {1, 2, 1000}) mLiving.push_back(client(registrations));
    const Client dying[] = {client(), client(), client()};
    const Client stopped = client();
    const size_t socketsOfEach = (sockets() - socketsWithOne) / 7;

    send();
    expectTold("first 1");
    while (mSent < kEvents && !HasFatalFailure()) {
        sendMore();
        if (mSent == 1000) stopped->kill(SIGSTOP);
        if (mSent % 2500 == 0 && mSent < kEvents) dying[mSent / 2500 - 1]->kill(SIGKILL);
        if (mSent % 1000 == 900) visit();
    }
    expectTold(std::to_string(kEvents));
    EXPECT_TRUE(eventually([&] { return sockets() == socketsWithOne + 4 * socketsOfEach; }));

    // Once it has taken a part of what was kept for it, there is room for more.
    stopped->kill(SIGCONT);
    EXPECT_EQ("first 1", stopped->readLine());
    int last = 0;
    for (; last < 4000; last += kStep) {
        ASSERT_EQ(std::to_string(last + kStep), stopped->readLine());
    }
    send();
    expectTold(std::to_string(mSent));
    expectOneGap(stopped.get(), last);

    startDaemon();
    const Client newcomer = client();
    send();
    EXPECT_EQ("first " + std::to_string(mSent - kStep + 1), newcomer->readLine());
    EXPECT_EQ(std::to_string(mSent), newcomer->readLine());
    for (const Client& one : mLiving) {
        one->kill(SIGKILL);
        EXPECT_EQ("", one->readAll());
    }
}

}  // namespace
