// What the daemon sends a client unasked: one-way calls of its callbacks, releases, its own end.
#include <android/log.h>
#include <binder/IPCThreadState.h>
#include <stdlib.h>

#include "host/platform/binder/client/daemon_session.h"
#include "host/platform/utils/start_thread.h"

namespace android::host {

void DaemonSession::spawnEventThread() {
    const auto handle = [self = shared_from_this()] {
        static_cast<DaemonSession&>(*self).handleEvents();
        self->end();
    };
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
