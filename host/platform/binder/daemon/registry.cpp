// One loop over all descriptors that are not busy with calls: the listener, event connections,
// look-ups, and connections that have not said yet what they are. A connection says so with its
// first packet; one that is for calls then moves to a thread of its own and is not seen here again.
// Whatever is not expected closes the connection it came on, and nothing else.
#include "host/platform/binder/daemon/registry.h"

#include <android/log.h>
#include <errno.h>
#include <stdlib.h>
#include <sys/epoll.h>
#include <sys/random.h>
#include <unistd.h>

#include <utility>

#include "host/platform/binder/daemon/handlers.h"
#include "host/platform/utils/start_thread.h"
#include "host/run/standard_descriptors.h"

namespace android::host {

using std::chrono::steady_clock;

// How long accepting pauses when the process has no descriptor left.
static constexpr int kPauseMs = 100;

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
        const int count = epoll_wait(mEpoll, &event, 1, mAccepting ? -1 : kPauseMs);
        // The clock decides: where clients keep it busy, epoll_wait never runs into its limit.
        if (!mAccepting && steady_clock::now() >= mPauseEnd) {
            mAccepting = true;
            watch(EPOLL_CTL_ADD, mListener, nullptr);
        }
        if (count != 1) continue;
        if (event.data.ptr == nullptr) {
            acceptOne();
        } else {
            receive(static_cast<Connection*>(event.data.ptr));
        }
    }
}

// One a turn, so that a client that connects without end delays nobody's look-ups.
void Registry::acceptOne() {
    const int fd = tarq::host::aboveStandard(accept4(mListener, nullptr, nullptr, SOCK_CLOEXEC));
    if (fd >= 0) {
        std::unique_ptr<Connection> connection = Connection::admit(fd);
        if (connection != nullptr) watch(EPOLL_CTL_ADD, fd, connection.release());
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
    const Received received = receivePacket(connection->fd, MSG_DONTWAIT, &packet);
    if (received == Received::kNothing) return;
    if (received == Received::kPacket && handle(connection, packet)) return;
    if (received == Received::kMalformed) connection->complain("malformed packet");
    drop(connection);
}

// What may come depends on what the connection is: events, look-ups, or nothing yet.
bool Registry::handle(Connection* connection, const Packet& packet) {
    const PacketHeader& header = packet.header;
    if (connection->isEvent) {
        if (header.kind == PacketKind::kRelease &&
            connection->session->peerReleased(header.target, header.count)) {
            return true;
        }
    } else if (connection->session != nullptr) {
        if (header.kind == PacketKind::kCall) return connection->run(packet);
    } else if (header.kind == PacketKind::kOpen) {
        return openSession(connection);
    } else if (header.kind == PacketKind::kJoin) {
        return joinSession(connection, header);
    }
    connection->complain("unexpected packet");
    return false;
}

// Sent without waiting: the socket of a client that has just come has room.
static bool welcome(const Connection& connection) {
    PacketHeader header = {};
    header.kind = PacketKind::kWelcome;
    header.session = connection.session->id;
    header.token = connection.session->token;
    return sendPacket(connection.fd, MSG_DONTWAIT, header) == 0;
}

// The token is what a connection has to know to join: ids are counted, and could be guessed.
bool Registry::openSession(Connection* connection) {
    uint64_t token = 0;
    if (getrandom(&token, sizeof(token), 0) != sizeof(token)) return false;
    connection->session = std::make_shared<ClientSession>(connection->fd, connection->peer,
                                                          mNextSession++, token);
    connection->isEvent = true;
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
    connection->session = session;
    connection->lane = static_cast<Lane>(join.code);
    if (!welcome(*connection)) return false;
    if (connection->lane == Lane::kCall) {
        epoll_ctl(mEpoll, EPOLL_CTL_DEL, connection->fd, nullptr);
        serveOnThread(std::unique_ptr<Connection>(connection));
    }
    return true;
}

// The shutdown frees threads that wait to send events: their session's descriptor stays open as
// long as they hold it.
void Registry::drop(Connection* connection) {
    epoll_ctl(mEpoll, EPOLL_CTL_DEL, connection->fd, nullptr);
    if (connection->isEvent) {
        shutdown(connection->fd, SHUT_RDWR);
        mSessions.erase(connection->session->id);
        connection->session->end();
    }
    delete connection;
}

}  // namespace android::host
