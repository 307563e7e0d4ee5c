// A call is counted, not its thread: each connection has one, and a semaphore says how many of them
// are past it. A call that comes while all are busy waits here, and the client in its recv.
#include "host/platform/binder/daemon/handlers.h"

#include <android/log.h>
#include <semaphore.h>

#include <utility>

#include "host/platform/utils/start_thread.h"

namespace android::host {

// It is never destroyed, as threads wait on it when the process ends.
static sem_t* freeHandlers() {
    static sem_t* const semaphore = [] {
        auto* const instance = new sem_t;
        sem_init(instance, 0, 0);
        return instance;
    }();
    return semaphore;
}

void addHandlers(int count) {
    for (int i = 0; i < count; ++i) sem_post(freeHandlers());
}

// Returns when the client has closed, or sent something that is no call. Look-ups do not come this
// way: they have a lane of their own, and never wait here.
static void serve(Connection* connection) {
    Packet packet;
    for (;;) {
        const Received received = receivePacket(connection->fd, 0, &packet);
        if (received == Received::kClosed) return;
        if (received == Received::kMalformed || packet.header.kind != PacketKind::kCall) {
            return connection->complain("malformed call");
        }
        while (sem_wait(freeHandlers()) != 0) continue;
        const bool goOn = connection->run(packet);
        sem_post(freeHandlers());
        if (!goOn) return;
    }
}

void serveOnThread(std::unique_ptr<Connection> connection) {
    const std::shared_ptr<Connection> shared = std::move(connection);
    if (!startThread([shared] { serve(shared.get()); })) {
        shared->complain("no thread left for its calls");
    }
}

}  // namespace android::host
