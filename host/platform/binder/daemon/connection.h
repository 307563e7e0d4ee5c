// The daemon's end of one connection, and what runs the calls that arrive on it.
#pragma once

#include <sys/socket.h>
#include <sys/types.h>

#include <deque>
#include <memory>
#include <mutex>
#include <vector>

#include "host/platform/binder/session.h"

namespace android::host {

// A client process, from its event connection's start to its end. Calls of its callbacks, releases
// and the session's end travel on that connection, in the order in which they were sent.
class ClientSession : public Session {
  public:
    // Keeps the descriptor of the event connection, and closes it with the last reference to the
    // session: its number is not reused while a thread may still send.
    ClientSession(int eventFd, const ucred& peer, uint64_t id, uint64_t token);
    ~ClientSession() override;

    // One-way calls only, never blocking: INVALID_OPERATION for others, FAILED_TRANSACTION when
    // the client is too far behind with its events.
    status_t transact(uint64_t target, uint32_t code, const Parcel& data, Parcel* reply,
                      uint32_t flags) override;

    const int eventFd;
    const ucred peer;      // the kernel's word, from when the session was opened
    const uint64_t id;     // counted, so that an old one is never taken for a new one
    const uint64_t token;  // random, for the client alone

  protected:
    bool sendRelease(uint64_t id, uint64_t count) override;

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

    // Never waits: what the socket has no room for is kept, up to kMaxUnsent. Returns 0 or -errno.
    int post(const PacketHeader& header, const std::vector<PacketObject>& objects,
             const Parcel& data);
    // Sends what was kept, as the client takes it, and returns when nothing is left.
    void sendUnsent();

    std::mutex mSendLock;
    std::deque<Unsent> mUnsent;  // while there are any, a thread waits to send them
    size_t mUnsentBytes = 0;
};

// One accepted connection. Owned by the registry or, with Lane::kCall, by the thread that serves
// it, and used by its owner's thread alone. Closing is destroying; but the descriptor of an event
// connection belongs to the session.
struct Connection {
    // Counts against the client process's limit until it is destroyed; null if that is reached, or
    // if the kernel does not say who is there. Takes the descriptor in every case.
    static std::unique_ptr<Connection> admit(int fd);
    ~Connection();

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Runs a CALL that arrived here, on this thread, and sends its reply. False if the connection
    // is to be closed: the session has ended, or the client does not take its reply.
    bool run(const Packet& call);
    // Logs that a packet was not one, with what the client is.
    void complain(const char* what) const;

    const int fd;
    // Who calls on it: another user than the session's, if the client has changed to one.
    const ucred peer;
    bool isEvent = false;
    Lane lane = Lane::kCall;
    std::shared_ptr<ClientSession> session;  // null until its first packet

  private:
    Connection(int fd, const ucred& peer) : fd(fd), peer(peer) {}

    // Calls the object as the client, and returns what it returns.
    status_t dispatch(const PacketHeader& call, const Parcel& data, Parcel* answer);
    // An error travels without data. False if the client does not take it.
    bool reply(status_t status, const Parcel& parcel);
};

}  // namespace android::host
