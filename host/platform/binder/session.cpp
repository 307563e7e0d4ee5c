// Two tables: the objects of this process that the peer knows, by the number that they got here,
// and the proxies of the peer's, by the number that they got there. Every object in a packet passes
// one of them on each side, so that no address ever travels. What goes wrong costs the peer its
// session at worst, and this process an object that stays too long.
#include "host/platform/binder/session.h"

#include <errno.h>

#include <utility>

#include "host/platform/binder/notices.h"
#include "host/platform/binder/parcel_access.h"

namespace android::host {

// Gives the object's number, a new one the first time. The caller holds mLock.
uint64_t Session::countSent(const sp<BBinder>& object) {
    const auto [entry, added] = mExportedIds.try_emplace(object.get(), mNextId);
    if (added) mExported[mNextId++].object = object;
    ++mExported[entry->second].sent;
    return entry->second;
}

// All objects are looked at before any is counted, so a refusal leaves nothing to undo. One of
// another peer cannot be sent on: this peer has no connection to where it lives.
status_t Session::exportObjects(const Parcel& parcel, std::vector<PacketObject>* out) {
    const auto& objects = ParcelAccess::objects(parcel);
    if (objects.empty()) return OK;
    if (objects.size() > kMaxObjects) return FAILED_TRANSACTION;
    for (const auto& object : objects) {
        const BpBinder* const proxy = object.binder->remoteBinder();
        if (proxy != nullptr && proxy->session() != this) return INVALID_OPERATION;
    }
    out->reserve(objects.size());
    std::lock_guard<std::mutex> guard(mLock);
    if (ended()) return DEAD_OBJECT;  // what is counted from now on nobody would let go of
    for (const auto& object : objects) {
        const auto offset = static_cast<uint32_t>(object.offset);
        if (const BpBinder* proxy = object.binder->remoteBinder()) {
            out->push_back({offset, Home::kReceiver, proxy->id()});
        } else {
            out->push_back({offset, Home::kSender, countSent(object.binder->localBinder())});
        }
    }
    return OK;
}

// A transfer that did not take place is as good as one that was released.
void Session::takeBack(const std::vector<PacketObject>& objects) {
    for (const PacketObject& object : objects) {
        if (object.home == Home::kSender) peerReleased(object.id, 1);
    }
}

// The limit is for new objects: one that has a proxy arrives as often as the peer likes.
sp<IBinder> Session::takeReceived(const PacketObject& object) {
    if (object.home == Home::kReceiver) return find(object.id);
    std::lock_guard<std::mutex> guard(mLock);
    if (mImported.size() >= kMaxProxies && mImported.count(object.id) == 0) return nullptr;
    Imported& entry = mImported[object.id];
    ++entry.received;
    sp<BpBinder> proxy = entry.proxy.promote();
    if (proxy == nullptr) {
        proxy = new BpBinder(shared_from_this(), object.id);
        entry.proxy = proxy;
    }
    return proxy;
}

// It goes on behind an object that is refused: the sender has counted those that follow as well.
status_t Session::importParcel(const Packet& packet, Parcel* out) {
    status_t status = OK;
    std::vector<ParcelAccess::Object> objects;
    objects.reserve(packet.header.objectCount);
    for (uint32_t i = 0; i < packet.header.objectCount; ++i) {
        const sp<IBinder> binder = takeReceived(packet.objects[i]);
        if (binder == nullptr) {
            status = FAILED_TRANSACTION;
        } else {
            objects.push_back({packet.objects[i].offset, binder});
        }
    }
    ParcelAccess::fill(packet.data, packet.header.dataSize, std::move(objects), out);
    return status;
}

// The objects are counted before the packet is sent, as the peer may release them at once.
status_t Session::transactOneWay(uint64_t target, uint32_t code, const Parcel& data,
                                 uint32_t flags) {
    if (data.dataSize() > kMaxTransaction) return FAILED_TRANSACTION;
    if (ended()) return DEAD_OBJECT;
    std::vector<PacketObject> objects;
    const status_t status = exportObjects(data, &objects);
    if (status != OK) return status;
    PacketHeader header = {};
    header.kind = PacketKind::kCall;
    header.target = target;
    header.code = code;
    header.flags = flags;
    const int sent = post(header, objects, data);
    if (sent == 0) return OK;
    takeBack(objects);
    return sent == -EPIPE || sent == -ECONNRESET ? DEAD_OBJECT : FAILED_TRANSACTION;
}

bool Session::sendRelease(uint64_t id, uint64_t count) {
    PacketHeader header = {};
    header.kind = PacketKind::kRelease;
    header.target = id;
    header.count = count;
    return post(header, {}, Parcel()) == 0;
}

sp<BBinder> Session::find(uint64_t id) {
    std::lock_guard<std::mutex> guard(mLock);
    const auto entry = mExported.find(id);
    return entry != mExported.end() ? entry->second.object : nullptr;
}

bool Session::peerReleased(uint64_t id, uint64_t count) {
    sp<BBinder> last;
    std::lock_guard<std::mutex> guard(mLock);
    const auto entry = mExported.find(id);
    if (entry == mExported.end() || count > entry->second.sent) return false;
    entry->second.sent -= count;
    if (entry->second.sent == 0) {  // destroyed behind the lock, if nobody else holds it
        last = std::move(entry->second.object);
        mExportedIds.erase(last.get());
        mExported.erase(entry);
    }
    return true;
}

// The release is sent without the lock, as a client may have to wait for room. Meanwhile the object
// may arrive again and get a new proxy, whose count begins anew.
void Session::proxyGone(BpBinder* proxy) {
    uint64_t received = 0;
    {
        std::lock_guard<std::mutex> guard(mLock);
        const auto entry = mImported.find(proxy->id());
        // A newer proxy of the same object has taken the entry over, with its count.
        if (entry == mImported.end() || entry->second.proxy.unsafe_get() != proxy) return;
        received = entry->second.received;
        mImported.erase(entry);
    }
    if (ended() || sendRelease(proxy->id(), received)) return;
    // The count goes with the next release of this object; without one, it lives as long as its
    // process.
    std::lock_guard<std::mutex> guard(mLock);
    mImported[proxy->id()].received += received;
}

// Once mEnded is set under the lock nothing more is counted as sent. The proxies are kept until
// they have been told.
void Session::end() {
    std::vector<sp<BpBinder>> proxies;
    {
        std::lock_guard<std::mutex> guard(mLock);
        if (mEnded.exchange(true, std::memory_order_acq_rel)) return;
        for (const auto& [id, entry] : mImported) {
            sp<BpBinder> proxy = entry.proxy.promote();
            if (proxy != nullptr) proxies.push_back(std::move(proxy));
        }
    }
    if (!proxies.empty()) sendObituaries(std::move(proxies));
}

bool Session::hasExported() {
    const std::lock_guard<std::mutex> guard(mLock);
    return !mExported.empty();
}

void Session::dropExported() {
    std::unordered_map<uint64_t, Exported> exported;  // let go of without the lock
    std::lock_guard<std::mutex> guard(mLock);
    exported.swap(mExported);
    mExportedIds.clear();
}

}  // namespace android::host
