// The daemon's thread that owns the socket: it introduces connections, answers look-ups and sees
// clients end. It waits for its descriptors alone, and sends without waiting, so neither calls that
// hang nor a slow client delay it. What it cannot help is to take locks that others hold for a
// moment, to write its log lines, and to destroy the objects that only a client held which now lets
// go.
#pragma once

#include <stdint.h>

#include <chrono>
#include <deque>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

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
    bool handle(Connection* connection, const Packet& packet, uid_t sender);
    // The first packet of a connection makes it an event connection, or one of a session.
    bool openSession(Connection* connection, const PacketHeader& open);
    bool joinSession(Connection* connection, const PacketHeader& join);
    // Has an accepted one-way call run. When too many of the client's wait, it is not heard until
    // they have been run.
    void takeOneWay(Connection* connection, std::unique_ptr<Call> call);
    // Closes a connection; with an event connection its session ends.
    void drop(Connection* connection);

    // What has become due: the pause is over, a connection did not say what it is, a client is to
    // be heard again.
    void lookAtTimes();
    int untilNextLook() const;  // ms; -1 for nothing is due

    const int mListener;
    const int mEpoll;
    // While no descriptor is left, connections wait in the kernel's queue until the pause is over.
    bool mAccepting = true;
    std::chrono::steady_clock::time_point mPauseEnd;
    // Those that it serves, by their addresses, which epoll hands back.
    std::unordered_map<Connection*, std::unique_ptr<Connection>> mConnections;
    // When they were accepted, of those that have not said what they are, and of some that have or
    // are gone.
    std::deque<std::pair<std::chrono::steady_clock::time_point, Connection*>> mUnknown;
    std::vector<Connection*> mNotHeard;  // event connections with too many calls
    uint64_t mNextSession = 1;
    // They stand by their ids, until they end.
    std::unordered_map<uint64_t, std::shared_ptr<ClientSession>> mSessions;
};

}  // namespace android::host
