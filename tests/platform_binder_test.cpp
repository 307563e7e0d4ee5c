// The binder between real processes: a daemon, this test as its client, and peers.
#include <binder/ProcessState.h>

#include <thread>

#include "host/platform/binder/wire.h"
#include "host/run/descriptors.h"
#include "tests/child_process.h"
#include "tests/echo_service.h"
#include "tests/plain_board.h"

using namespace android;
using echo::ask;
using echo::call;

class BinderTest : public ::testing::Test {
  protected:
    BinderTest() {
        allow(std::filesystem::perms::owner_all);
        start();
    }

    void start(const Words& command = {ECHO_DAEMON}) {
        mDaemon.reset();
        mDaemon = std::make_unique<ChildProcess>(command);
        ASSERT_EQ("ready", mDaemon->readLine());
    }

    void allow(std::filesystem::perms permissions) {
        for (const auto& part : {mBoard.directory, mBoard.run()})
            std::filesystem::permissions(part, permissions);
    }

    static std::unique_ptr<ChildProcess> peer(Words command, uid_t uid = getuid()) {
        command.insert(command.begin(), ECHO_PEER);
        return std::make_unique<ChildProcess>(command, Words{}, uid);
    }

    // A client process with a callback that the daemon keeps, and which prints what it is told.
    static std::unique_ptr<ChildProcess> keeper() {
        auto client = peer({"keep"});
        EXPECT_EQ("kept", client->readLine());
        return client;
    }
    // How many of so many one-way calls to the callback kept last were accepted.
    static int32_t fire(int32_t calls, int32_t tag) {
        int32_t accepted = -1;
        EXPECT_EQ(OK, call(echo::find(), echo::FIRE, {calls, tag}, &accepted));
        return accepted;
    }

    int rawConnection() const { return tarq::host::connectTo(mBoard.binderSocket()); }

    // With one of this process's descriptors, which nobody has asked for.
    static void sendWithDescriptor(int fd, std::string bytes) {
        iovec part = {bytes.data(), bytes.size()};
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
        msghdr message = {};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof(control);
        auto* const header = reinterpret_cast<cmsghdr*>(control);
        *header = {CMSG_LEN(sizeof(int)), SOL_SOCKET, SCM_RIGHTS};
        memcpy(CMSG_DATA(header), &fd, sizeof(fd));
        sendmsg(fd, &message, MSG_NOSIGNAL);
    }

    static std::string self(uid_t uid = getuid()) {
        return "uid " + std::to_string(uid) + ", own pid";
    }

    const PlainBoard mBoard;
    std::unique_ptr<ChildProcess> mDaemon;
};

struct Recipient : public IBinder::DeathRecipient {
    void binderDied(const wp<IBinder>& who) override {
        last = who;
        ++deaths;
    }
    std::atomic<int> deaths{0};
    wp<IBinder> last;
};

TEST_F(BinderTest, bytes_up_to_the_limit_and_statuses_come_back) {
    const sp<IBinder> service = echo::find();
    ASSERT_TRUE(service);
    for (const size_t size : {0, 4, 4096, 192 * 1024}) {
        Parcel data, reply;
        std::string bytes(size, 'x');
        if (size > 0) bytes[size / 2] = 'y';
        data.write(bytes.data(), bytes.size());
        EXPECT_EQ(OK, service->transact(echo::ECHO, data, &reply)) << size;
        EXPECT_EQ(bytes, std::string(reinterpret_cast<const char*>(reply.data()), size));
    }
    Parcel tooLong, reply;
    tooLong.setDataSize(192 * 1024 + 4);
    EXPECT_EQ(FAILED_TRANSACTION, service->transact(echo::ECHO, tooLong, &reply));
    EXPECT_EQ(FAILED_TRANSACTION, call(service, echo::SIZED, {192 * 1024 + 4}));
    EXPECT_EQ(OK, call(service, echo::SIZED, {192 * 1024}));
    EXPECT_TRUE(service->isBinderAlive());
    for (const int32_t status : {-1, INT32_MIN, -74})
        EXPECT_EQ(status, call(service, echo::STATUS, {status}));
    EXPECT_EQ(OK, call(service, echo::STATUS, {7}));  // a positive one is lost
    EXPECT_EQ(UNKNOWN_TRANSACTION, call(service, 99));
    EXPECT_EQ(OK, service->pingBinder());
}

