// A call is counted, not its thread: each connection has one, and a semaphore says how many of them
// are past it. A call that comes while all are busy waits here, and the client in its recv.
#include "host/platform/binder/daemon/handlers.h"

#include <semaphore.h>

#include <utility>

#include "host/platform/binder/daemon/shares.h"
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

HandlerTurn::HandlerTurn() {
    while (sem_wait(freeHandlers()) != 0) continue;
}

HandlerTurn::~HandlerTurn() {
    sem_post(freeHandlers());
}

// Returns when the client has closed, or sent something that is no call. Look-ups do not come this
// way: they have a lane of their own, and never wait here.
static void serve(Connection* connection) {
    Packet packet;
    for (;;) {
        const Received received = receivePacket(connection->fd, 0, &packet);
        if (received == Received::kClosed) return;
        Call call;
        if (received == Received::kMalformed ||
            !connection->take(packet, connection->peer.uid, &call)) {
            return complain(connection->peer, "malformed call");
        }
        const HandlerTurn turn;
        if (!connection->run(call)) return;
    }
}

void serveOnThread(std::unique_ptr<Connection> connection) {
    const std::shared_ptr<Connection> shared = std::move(connection);
    if (!startThread([shared] { serve(shared.get()); })) {
        complain(shared->peer, "no thread left for its calls");
    }
}

}  // namespace android::host
