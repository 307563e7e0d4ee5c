// A client's calls. Each thread calls on a connection of its own and waits in recv for its reply,
// so replies need no numbers; one-way calls go out on the session's event connection, in front of
// the releases of what they name. When a call fails, the event connection tells why: it is closed
// too if the daemon is gone, and open if the daemon refused something. A child of a fork has the
// descriptors of its parent and must not use them; it gets no binder at all.
#include "host/platform/binder/client/daemon_session.h"

#include <android/log.h>
#include <errno.h>
#include <host/binder_door.h>
#include <host/process_board.h>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include "host/platform/binder/client/thread_connections.h"
#include "host/run/descriptors.h"

namespace android::host {

// After a fork the child shares its parent's connections, and would take answers meant for it.
static std::atomic<bool> gForked{false};

// The session of this process. Never destroyed: threads use it at exit.
static std::mutex& gLock = *new std::mutex;
static std::shared_ptr<DaemonSession>& gCurrent = *new std::shared_ptr<DaemonSession>;
static bool gEventsStarted = false;

static int connectToDaemon() {
    return tarq::host::connectTo(tarq::host::processBoard().binderSocket());
}

// Sends the packet that opens a connection and waits for the daemon's WELCOME: 0 or an errno.
static int introduce(int fd, const PacketHeader& header, PacketHeader* welcome) {
    Packet packet;
    sendPacket(fd, 0, header);  // one that is refused at once cannot be sent, but has its answer
    if (receivePacket(fd, 0, &packet) != Received::kPacket) return ECONNREFUSED;
    *welcome = packet.header;
    if (welcome->kind != PacketKind::kWelcome) return ECONNREFUSED;
    if (welcome->code != kWireVersion) return EPROTONOSUPPORT;
    return -welcome->status;
}

// A call has no status for these. Where nobody listens there is nothing to say: one may come yet.
static void logRefusal(int error) {
    if (error == EMFILE) {
        __android_log_print(ANDROID_LOG_ERROR, "binder",
                            "the daemon refuses a connection: uid %u has as many as a user may",
                            geteuid());
    } else if (error == EPROTONOSUPPORT) {
        __android_log_print(ANDROID_LOG_ERROR, "binder",
                            "the daemon is of another build, which speaks another version of the "
                            "packets than %u",
                            kWireVersion);
    }
}

// The last session is looked at each time: a daemon may have gone without the event thread having
// seen it yet, or without there being one.
std::shared_ptr<DaemonSession> DaemonSession::current(int* error) {
    static const int forkHandler = pthread_atfork(nullptr, nullptr, [] { gForked = true; });
    *error = EPERM;
    if (gForked || forkHandler != 0) return nullptr;
    std::lock_guard<std::mutex> guard(gLock);
    *error = 0;
    if (gCurrent != nullptr && !gCurrent->ended() && !gCurrent->daemonIsGone(0)) return gCurrent;
    const int fd = connectToDaemon();
    PacketHeader open = {};
    open.kind = PacketKind::kOpen;
    open.code = kWireVersion;
    PacketHeader welcome;
    *error = fd < 0 ? -fd : introduce(fd, open, &welcome);
    if (*error != 0) {
        if (fd >= 0) close(fd);
        return nullptr;
    }
    gCurrent = std::make_shared<DaemonSession>(fd, welcome.session, welcome.token);
    if (gEventsStarted) gCurrent->spawnEventThread();
    return gCurrent;
}

std::shared_ptr<DaemonSession> DaemonSession::current() {
    int error = 0;
    std::shared_ptr<DaemonSession> session = current(&error);
    if (session == nullptr) logRefusal(error);
    return session;
}

void DaemonSession::startEvents() {
    std::lock_guard<std::mutex> guard(gLock);
    if (gEventsStarted) return;
    gEventsStarted = true;
    if (gCurrent != nullptr) gCurrent->spawnEventThread();
}

// The daemon's user, in whose name it calls a callback.
static uid_t peerUid(int fd) {
    ucred peer = {};
    socklen_t size = sizeof(peer);
    getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size);
    return peer.uid;
}

