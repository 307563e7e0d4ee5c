// The two directions between the daemon and a client. Inward: a call is run on the thread that
// received it, under the identity that the kernel gives of the connection, and its reply goes back
// on the same connection. Outward: events of a session go out in order and without waiting; what
// the client does not take in time is kept for a thread that waits for it, and beyond a limit lost
// for this client alone.
#include "host/platform/binder/daemon/connection.h"

#include <android/log.h>
#include <binder/IPCThreadState.h>
#include <errno.h>
#include <unistd.h>

#include <map>
#include <mutex>
#include <set>
#include <utility>

#include "host/platform/binder/daemon/service_manager.h"
#include "host/platform/utils/start_thread.h"

namespace android::host {

ClientSession::ClientSession(int eventFd, const ucred& peer, uint64_t id, uint64_t token)
    : eventFd(eventFd), peer(peer), id(id), token(token) {}

ClientSession::~ClientSession() {
    close(eventFd);
}

// The objects are counted before the packet is sent, as the client may release them at once.
status_t ClientSession::transact(uint64_t target, uint32_t code, const Parcel& data,
                                 Parcel* /*reply*/, uint32_t flags) {
    if ((flags & IBinder::FLAG_ONEWAY) == 0) return INVALID_OPERATION;
    if (data.dataSize() > kMaxTransaction) return FAILED_TRANSACTION;
    if (ended()) return DEAD_OBJECT;
    std::vector<PacketObject> objects;
    const status_t status = exportObjects(data, &objects);
    if (status != OK) return status;
    PacketHeader header = {};
    header.kind = PacketKind::kCall;
    header.target = target;
    header.code = code;
    header.flags = flags;
    const int sent = post(header, objects, data);
    if (sent == 0) return OK;
    takeBack(objects);
    return sent == -EPIPE || sent == -ECONNRESET ? DEAD_OBJECT : FAILED_TRANSACTION;
}

bool ClientSession::sendRelease(uint64_t id, uint64_t count) {
    PacketHeader header = {};
    header.kind = PacketKind::kRelease;
    header.target = id;
    header.count = count;
    return post(header, {}, Parcel()) == 0;
}

// Sends an event, or keeps it for later; 0 or -errno. A release must not overtake a call of the
// same object, so every event waits behind those that do.
int ClientSession::post(const PacketHeader& header, const std::vector<PacketObject>& objects,
                        const Parcel& data) {
    std::lock_guard<std::mutex> guard(mSendLock);
    const bool first = mUnsent.empty();
    if (first) {
        const int sent =
                sendPacket(eventFd, MSG_DONTWAIT, header, objects, data.data(), data.dataSize());
        if (sent != -EAGAIN) return sent;
    }
    const size_t size = sizeof(header) + data.dataSize();
    if (mUnsentBytes + size > kMaxUnsent) return -EAGAIN;
    const auto send = [self = shared_from_this()] {
        static_cast<ClientSession&>(*self).sendUnsent();
    };
    if (first && !startThread(send)) return -EAGAIN;
    mUnsent.push_back({header, objects, {data.data(), data.data() + data.dataSize()}});
    mUnsentBytes += size;
    return 0;
}

// Runs on a thread of its own, which may wait for the client.
void ClientSession::sendUnsent() {
    std::unique_lock<std::mutex> guard(mSendLock);
    while (!mUnsent.empty()) {
        const Unsent& next = mUnsent.front();  // stays where it is while others are added
        guard.unlock();
        // Fails when the session ends; then so do the rest, without waiting. What they counted as
        // sent goes with the session.
        sendPacket(eventFd, 0, next.header, next.objects, next.data.data(), next.data.size());
        guard.lock();
        mUnsentBytes -= sizeof(next.header) + next.data.size();
        mUnsent.pop_front();
    }
}

// The connections of each client process, and so how many it has. The registry's are otherwise
// known to its epoll alone, where a leak checker cannot see them.
class Connections {
  public:
    bool add(Connection* connection) {
        std::lock_guard<std::mutex> guard(mLock);
        std::set<Connection*>& ofProcess = mByProcess[connection->peer.pid];
        if (ofProcess.size() >= kMaxPerProcess) return false;
        return ofProcess.insert(connection).second;
    }
    void remove(Connection* connection) {
        std::lock_guard<std::mutex> guard(mLock);
        const auto entry = mByProcess.find(connection->peer.pid);
        entry->second.erase(connection);
        if (entry->second.empty()) mByProcess.erase(entry);
    }

