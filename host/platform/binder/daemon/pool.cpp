#include "host/platform/binder/daemon/pool.h"

#include <android/log.h>
#include <pthread.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <utility>

namespace android::host {

Pool& Pool::self() {
    static Pool& pool = *new Pool;
    return pool;
}

Pool::Pool()
    : mEpoll(epoll_create1(EPOLL_CLOEXEC)), mObituaryEvent(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    watch(EPOLL_CTL_ADD, mObituaryEvent, nullptr);
}

void Pool::watch(int operation, int fd, void* what) {
    epoll_event event = {};
    event.events = EPOLLIN | EPOLLONESHOT;
    event.data.ptr = what;
    epoll_ctl(mEpoll, operation, fd, &event);
}

void Pool::start() {
    addThread();
}

void Pool::join() {
    mThreads.fetch_add(1);
    work();
}

void Pool::addThread() {
    if (mThreads.fetch_add(1) >= kMaxThreads) {
        mThreads.fetch_sub(1);
        return;
    }
    pthread_t thread;
    const auto body = [](void* pool) -> void* { static_cast<Pool*>(pool)->work(); };
    if (const int error = pthread_create(&thread, nullptr, body, this)) {
        __android_log_print(ANDROID_LOG_WARN, "binder", "no further thread: error %d", error);
        mThreads.fetch_sub(1);
        return;
    }
    pthread_detach(thread);
}

void Pool::work() {
    for (;;) {
        epoll_event event;
        mIdle.fetch_add(1);
        const int count = epoll_wait(mEpoll, &event, 1, -1);
        if (mIdle.fetch_sub(1) == 1 && mThreads.load(std::memory_order_relaxed) < kMaxThreads) {
            addThread();
        }
        if (count != 1) continue;
        if (event.data.ptr == nullptr) {
            sendObituaries();
        } else {
            serve(std::unique_ptr<Connection>(static_cast<Connection*>(event.data.ptr)));
        }
    }
}

void Pool::add(std::unique_ptr<Connection> connection) {
    const int fd = connection->fd;
    watch(EPOLL_CTL_ADD, fd, connection.release());
}

void Pool::serve(std::unique_ptr<Connection> connection) {
    for (int calls = 0; calls < kCallsInARow; ++calls) {
        Packet packet;
        const Received received = receivePacket(connection->fd, MSG_DONTWAIT, &packet);
        if (received == Received::NOTHING) break;
        if (received == Received::CLOSED) return;
        if (received == Received::MALFORMED || packet.header.kind != PacketKind::CALL) {
            connection->complain("malformed call");
            return;
        }
        if (!connection->run(packet)) return;
    }
    // From here on another thread may have it.
    const int fd = connection->fd;
    watch(EPOLL_CTL_MOD, fd, connection.release());
}

void Pool::postObituary(const sp<BpBinder>& proxy) {
    {
        std::lock_guard<std::mutex> guard(mLock);
        mObituaries.push_back(proxy);
    }
    eventfd_write(mObituaryEvent, 1);
}

void Pool::sendObituaries() {
    eventfd_t count;
    eventfd_read(mObituaryEvent, &count);
    std::deque<sp<BpBinder>> obituaries;
    {
        std::lock_guard<std::mutex> guard(mLock);
        obituaries.swap(mObituaries);
    }
    watch(EPOLL_CTL_MOD, mObituaryEvent, nullptr);
    for (const sp<BpBinder>& proxy : obituaries) proxy->sendObituary();
}

}  // namespace android::host
