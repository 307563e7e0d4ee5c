// The daemon's thread that owns the socket: it introduces connections, answers look-ups and sees
// clients end. It waits for its descriptors alone, and sends without waiting, so neither calls that
// hang nor a slow client delay it. What it cannot help is to take locks that others hold for a
// moment, to write its log lines, to destroy the objects that only a client held which now lets go,
// and, in a process that can have no more threads, to tell of a client's death itself.
#pragma once

#include <stdint.h>

#include <chrono>
#include <memory>
#include <unordered_map>

#include "host/platform/binder/daemon/connection.h"

namespace android::host {

// From its start on, all members belong to its thread.
class Registry {
  public:
    // Takes the listening socket, which must not block. Runs on a thread of its own for the rest of
    // the process; without one the process ends.
    static void start(int listener);

  private:
    explicit Registry(int listener);

    [[noreturn]] void run();
    // Tells epoll; what is the connection of the descriptor, null for the listener.
    void watch(int operation, int fd, void* what);
    void acceptOne();
    void receive(Connection* connection);
    // False if the connection is to be closed.
    bool handle(Connection* connection, const Packet& packet);
    // The first packet of a connection makes it an event connection, or one of a session.
    bool openSession(Connection* connection);
    bool joinSession(Connection* connection, const PacketHeader& join);
    // Closes a connection; with an event connection its session ends.
    void drop(Connection* connection);

    const int mListener;
    const int mEpoll;
    // While no descriptor is left, connections wait in the kernel's queue until the pause is over.
    bool mAccepting = true;
    std::chrono::steady_clock::time_point mPauseEnd;
    uint64_t mNextSession = 1;
    // They stand by their ids, until they end.
    std::unordered_map<uint64_t, std::shared_ptr<ClientSession>> mSessions;
};

}  // namespace android::host