DaemonSession::DaemonSession(int eventFd, uint64_t id, uint64_t token)
    : mEventFd(eventFd), mId(id), mToken(token), mDaemonUid(peerUid(eventFd)) {}

DaemonSession::~DaemonSession() {
    close(mEventFd);
}

// The connection is the calling thread's in the kernel's eyes too: its user is the thread's.
int DaemonSession::join(Lane lane) const {
    const int fd = connectToDaemon();
    if (fd < 0) return fd;
    PacketHeader header = {};
    header.kind = PacketKind::kJoin;
    header.code = static_cast<uint32_t>(lane);
    header.session = mId;
    header.token = mToken;
    PacketHeader welcome;
    const int error = introduce(fd, header, &welcome);
    if (error == 0) return fd;
    logRefusal(error);
    close(fd);
    return -error;
}

status_t DaemonSession::transact(uint64_t target, uint32_t code, const Parcel& data, Parcel* reply,
                                 uint32_t flags) {
    if (gForked) return INVALID_OPERATION;
    if ((flags & IBinder::FLAG_ONEWAY) != 0) return transactOneWay(target, code, data, flags);
    if (ended()) return DEAD_OBJECT;
    if (data.dataSize() > kMaxTransaction) return FAILED_TRANSACTION;
    if (hasExported()) takeReleases();
    PacketHeader header = {};
    header.kind = PacketKind::kCall;
    header.target = target;
    header.code = code;
    header.flags = flags;
    ThreadConnections& connections = ThreadConnections::self();
    const int fd = connections.get(*this, target == 0 ? Lane::kRegistry : Lane::kCall);
    status_t result = OK;
    if (fd >= 0 && exchange(fd, header, data, reply, &result)) return result;
    connections.close();
    // The daemon closes one connection alone only to refuse something. A process that dies closes
    // one descriptor after the other.
    constexpr int kAllClosedMs = 100;
    return daemonIsGone(kAllClosedMs) ? DEAD_OBJECT : FAILED_TRANSACTION;
}

// What could not be sent is uncounted; what was sent is the daemon's, whatever becomes of the
// reply.
bool DaemonSession::exchange(int fd, const PacketHeader& call, const Parcel& data, Parcel* reply,
                             status_t* result) {
    std::vector<PacketObject> objects;
    *result = exportObjects(data, &objects);
    if (*result != OK) return true;
    if (sendPacket(fd, 0, call, objects, data.data(), data.dataSize()) != 0) {
        takeBack(objects);
        return false;
    }
    Packet packet;
    if (receivePacket(fd, 0, &packet) != Received::kPacket) return false;
    if (packet.header.kind != PacketKind::kReply) return false;
    Parcel unwanted;
    *result = packet.header.status;
    const status_t imported = importParcel(packet, reply != nullptr ? reply : &unwanted);
    if (*result == OK) *result = imported;
    return true;
}

// A hang-up of the other end is told even while events wait to be read.
bool DaemonSession::daemonIsGone(int waitMs) const {
    pollfd event = {mEventFd, 0, 0};
    int ready;
    do {
        ready = poll(&event, 1, waitMs);
    } while (ready < 0 && errno == EINTR);
    return ready == 1 && (event.revents & POLLHUP) != 0;
}

// A call is refused where there is no room for it. A release waits for room, a second at most; one
// that gets none even so goes with a later one.
int DaemonSession::post(const PacketHeader& header, const std::vector<PacketObject>& objects,
                        const Parcel& data) {
    constexpr int kRoomMs = 1000;
    if (gForked) return -EPIPE;
    const auto send = [&] {
        return sendPacket(mEventFd, MSG_DONTWAIT, header, objects, data.data(), data.dataSize(),
                          true);
    };
    const int sent = send();
    if (sent != -EAGAIN || header.kind != PacketKind::kRelease) return sent;
    pollfd room = {mEventFd, POLLOUT, 0};
    while (poll(&room, 1, kRoomMs) < 0 && errno == EINTR) continue;
    return send();
}

}  // namespace android::host

int tarq::host::openBinder() {
    int error = 0;
    android::host::DaemonSession::current(&error);
    return error;
}
