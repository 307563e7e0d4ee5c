// The daemon's end of one connection, and what runs the calls that arrive on it.
#pragma once

#include <sys/socket.h>
#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

#include "host/platform/binder/session.h"

namespace android::host {

// What a connection is answered with: 0, or the -errno with which it is refused.
PacketHeader welcomeOf(int status);

// A client process, from its event connection's start to its end. Calls of its callbacks, releases
// and the session's end travel on that connection, in the order in which they were sent.
class ClientSession : public Session {
  public:
    // Takes the descriptor of the event connection.
    ClientSession(int eventFd, const ucred& peer, uint64_t id, uint64_t token);

    // One-way calls only, never blocking: INVALID_OPERATION for others, FAILED_TRANSACTION when
    // the client is too far behind with its events.
    status_t transact(uint64_t target, uint32_t code, const Parcel& data, Parcel* reply,
                      uint32_t flags) override;

    // The connections that it has, the one for events among them. With the last of them go its
    // references to the daemon's objects: a call that arrived before still finds its target.
    void addConnection();
    void removeConnection();
    // Lets go of the socket, though proxies of the session may live on.
    void closeEvents();

    const int eventFd;
    const ucred peer;                    // the kernel's word, from when the session was opened
    const uint64_t id;                   // counted, so that an old one is never taken for a new one
    const uint64_t token;                // random, for the client alone
    std::atomic<size_t> oneWayBytes{0};  // of its calls that wait to be run

  protected:
    // Never waits: what the socket has no room for is kept, up to kMaxUnsent.
    int post(const PacketHeader& header, const std::vector<PacketObject>& objects,
             const Parcel& data) override;

  private:
    // An event of which the socket's buffer, some 270 small packets, had no room left.
    struct Unsent {
        PacketHeader header;
        std::vector<PacketObject> objects;
        std::vector<uint8_t> data;
    };
    // Counted are bytes of data and headers. On the device as well one-way calls may take half of
    // the receiver's buffer of 1 MiB.
    static constexpr size_t kMaxUnsent = size_t{512} * 1024;

    // Sends what was kept, as the client takes it, and returns when nothing is left.
    void sendUnsent();

    std::mutex mSendLock;
    std::deque<Unsent> mUnsent;  // while there are any, a thread waits to send them
    size_t mUnsentBytes = 0;
    bool mIsClosed = false;

    std::atomic<int> mConnections{0};
};

// A call as it arrived: with its target and its objects, so that neither a release nor the end of
// its session that comes after it can take them away.
struct Call {
    ~Call();

    // Calls the object as the client, and returns what it returns.
    status_t run(Parcel* answer) const;

    status_t status = OK;  // of its arrival; unless it is OK there is nothing to run
    sp<BBinder> target;    // null for a number that the client was not given
    uint32_t code = 0;
    uint32_t flags = 0;
    uid_t user = 0;
    pid_t process = 0;  // 0 of a one-way call, as on the device
    Parcel data;
    std::shared_ptr<ClientSession> session;  // of a one-way call, which counts against it
};

// One accepted connection. Owned by the registry or, with Lane::kCall, by the thread that serves
// it, and used by its owner's thread alone. Closing is destroying; but the descriptor of an event
// connection belongs to the session.
struct Connection {
    // Counts against the user's share until it is destroyed; null if that is used up, which the
    // client is told, or if the kernel does not say who is there. Takes the descriptor in every
    // case.
    static std::unique_ptr<Connection> admit(int fd);
    ~Connection();

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Makes it one of the session's.
    void joins(const std::shared_ptr<ClientSession>& joined);
    // Takes a CALL that arrived here, sent by the user. False for a packet that is none, or of the
    // wrong kind for this connection.
    bool take(const Packet& packet, uid_t user, Call* call);
    // Runs it on this thread and sends its reply. False if the client does not take it.
    bool run(const Call& call);

    const int fd;
    // Who calls on it: another user than the session's, if the client has changed to one.
    const ucred peer;
    const std::chrono::steady_clock::time_point accepted = std::chrono::steady_clock::now();
    bool isEvent = false;
    Lane lane = Lane::kCall;
    std::shared_ptr<ClientSession> session;  // null until its first packet

  private:
    Connection(int fd, const ucred& peer) : fd(fd), peer(peer) {}

    // An error travels without data. False if the client does not take it.
    bool reply(status_t status, const Parcel& parcel);
};

}  // namespace android::host
