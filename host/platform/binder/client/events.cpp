// What the daemon sends a client unasked: one-way calls of its callbacks, releases, its own end.
// One thread takes them in their order, so a callback that takes long delays those behind it, and
// the notice of the daemon's death.
#include <android/log.h>
#include <binder/IPCThreadState.h>
#include <stdlib.h>
#include <sys/socket.h>

#include "host/platform/binder/client/daemon_session.h"
#include "host/platform/utils/start_thread.h"

namespace android::host {

// On the device every thread that calls is told of what was released meanwhile, so a program
// without a pool can hand over new objects for ever. A packet that is only a header is no call.
void DaemonSession::takeReleases() {
    const std::lock_guard<std::mutex> guard(mHearing);
    PacketHeader header;
    const auto receive = [&](int flags) {
        return recv(mEventFd, &header, sizeof(header), flags | MSG_DONTWAIT | MSG_TRUNC);
    };
    while (!mHasEventThread && receive(MSG_PEEK) == sizeof(header) &&
           header.kind == PacketKind::kRelease) {
        receive(0);
        if (!peerReleased(header.target, header.count)) return;
    }
}

// The thread holds the session: it stays until the daemon ends, also when nobody calls any more.
void DaemonSession::spawnEventThread() {
    const auto handle = [self = shared_from_this()] {
        static_cast<DaemonSession&>(*self).handleEvents();
        self->end();
        self->dropExported();
    };
    const std::lock_guard<std::mutex> guard(mHearing);
    mHasEventThread = true;
    if (!startThread(handle)) abort();
}

void DaemonSession::handleEvents() {
    Packet packet;
    while (receivePacket(mEventFd, 0, &packet) == Received::kPacket) {
        const PacketHeader& header = packet.header;
        if (header.kind == PacketKind::kCall) {
            runCall(packet);
        } else if (header.kind != PacketKind::kRelease ||
                   !peerReleased(header.target, header.count)) {
            __android_log_print(ANDROID_LOG_WARN, "binder", "malformed event from the daemon");
            return;
        }
    }
}

// A call for an object that is unknown here is dropped: nobody waits for an answer.
void DaemonSession::runCall(const Packet& packet) {
    const PacketHeader header = packet.header;
    Parcel data;
    Parcel reply;
    if (importParcel(packet, &data) != OK) return;
    const sp<BBinder> target = find(header.target);
    if (target == nullptr) return;
    // A one-way call names no process.
    IPCThreadState::self()->restoreCallingIdentity(
            static_cast<int64_t>(uint64_t{mDaemonUid} << 32));
    target->transact(header.code, data, &reply, header.flags);
    IPCThreadState::self()->clearCallingIdentity();
}

}  // namespace android::host