  private:
    // A client has one for events, and up to two for each of its threads that calls.
    static constexpr size_t kMaxPerProcess = 256;

    std::mutex mLock;
    std::map<pid_t, std::set<Connection*>> mByProcess;
};

// They are never destroyed, as threads still use them when the process ends.
static Connections& allConnections() {
    static Connections& connections = *new Connections;
    return connections;
}

// Asked once, when it is accepted: the kernel's answer is who connected, and stays so.
std::unique_ptr<Connection> Connection::admit(int fd) {
    ucred peer = {};
    socklen_t size = sizeof(peer);
    if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
        close(fd);
        return nullptr;
    }
    std::unique_ptr<Connection> connection(new Connection(fd, peer));
    return allConnections().add(connection.get()) ? std::move(connection) : nullptr;
}

Connection::~Connection() {
    allConnections().remove(this);
    if (!isEvent) close(fd);
}

void Connection::complain(const char* what) const {
    __android_log_print(ANDROID_LOG_WARN, "binder", "pid %d, uid %u: %s; connection closed",
                        peer.pid, peer.uid, what);
}

// Nobody waits here: a client that calls waits for its reply, so there is room, or it does not mean
// to take it.
bool Connection::reply(status_t status, const Parcel& parcel) {
    std::vector<PacketObject> objects;
    if (status >= 0) {
        const status_t exported = parcel.dataSize() > kMaxTransaction
                                          ? FAILED_TRANSACTION
                                          : session->exportObjects(parcel, &objects);
        if (exported != OK) status = FAILED_TRANSACTION;
    }
    PacketHeader header = {};
    header.kind = PacketKind::kReply;
    header.status = status < 0 ? status : OK;
    const size_t size = status < 0 ? 0 : parcel.dataSize();
    const int sent = sendPacket(fd, MSG_DONTWAIT, header, objects, parcel.data(), size);
    if (sent != 0) session->takeBack(objects);
    return sent == 0;
}

// IPCThreadState packs an identity like this.
static int64_t packedIdentity(uid_t uid, pid_t pid) {
    return static_cast<int64_t>(uint64_t{uid} << 32 | static_cast<uint32_t>(pid));
}

// The number is looked up anew for every call: a client can only reach what it was given. A one-way
// call names no process, as on the device.
status_t Connection::dispatch(const PacketHeader& call, const Parcel& data, Parcel* answer) {
    sp<BBinder> target;
    if (lane == Lane::kCall) {
        target = session->find(call.target);
    } else if (call.target == 0) {
        target = ServiceManager::self();
    }
    if (target == nullptr) return FAILED_TRANSACTION;
    IPCThreadState* const caller = IPCThreadState::self();
    const int64_t before = packedIdentity(caller->getCallingUid(), caller->getCallingPid());
    const bool oneWay = (call.flags & IBinder::FLAG_ONEWAY) != 0;
    caller->restoreCallingIdentity(packedIdentity(peer.uid, oneWay ? 0 : peer.pid));
    const status_t status = target->transact(call.code, data, answer, call.flags);
    caller->restoreCallingIdentity(before);
    return status;
}

bool Connection::run(const Packet& call) {
    if (session->ended()) return false;
    const PacketHeader header = call.header;
    Parcel data;
    Parcel answer;
    status_t status = session->importParcel(call, &data);
    if (status == OK) status = dispatch(header, data, &answer);
    return (header.flags & IBinder::FLAG_ONEWAY) != 0 || reply(status, answer);
}

}  // namespace android::host