TEST_F(BinderTest, the_manager_looks_up_lists_and_lets_nobody_else_add) {
    const sp<IServiceManager> manager = defaultServiceManager();
    EXPECT_TRUE(manager->checkService(echo::kName));
    EXPECT_FALSE(manager->checkService(String16("ech")));
    const Vector<String16> names = manager->listServices();
    ASSERT_EQ(3u, names.size());
    EXPECT_TRUE(names[0] == echo::kName);  // the newest first
    EXPECT_EQ(0u, manager->listServices(IServiceManager::DUMP_FLAG_PRIORITY_HIGH).size());
    EXPECT_EQ(-1, manager->addService(String16("mine"), new BBinder));
}

TEST_F(BinderTest, one_object_is_one_proxy_and_comes_home_as_itself) {
    const sp<IBinder> service = echo::find();
    EXPECT_TRUE(service == echo::find());
    const sp<IBinder> mine = new echo::Living;
    const struct {
        sp<IBinder> object;
        bool known;
    } cases[] = {{mine, false},    {mine, true},    {new echo::Living, false},
                 {service, false}, {service, true}, {mine, true}};
    for (const auto& [object, expected] : cases) {
        bool known = !expected;
        EXPECT_EQ(OK, echo::keep(service, object, &known));
        EXPECT_EQ(expected, known);
        EXPECT_TRUE(echo::receive(service, echo::LAST) == object);
    }
}

TEST_F(BinderTest, own_objects_live_as_long_as_the_other_side_holds_them) {
    ProcessState::self()->startThreadPool();
    const sp<IBinder> service = echo::find();
    ASSERT_TRUE(eventually([] { return echo::Living::count() == 0; }));  // those of earlier tests
    echo::keep(service, new echo::Living);
    EXPECT_EQ(1, echo::Living::count());
    EXPECT_EQ(OK, call(service, echo::FORGET));
    EXPECT_TRUE(eventually([] { return echo::Living::count() == 0; }));
    EXPECT_EQ("0 of 1000 live", peer({"unheard"})->readLine());
}

TEST_F(BinderTest, a_callback_may_be_sent_again_while_it_is_let_go) {
    ProcessState::self()->startThreadPool();
    const sp<IBinder> service = echo::find();
    const sp<IBinder> callback = new echo::Living;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int i = 0; i < 2000; ++i) {
                if (echo::keep(service, callback) != OK) ++failures;
                if (call(service, echo::FORGET) != OK) ++failures;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(0, failures);
    EXPECT_EQ(OK, echo::keep(service, callback));
    EXPECT_EQ(1, fire(1, 1));
}

TEST_F(BinderTest, bursts_of_callbacks_arrive_whole_in_order_and_say_who_calls) {
    struct Receiver : public BBinder {
        status_t onTransact(uint32_t, const Parcel& data, Parcel*, uint32_t) override {
            const IPCThreadState* caller = IPCThreadState::self();
            if (caller->getCallingUid() != getuid() || caller->getCallingPid() != 0) return OK;
            const int32_t value = data.readInt32();
            isInOrder = isInOrder && value >= last.exchange(value);
            ++count;
            return OK;
        }
        std::atomic<int> count{0}, last{0};
        std::atomic<bool> isInOrder{true};
    };
    ProcessState::self()->startThreadPool();
    const sp<IBinder> service = echo::find();
    const sp<Receiver> receiver = new Receiver;
    echo::keep(service, receiver);
    for (int32_t i = 0; i < 10; ++i) ASSERT_EQ(1000, fire(1000, i));
    EXPECT_TRUE(eventually([&] { return receiver->count == 10000; }));
    EXPECT_TRUE(receiver->isInOrder);
}

