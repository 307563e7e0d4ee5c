// One peer of this process, and the objects that the two have given each other.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include <binder/Binder.h>
#include <binder/BpBinder.h>
#include <binder/Parcel.h>

#include "host/platform/binder/wire.h"

namespace android::host {

// References are counted transfers: the owner of an object counts how often it sent it, the peer
// how often it took it. A release carries the peer's count, and the owner lets go when that covers
// all it sent. So a release may cross a packet that carries the object once more. A transfer that
// the peer did not take, for its limit or as the packet was lost, is never released: that object
// stays with its owner until the session ends.
//
// Any thread may call any method. No method runs what others wrote with mLock held: what may be the
// last reference to an object is dropped after it. Destructors of such objects then run on the
// thread that calls the method.
class Session : public std::enable_shared_from_this<Session> {
  public:
    virtual ~Session() = default;

    // Calls the peer's object by its number there. DEAD_OBJECT once the session has ended,
    // FAILED_TRANSACTION for what does not fit into a packet. What else it may be is the role's.
    virtual status_t transact(uint64_t target, uint32_t code, const Parcel& data, Parcel* reply,
                              uint32_t flags) = 0;

    // Once true it stays true: a session is never taken up again.
    bool ended() const { return mEnded.load(std::memory_order_acquire); }

    // Numbers the objects of a parcel that is about to be sent and counts them as sent.
    // INVALID_OPERATION if one belongs to another peer, FAILED_TRANSACTION if there are too many,
    // DEAD_OBJECT if this peer is gone: nothing is counted then.
    status_t exportObjects(const Parcel& parcel, std::vector<PacketObject>* out);
    // Uncounts them, after a send that failed.
    void takeBack(const std::vector<PacketObject>& objects);

    // Fills a parcel from a packet. FAILED_TRANSACTION for a number that this process does not know
    // or more objects than it takes of one peer; the others are taken, and counted, all the same:
    // the parcel holds them, and lets go of them as usual.
    status_t importParcel(const Packet& packet, Parcel* out);

    // Whether the peer holds any object of this process.
    bool hasExported();
    // This process's own object by its number; null if the peer has no reference to it.
    sp<BBinder> find(uint64_t id);

    // Sends a one-way call behind what was sent before. FAILED_TRANSACTION where the peer has no
    // room for it now.
    status_t transactOneWay(uint64_t target, uint32_t code, const Parcel& data, uint32_t flags);

    // The peer has let go of so many transfers. False if it claims more than it was sent: it lies,
    // and its connection is to be closed.
    bool peerReleased(uint64_t id, uint64_t count);

    // The last strong reference to a proxy of this session is going: the owner is told. Called by
    // the proxy, on the thread that dropped it.
    void proxyGone(BpBinder* proxy);

    // The peer is gone: proxies are told. Only the first call does anything.
    void end();
    // No call of the peer is left that could name this process's objects: its references to them
    // are dropped. For a session that has ended.
    void dropExported();

  protected:
    // Sends a one-way call or a release, each behind those before: 0 or -errno, -EAGAIN where the
    // peer has no room. data may be empty.
    virtual int post(const PacketHeader& header, const std::vector<PacketObject>& objects,
                     const Parcel& data) = 0;

  private:
    // How many of a peer's objects may be known here at once: a client that sends one after the
    // other must not use up the memory.
    static constexpr size_t kMaxProxies = 4096;

    // An object of this process that the peer knows.
    struct Exported {
        sp<BBinder> object;
        uint64_t sent = 0;
    };
    // An object of the peer's, of which the proxy may be gone while its count waits for a release.
    struct Imported {
        wp<BpBinder> proxy;
        uint64_t received = 0;
    };

    uint64_t countSent(const sp<BBinder>& object);
    bool sendRelease(uint64_t id, uint64_t count);
    // What an object of a packet is here: this process's own, or a proxy, whose transfer is
    // counted.
    sp<IBinder> takeReceived(const PacketObject& object);

    std::atomic<bool> mEnded{false};
    std::mutex mLock;
    uint64_t mNextId = 1;  // 0 is the service manager, which is not counted
    std::unordered_map<uint64_t, Exported> mExported;
    std::unordered_map<BBinder*, uint64_t> mExportedIds;
    std::unordered_map<uint64_t, Imported> mImported;
};

}  // namespace android::host
