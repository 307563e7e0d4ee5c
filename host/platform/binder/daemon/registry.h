// The daemon's thread that owns the socket: it introduces connections, answers look-ups and sees
// clients end. It never waits for anything but its descriptors, so neither calls that hang nor a
// slow client delay it.
#pragma once

#include <stdint.h>

#include <chrono>
#include <memory>
#include <unordered_map>

#include "host/platform/binder/daemon/connection.h"

namespace android::host {

class Registry {
  public:
    // Takes the listening socket. Runs on a thread of its own for the rest of the process.
    static void start(int listener);

  private:
    explicit Registry(int listener);

    [[noreturn]] void run();
    void watch(int operation, int fd, void* what);
    void acceptOne();
    void receive(Connection* connection);
    // False if the connection is to be closed.
    bool handle(Connection* connection, const Packet& packet);
    bool openSession(Connection* connection);
    bool joinSession(Connection* connection, const PacketHeader& join);
    void drop(Connection* connection);

    const int mListener;
    const int mEpoll;
    bool mAccepting = true;
    std::chrono::steady_clock::time_point mPauseEnd;
    uint64_t mNextSession = 1;
    std::unordered_map<uint64_t, std::shared_ptr<ClientSession>> mSessions;
};

}  // namespace android::host
