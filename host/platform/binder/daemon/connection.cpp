// The two directions between the daemon and a client. Inward: a call gets its target when it
// arrives, and is run under the identity that the kernel tells of who sent it; the reply goes back
// on the same connection. Outward: events of a session go out in order and without waiting; what
// the client does not take in time is kept for a thread that waits for it, and beyond a limit lost
// for this client alone.
#include "host/platform/binder/daemon/connection.h"

#include <binder/IPCThreadState.h>
#include <errno.h>
#include <unistd.h>

#include <mutex>
#include <utility>

#include "host/platform/binder/daemon/service_manager.h"
#include "host/platform/binder/daemon/shares.h"
#include "host/platform/utils/start_thread.h"

namespace android::host {

ClientSession::ClientSession(int eventFd, const ucred& peer, uint64_t id, uint64_t token)
    : eventFd(eventFd), peer(peer), id(id), token(token) {}

status_t ClientSession::transact(uint64_t target, uint32_t code, const Parcel& data,
                                 Parcel* /*reply*/, uint32_t flags) {
    if ((flags & IBinder::FLAG_ONEWAY) == 0) return INVALID_OPERATION;
    return transactOneWay(target, code, data, flags);
}

void ClientSession::addConnection() {
    ++mConnections;
}

void ClientSession::removeConnection() {
    if (--mConnections == 0) dropExported();
}

// Sends an event, or keeps it for later; 0 or -errno. A release must not overtake a call of the
// same object, so every event waits behind those that do.
int ClientSession::post(const PacketHeader& header, const std::vector<PacketObject>& objects,
                        const Parcel& data) {
    std::lock_guard<std::mutex> guard(mSendLock);
    if (mIsClosed) return -EPIPE;
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
    if (mIsClosed) close(eventFd);
}

// The shutdown frees a thread that waits to send: it then closes the descriptor, whose number is
// not to be another's while it may still send there.
void ClientSession::closeEvents() {
    std::lock_guard<std::mutex> guard(mSendLock);
    mIsClosed = true;
    shutdown(eventFd, SHUT_RDWR);
    if (mUnsent.empty()) close(eventFd);
}

PacketHeader welcomeOf(int status) {
    PacketHeader header = {};
    header.kind = PacketKind::kWelcome;
    header.code = kWireVersion;
    header.status = status;
    return header;
}

// Asked once, when it is accepted: the kernel's answer is who connected, and stays so.
std::unique_ptr<Connection> Connection::admit(int fd) {
    ucred peer = {};
    socklen_t size = sizeof(peer);
    if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
        close(fd);
        return nullptr;
    }
    if (takeShare(peer.uid)) return std::unique_ptr<Connection>(new Connection(fd, peer));
    sendPacket(fd, MSG_DONTWAIT, welcomeOf(-EMFILE));
    close(fd);
    complain(peer, "its user has as many connections as one may");
    return nullptr;
}

Connection::~Connection() {
    giveShareBack(peer.uid);
    if (isEvent) {
        session->closeEvents();
    } else {
        close(fd);
    }
    if (session != nullptr) session->removeConnection();
}

void Connection::joins(const std::shared_ptr<ClientSession>& joined) {
    session = joined;
    session->addConnection();
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

// A client can only reach what it was given; on the lane for look-ups the service manager, of which
// it is given nothing. One-way calls are events, and nothing else is: so they are in order with the
// releases.
bool Connection::take(const Packet& packet, uid_t user, Call* call) {
    const PacketHeader& header = packet.header;
    const bool isOneWay = (header.flags & IBinder::FLAG_ONEWAY) != 0;
    if (header.kind != PacketKind::kCall || isOneWay != isEvent) return false;
    call->code = header.code;
    call->flags = header.flags;
    call->user = user;
    call->process = isOneWay ? 0 : peer.pid;
    call->status = session->importParcel(packet, &call->data);
    if (lane == Lane::kCall) {
        call->target = session->find(header.target);
    } else if (header.target == 0) {
        call->target = ServiceManager::self();
    }
    if (call->target == nullptr) call->status = FAILED_TRANSACTION;
    if (isOneWay) {
        session->oneWayBytes += packet.header.dataSize + sizeof(header);
        call->session = session;
    }
    return true;
}

bool Connection::run(const Call& call) {
    Parcel answer;
    const status_t status = call.run(&answer);
    return reply(status, answer);
}

Call::~Call() {
    if (session != nullptr) session->oneWayBytes -= data.dataSize() + sizeof(PacketHeader);
}

// IPCThreadState packs an identity like this.
static int64_t packedIdentity(uid_t uid, pid_t pid) {
    return static_cast<int64_t>(uint64_t{uid} << 32 | static_cast<uint32_t>(pid));
}

status_t Call::run(Parcel* answer) const {
    if (status != OK) return status;
    IPCThreadState* const caller = IPCThreadState::self();
    const int64_t before = packedIdentity(caller->getCallingUid(), caller->getCallingPid());
    caller->restoreCallingIdentity(packedIdentity(user, process));
    const status_t result = target->transact(code, data, answer, flags);
    caller->restoreCallingIdentity(before);
    return result;
}

}  // namespace android::host
