#include "host/platform/binder/daemon/handlers.h"

#include <android/log.h>
#include <semaphore.h>

#include <utility>

#include "host/platform/utils/start_thread.h"

namespace android::host {

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