TEST_F(BinderTest, one_way_calls_are_carried_out_whatever_becomes_of_their_target_and_sender) {
    const sp<IBinder> service = echo::find();
    int32_t accepted = 0;
    Parcel data;
    data.writeInt32(0);
    for (int i = 0; i < 2000; ++i) {
        const sp<IBinder> living = echo::receive(service, echo::MAKE);
        if (living->transact(1, data, nullptr, echo::kOneWay) == OK) ++accepted;
    }
    EXPECT_GT(accepted, 1000);
    EXPECT_TRUE(eventually([&] { return ask(service, echo::CALLS) == accepted; }));
    EXPECT_TRUE(eventually([&] { return ask(service, echo::LIVING) == 1; }));
    for (const char* kind : {"oneway", "unread"}) {
        for (int i = 0; i < 10; ++i) EXPECT_EQ(0, peer({"live", kind})->wait());
    }
    EXPECT_TRUE(eventually([&] { return ask(service, echo::CALLS) == accepted + 20; }));
}

TEST_F(BinderTest, one_way_calls_of_an_object_run_one_after_the_other_and_name_their_user) {
    const sp<IBinder> service = echo::find();
    const sp<IBinder> living = defaultServiceManager()->checkService(echo::kLiving);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 3; ++thread) {
        threads.emplace_back([&] {
            Parcel data;
            data.writeInt32(1000);
            for (int i = 0; i < 20; ++i) EXPECT_EQ(OK, living->transact(1, data, nullptr, 1));
        });
    }
    for (std::thread& thread : threads) thread.join();
    ASSERT_TRUE(eventually([&] { return ask(service, echo::CALLS) == 60; }));
    Parcel data, reply;
    service->transact(echo::CALLS, data, &reply);
    reply.readInt32();
    EXPECT_EQ(1, reply.readInt32());
    if (getuid() != 0) return;
    EXPECT_EQ(0, peer({"live", "oneway", "1000"})->wait());
    ASSERT_TRUE(eventually([&] { return ask(service, echo::CALLS) == 61; }));
    service->transact(echo::CALLS, data, &reply);
    reply.setDataPosition(8);
    EXPECT_EQ(1000, reply.readInt32());
}

TEST_F(BinderTest, a_killed_client_is_noticed_once_for_each_link) {
    const sp<IBinder> service = echo::find();
    const auto victim = keeper();
    EXPECT_EQ(1, fire(1, 5));
    EXPECT_EQ("fired 5", victim->readLine());
    EXPECT_EQ(0, ask(service, echo::DEATHS));
    victim->kill(SIGKILL);
    EXPECT_TRUE(eventually([&] { return ask(service, echo::DEATHS) == 1; }));
    EXPECT_EQ(0, fire(3, 6));
    EXPECT_EQ(1, ask(service, echo::DEATHS));
}

TEST_F(BinderTest, a_killed_daemon_is_noticed_and_its_successor_found) {
    ProcessState::self()->startThreadPool();
    const sp<IBinder> service = echo::find();
    const sp<Recipient> recipient = new Recipient;
    const sp<Recipient> unlinked = new Recipient;
    EXPECT_EQ(OK, service->linkToDeath(recipient));
    EXPECT_EQ(OK, service->linkToDeath(unlinked));
    EXPECT_EQ(OK, service->unlinkToDeath(unlinked));
    EXPECT_EQ(NAME_NOT_FOUND, service->unlinkToDeath(unlinked));
    std::thread inCall([&] { EXPECT_EQ(DEAD_OBJECT, call(service, echo::WAIT)); });
    ASSERT_TRUE(eventually([&] { return ask(service, echo::WAITING) == 1; }));

    mDaemon->kill(SIGKILL);
    inCall.join();
    EXPECT_TRUE(eventually([&] { return recipient->deaths == 1; }));
    EXPECT_TRUE(recipient->last == service);
    EXPECT_EQ(0, unlinked->deaths);
    EXPECT_FALSE(service->isBinderAlive());
    EXPECT_EQ(DEAD_OBJECT, call(service, echo::WHO));
    EXPECT_EQ(DEAD_OBJECT, service->linkToDeath(recipient));

    start();
    const sp<IBinder> successor = echo::find();
    ASSERT_TRUE(successor);
    EXPECT_FALSE(successor == service);
    EXPECT_EQ(OK, call(successor, echo::WHO));
}

