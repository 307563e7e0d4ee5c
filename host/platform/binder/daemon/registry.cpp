// One loop over all descriptors that are not busy with calls: the listener, event connections,
// look-ups, and connections that have not said yet what they are. A connection says so with its
// first packet; one that is for calls then moves to a thread of its own and is not seen here again.
// Whatever is not expected closes the connection it came on, and nothing else.
#include "host/platform/binder/daemon/registry.h"

#include <android/log.h>
#include <errno.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/epoll.h>
#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <utility>

#include "host/platform/binder/daemon/handlers.h"
#include "host/platform/binder/daemon/one_way.h"
#include "host/platform/binder/daemon/shares.h"
#include "host/platform/utils/start_thread.h"
#include "host/run/descriptors.h"

namespace android::host {

using std::chrono::steady_clock;

// How long accepting pauses when the process has no descriptor left.
static constexpr int kPauseMs = 100;
// How long a connection has to say what it is.
static constexpr int kPatienceMs = 5000;
// How many bytes of its one-way calls may wait, half of the device's buffer of 1 MiB, and how often
// is looked whether a client with more can be heard again.
static constexpr size_t kMaxOneWay = size_t{512} * 1024;
static constexpr int kNotHeardMs = 10;

void Registry::start(int listener) {
    auto* const registry = new Registry(listener);
    if (!startThread([registry] { registry->run(); })) abort();
}

// The listener is the one descriptor that is watched for no connection.
Registry::Registry(int listener)
    : mListener(listener), mEpoll(tarq::host::aboveStandard(epoll_create1(EPOLL_CLOEXEC))) {
    watch(EPOLL_CTL_ADD, mListener, nullptr);
}

void Registry::watch(int operation, int fd, void* what) {
    epoll_event event = {};
    event.events = EPOLLIN;
    event.data.ptr = what;
    epoll_ctl(mEpoll, operation, fd, &event);
}

void Registry::run() {
    for (;;) {
        epoll_event event;
        const int count = epoll_wait(mEpoll, &event, 1, untilNextLook());
        lookAtTimes();
        if (count != 1) continue;
        if (event.data.ptr == nullptr) {
            acceptOne();
        } else if (mConnections.count(static_cast<Connection*>(event.data.ptr)) != 0) {
            receive(static_cast<Connection*>(event.data.ptr));
        }
    }
}

int Registry::untilNextLook() const {
    if (!mNotHeard.empty()) return kNotHeardMs;
    if (!mAccepting) return kPauseMs;
    return mUnknown.empty() ? -1 : kPatienceMs / 5;
}

// The clock decides: where clients keep it busy, epoll_wait never runs into its limit.
void Registry::lookAtTimes() {
    if (!mAccepting && steady_clock::now() >= mPauseEnd) {
        mAccepting = true;
        watch(EPOLL_CTL_ADD, mListener, nullptr);
    }
    for (; !mUnknown.empty(); mUnknown.pop_front()) {
        const auto [accepted, connection] = mUnknown.front();
        const auto entry = mConnections.find(connection);
        const bool isStill = entry != mConnections.end() && connection->accepted == accepted &&
                             connection->session == nullptr;
        if (!isStill) continue;
        if (steady_clock::now() < accepted + std::chrono::milliseconds(kPatienceMs)) break;
        complain(connection->peer, "does not say what it is");
        drop(connection);
    }
    const auto stillFull = [this](Connection* connection) {
        pollfd closed = {connection->fd, 0, 0};
        if (poll(&closed, 1, 0) == 1 && (closed.revents & POLLHUP) != 0) connection->session->end();
        if (connection->session->oneWayBytes > kMaxOneWay) return true;
        watch(EPOLL_CTL_ADD, connection->fd, connection);
        return false;
    };
    mNotHeard.erase(std::remove_if(mNotHeard.begin(), mNotHeard.end(), std::not_fn(stillFull)),
                    mNotHeard.end());
}

// One a turn, so that a client that connects without end delays nobody's look-ups.
void Registry::acceptOne() {
    const int fd = tarq::host::aboveStandard(accept4(mListener, nullptr, nullptr, SOCK_CLOEXEC));
    if (fd >= 0) {
        std::unique_ptr<Connection> connection = Connection::admit(fd);
        if (connection == nullptr) return;
        Connection* const address = connection.get();
        watch(EPOLL_CTL_ADD, fd, address);
        mUnknown.emplace_back(address->accepted, address);
        mConnections[address] = std::move(connection);
    } else if (errno == EMFILE || errno == ENFILE || errno == ENOMEM) {
        mAccepting = false;
        mPauseEnd = steady_clock::now() + std::chrono::milliseconds(kPauseMs);
        epoll_ctl(mEpoll, EPOLL_CTL_DEL, mListener, nullptr);
        __android_log_print(ANDROID_LOG_WARN, "binder", "no descriptor left for a connection");
    }
}

// One packet a turn, for the same reason; epoll reports the connection again while there are more.
void Registry::receive(Connection* connection) {
    Packet packet;
    uid_t sender = connection->peer.uid;
    // Of others the sender is not asked: what else a packet might carry has no place to go then.
    uid_t* const asked = connection->isEvent ? &sender : nullptr;
    const Received received = receivePacket(connection->fd, MSG_DONTWAIT, &packet, asked);
    if (received == Received::kNothing) return;
    if (received == Received::kPacket && handle(connection, packet, sender)) return;
    if (received == Received::kMalformed) complain(connection->peer, "malformed packet");
    drop(connection);
}

// What may come depends on what the connection is: events, look-ups, or nothing yet.
bool Registry::handle(Connection* connection, const Packet& packet, uid_t sender) {
    const PacketHeader& header = packet.header;
    if (connection->session == nullptr) {
        if (header.kind == PacketKind::kOpen) return openSession(connection, header);
        if (header.kind == PacketKind::kJoin) return joinSession(connection, header);
    } else if (connection->isEvent && header.kind == PacketKind::kRelease) {
        if (connection->session->peerReleased(header.target, header.count)) return true;
    } else {
        auto call = std::make_unique<Call>();
        if (connection->take(packet, sender, call.get())) {
            if (!connection->isEvent) return connection->run(*call);
            takeOneWay(connection, std::move(call));
            return true;
        }
    }
    complain(connection->peer, "unexpected packet");
    return false;
}

void Registry::takeOneWay(Connection* connection, std::unique_ptr<Call> call) {
    if (call->status == OK) queueOneWay(std::move(call));
    if (connection->session->oneWayBytes <= kMaxOneWay) return;
    epoll_ctl(mEpoll, EPOLL_CTL_DEL, connection->fd, nullptr);
    mNotHeard.push_back(connection);
}

// Sent without waiting: the socket of a client that has just come has room.
static bool welcome(const Connection& connection) {
    PacketHeader header = welcomeOf(0);
    header.session = connection.session->id;
    header.token = connection.session->token;
    return sendPacket(connection.fd, MSG_DONTWAIT, header) == 0;
}

// The token is what a connection has to know to join: ids are counted, and could be guessed.
bool Registry::openSession(Connection* connection, const PacketHeader& open) {
    if (open.code != kWireVersion) {
        sendPacket(connection->fd, MSG_DONTWAIT, welcomeOf(-EPROTONOSUPPORT));
        const std::string told = "it speaks version " + std::to_string(open.code) +
                                 " of the packets, this daemon version " +
                                 std::to_string(kWireVersion) + ": they are of different builds";
        complain(connection->peer, told.c_str());
        return false;
    }
    uint64_t token = 0;
    if (getrandom(&token, sizeof(token), 0) != sizeof(token)) return false;
    connection->joins(std::make_shared<ClientSession>(connection->fd, connection->peer,
                                                      mNextSession++, token));
    connection->isEvent = true;
    const int on = 1;
    setsockopt(connection->fd, SOL_SOCKET, SO_PASSCRED, &on, sizeof(on));
    mSessions[connection->session->id] = connection->session;
    return welcome(*connection);
}

// The process must be the session's. The user may have changed since: a call's is its connection's.
// A client that still holds an object of the daemon before this one is refused without a word.
bool Registry::joinSession(Connection* connection, const PacketHeader& join) {
    const auto entry = mSessions.find(join.session);
    if (entry == mSessions.end()) return false;
    const std::shared_ptr<ClientSession>& session = entry->second;
    if (session->token != join.token || session->peer.pid != connection->peer.pid) return false;
    if (join.code > static_cast<uint32_t>(Lane::kRegistry)) return false;
    connection->joins(session);
    connection->lane = static_cast<Lane>(join.code);
    if (!welcome(*connection)) return false;
    if (connection->lane == Lane::kCall) {
        epoll_ctl(mEpoll, EPOLL_CTL_DEL, connection->fd, nullptr);
        const auto entry = mConnections.find(connection);
        serveOnThread(std::move(entry->second));
        mConnections.erase(entry);
    }
    return true;
}

void Registry::drop(Connection* connection) {
    epoll_ctl(mEpoll, EPOLL_CTL_DEL, connection->fd, nullptr);
    if (connection->isEvent) {
        mSessions.erase(connection->session->id);
        connection->session->end();
    }
    mConnections.erase(connection);
}

}  // namespace android::host
