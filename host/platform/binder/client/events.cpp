// What the daemon sends a client unasked: one-way calls of its callbacks, releases, its own end.
#include <android/log.h>
#include <binder/IPCThreadState.h>
#include <pthread.h>
#include <stdlib.h>

#include <functional>
#include <memory>
#include <utility>

#include "host/platform/binder/client/daemon_session.h"

namespace android::host {

static void spawn(std::function<void()> body) {
    auto* const argument = new std::function<void()>(std::move(body));
    const auto start = [](void* data) -> void* {
        const std::unique_ptr<std::function<void()>> run(static_cast<std::function<void()>*>(data));
        (*run)();
        return nullptr;
    };
    pthread_t thread;
    if (pthread_create(&thread, nullptr, start, argument) != 0) abort();
    pthread_detach(thread);
}

void DaemonSession::spawnEventThread() {
    spawn([self = shared_from_this()] {
        static_cast<DaemonSession&>(*self).handleEvents();
        self->end();
    });
}

void DaemonSession::handleEvents() {
    Packet packet;
    while (receivePacket(mEventFd, 0, &packet) == Received::PACKET) {
        const PacketHeader& header = packet.header;
        if (header.kind == PacketKind::CALL) {
            runCall(packet);
        } else if (header.kind != PacketKind::RELEASE ||
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

// Not on the session's own thread: that one is gone when a recipient is linked late.
void DaemonSession::postObituary(const sp<BpBinder>& proxy) {
    spawn([proxy] { proxy->sendObituary(); });
}

}  // namespace android::host