TEST_F(BinderTest, a_client_killed_inside_its_own_call_costs_one_thread_at_most) {
    const sp<IBinder> service = echo::find();
    const auto victim = peer({"wait"});
    ASSERT_TRUE(eventually([&] { return ask(service, echo::WAITING) == 1; }));
    victim->kill(SIGKILL);
    ASSERT_EQ(128 + SIGKILL, victim->wait());
    EXPECT_EQ(1, ask(service, echo::WAITING));
    EXPECT_EQ(OK, call(service, echo::OPEN_GATE));
    EXPECT_TRUE(eventually([&] { return ask(service, echo::WAITING) == 0; }));
    EXPECT_EQ(OK, call(service, echo::WHO));
}

TEST_F(BinderTest, the_callers_user_is_the_kernels_word) {
    if (getuid() != 0) GTEST_SKIP() << "needs root to be other users";
    allow(std::filesystem::perms(0755));
    start();  // a board is opened when its daemon starts
    EXPECT_EQ(self(2000), peer({"who"}, 2000)->readLine());
    const auto changing = peer({"who", "1000"});
    EXPECT_EQ(self(0), changing->readLine());
    EXPECT_EQ(self(1000), changing->readLine());
}

TEST_F(BinderTest, a_board_is_its_owners_unless_it_is_shared) {
    if (getuid() != 0) GTEST_SKIP() << "needs root to be another user";
    allow(std::filesystem::perms(0755));  // too late for the daemon that runs: its socket is closed
    ASSERT_EQ(0, seteuid(2000));
    EXPECT_EQ(-EACCES, rawConnection());
    ASSERT_EQ(0, seteuid(0));
}

TEST_F(BinderTest, a_child_of_fork_is_refused_and_its_parent_served_on) {
    const auto forking = peer({"fork"});
    for (const std::string& said : {self(), std::string("child refused"), self()})
        EXPECT_EQ(said, forking->readLine());
}

TEST_F(BinderTest, a_stopped_client_delays_nobody_and_loses_only_its_own) {
    const auto stopped = keeper();
    stopped->kill(SIGSTOP);
    const int32_t accepted = fire(50000, 1);
    EXPECT_GT(accepted, 5000);  // what the device keeps for a process, in calls of usual sizes
    EXPECT_LT(accepted, 50000);
    const auto other = keeper();
    EXPECT_EQ(1, fire(1, 2));
    EXPECT_EQ("fired 2", other->readLine());
    stopped->kill(SIGCONT);
    EXPECT_EQ("fired 1", stopped->readLine());
}

TEST_F(BinderTest, sixteen_stuck_calls_leave_a_thread_and_look_ups_need_none) {
    const sp<IBinder> service = echo::find();
    std::vector<std::thread> stuck;
    const auto wait = [&] { EXPECT_EQ(DEAD_OBJECT, call(service, echo::WAIT)); };
    for (int i = 0; i < 16; ++i) stuck.emplace_back(wait);
    ASSERT_TRUE(eventually([&] { return ask(service, echo::WAITING) == 16; }));
    for (int i = 0; i < 4; ++i) stuck.emplace_back(wait);
    const auto other = peer({"keep"});  // finds the service, and waits with its call
    for (int i = 0; i < 100; ++i) EXPECT_TRUE(defaultServiceManager()->checkService(echo::kName));
    mDaemon->kill(SIGKILL);
    for (std::thread& thread : stuck) thread.join();
}

TEST_F(BinderTest, before_the_pool_starts_look_ups_answer_and_calls_wait) {
    mDaemon.reset();
    // Standard input of the daemon is this test's: a pipe that it holds back.
    int hold[2];
    ASSERT_EQ(0, pipe2(hold, O_CLOEXEC));
    const int before = dup(STDIN_FILENO);
    dup2(hold[0], STDIN_FILENO);
    start({ECHO_DAEMON, "--hold"});
    const sp<IBinder> service = echo::find();
    ASSERT_TRUE(service);
    // What has been accepted is carried out, also when who sent it is gone by then.
    EXPECT_EQ(0, peer({"live", "oneway"})->wait());
    EXPECT_EQ(128 + SIGKILL, peer({"live", "twoway"})->wait());
    std::atomic<bool> answered{false};
    std::thread early([&] {
        EXPECT_EQ(OK, call(service, echo::WHO));
        answered = true;
    });
    for (int i = 0; i < 100; ++i) EXPECT_TRUE(defaultServiceManager()->checkService(echo::kName));
    EXPECT_FALSE(answered);
    EXPECT_EQ(1, write(hold[1], "\n", 1));
    early.join();
    EXPECT_TRUE(eventually([&] { return ask(service, echo::CALLS) == 2; }));
    dup2(before, STDIN_FILENO);
}

