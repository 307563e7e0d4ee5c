// The daemon's binder threads.
#pragma once

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>

#include "host/platform/binder/daemon/connection.h"

namespace android::host {

// Up to kMaxThreads threads wait at one epoll for call connections. A thread that gets one has it
// alone (EPOLLONESHOT) until it puts it back, and runs its calls itself. What arrives before the
// pool starts waits in the sockets.
class Pool {
  public:
    // Never destroyed: its threads run until the process ends.
    static Pool& self();

    void start();              // adds the first thread
    [[noreturn]] void join();  // makes the calling thread one

    // Hands a call connection over.
    void add(std::unique_ptr<Connection> connection);
    // The proxy's obituary is sent on one of the threads.
    void postObituary(const sp<BpBinder>& proxy);

    // Serves what is readable without waiting, and puts the connection back or closes it. For the
    // pool's own threads.
    void serve(std::unique_ptr<Connection> connection);

  private:
    // As on the device: 15 that the driver may ask for, the pool's first, and main.
    static constexpr int kMaxThreads = 17;
    // A client that never lets up gets this many calls in a row before others have their turn.
    static constexpr int kCallsInARow = 32;

    Pool();
    void addThread();
    [[noreturn]] void work();
    void watch(int operation, int fd, void* what);
    void sendObituaries();

    const int mEpoll;
    const int mObituaryEvent;
    std::atomic<int> mThreads{0};
    std::atomic<int> mIdle{0};
    std::mutex mLock;
    std::deque<sp<BpBinder>> mObituaries;
};

}  // namespace android::host