TEST_F(BinderTest, garbage_ends_its_connection_and_nothing_else) {
    const sp<IBinder> service = echo::find();
    for (int i = 0; i < 1000; ++i) {
        const int fd = rawConnection();
        std::string garbage(static_cast<size_t>(i % 97), static_cast<char>(i));
        // The first packet of a session, then what a hostile client might follow it with.
        if (i % 3 == 0) {
            host::PacketHeader open = {}, welcome = {};
            open.code = host::kWireVersion + (i % 2);  // or of another build, which is refused
            EXPECT_EQ(0, host::sendPacket(fd, 0, open));
            EXPECT_EQ(sizeof(welcome), recv(fd, &welcome, sizeof(welcome), 0));
            EXPECT_EQ(i % 2 == 0 ? 0 : -EPROTONOSUPPORT, welcome.status);
            EXPECT_EQ(host::kWireVersion, welcome.code);
        }
        sendWithDescriptor(fd, garbage);
        char byte;
        EXPECT_GE(0, garbage.empty() ? 0 : recv(fd, &byte, 1, 0)) << i;
        close(fd);
    }
    EXPECT_EQ(OK, call(service, echo::WHO));
    EXPECT_TRUE(eventually([&] { return openDescriptors(mDaemon->pid()) < 20; }));
}

// They say nothing, so they are closed before long; those beyond the user's share at once, and
// told.
TEST_F(BinderTest, a_user_with_many_connections_is_held_to_its_share_and_only_for_a_while) {
    if (getuid() != 0) GTEST_SKIP() << "needs root to be another user";
    allow(std::filesystem::perms(0755));
    start({"/bin/sh", "-c", "ulimit -n 200; exec " ECHO_DAEMON});
    const auto other = keeper();
    ASSERT_EQ(0, seteuid(2000));
    std::vector<int> connections;
    for (int i = 0; i < 150; ++i) connections.push_back(rawConnection());
    ASSERT_EQ(0, seteuid(0));
    host::PacketHeader refusal = {};
    EXPECT_EQ(sizeof(refusal), recv(connections[120], &refusal, sizeof(refusal), 0));
    EXPECT_EQ(-EMFILE, refusal.status);
    EXPECT_EQ(self(), peer({"who"})->readLine());
    char byte;
    EXPECT_EQ(0, recv(connections[0], &byte, 1, 0));
    EXPECT_EQ(self(2000), peer({"who"}, 2000)->readLine());
    for (const int fd : connections) close(fd);
    EXPECT_EQ(1, fire(1, 9));
    EXPECT_EQ("fired 9", other->readLine());
}

TEST_F(BinderTest, a_daemon_without_a_descriptor_left_serves_those_it_has_and_recovers) {
    start({"/bin/sh", "-c", "ulimit -n 32; exec " ECHO_DAEMON});
    const sp<IBinder> service = echo::find();
    EXPECT_EQ(OK, call(service, echo::WHO));
    std::vector<int> connections;
    for (int i = 0; i < 64; ++i) connections.push_back(rawConnection());
    EXPECT_EQ(OK, call(service, echo::WHO));
    for (const int fd : connections) close(fd);
    std::atomic<bool> served{false};
    std::thread newcomer([&] { served = peer({"who"})->readLine().size() > 0; });
    // Also while look-ups keep it busy.
    EXPECT_TRUE(eventually([&] { return echo::find() != nullptr && served; }));
    newcomer.join();
}

TEST_F(BinderTest, a_second_daemon_leaves_the_first_alone) {
    EXPECT_EQ(1, ChildProcess({ECHO_DAEMON}).wait());
    EXPECT_EQ(OK, call(echo::find(), echo::WHO));
    unsetenv("TARQ_BOARD");
    EXPECT_EQ(1, ChildProcess({ECHO_DAEMON}).wait());
}
