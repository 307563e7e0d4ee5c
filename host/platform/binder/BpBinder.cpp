// A proxy is a number and the session that knows what it stands for. Beside that it remembers what
// it learnt, the descriptor and that the object is dead, and who wants to be told of that. An
// obituary is sent once: whoever links too late for it is told at once.
#include <binder/BpBinder.h>
#include <binder/Parcel.h>

#include <utility>

#include "host/platform/binder/notices.h"
#include "host/platform/binder/session.h"

namespace android {

BpBinder::BpBinder(std::shared_ptr<host::Session> session, uint64_t id)
    : mSession(std::move(session)), mId(id) {}

BpBinder::~BpBinder() = default;

void BpBinder::onLastStrongRef(const void* /*id*/) {
    mSession->proxyGone(this);
}

// The call is made without the lock, as it may take any time; two threads may both make it. An
// object whose descriptor is empty is asked each time.
const String16& BpBinder::getInterfaceDescriptor() const {
    static const String16& empty = *new String16();
    {
        std::lock_guard<std::mutex> guard(mLock);
        if (mDescriptor.size() > 0) return mDescriptor;
    }
    Parcel data;
    Parcel reply;
    auto* const self = const_cast<BpBinder*>(this);
    if (self->transact(INTERFACE_TRANSACTION, data, &reply) != OK) return empty;
    const String16 descriptor = reply.readString16();
    std::lock_guard<std::mutex> guard(mLock);
    // It is set once: callers hold references to it.
    if (mDescriptor.size() == 0) mDescriptor = descriptor;
    return mDescriptor;
}

bool BpBinder::isBinderAlive() const {
    return mAlive.load(std::memory_order_relaxed);
}

// The reply holds what the object says; a refusal there is one of the ping.
status_t BpBinder::pingBinder() {
    Parcel data;
    Parcel reply;
    status_t status = transact(PING_TRANSACTION, data, &reply);
    int32_t answer = 0;
    if (status == OK) status = reply.readInt32(&answer);
    return status == OK ? answer : status;
}

// DEAD_OBJECT that the service itself answers counts as its death, as on the device.
status_t BpBinder::transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
    if (!isBinderAlive()) return DEAD_OBJECT;
    const status_t status = mSession->transact(mId, code, data, reply, flags);
    if (status == DEAD_OBJECT) mAlive.store(false, std::memory_order_relaxed);
    return status;
}

status_t BpBinder::linkToDeath(const sp<DeathRecipient>& recipient, void* cookie, uint32_t flags) {
    if (!host::startNotices()) return NO_MEMORY;
    {
        std::lock_guard<std::mutex> guard(mLock);
        if (mObituarySent) return DEAD_OBJECT;
        mLinks.push_back({recipient, cookie, flags});
    }
    // The session's end tells only the proxies that it finds.
    if (mSession->ended()) host::sendObituaries({this});
    return OK;
}

// The rules are the device's: without a recipient the cookie tells which link is meant.
status_t BpBinder::unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie, uint32_t flags,
                                 wp<DeathRecipient>* outRecipient) {
    std::lock_guard<std::mutex> guard(mLock);
    if (mObituarySent) return DEAD_OBJECT;
    for (auto link = mLinks.begin(); link != mLinks.end(); ++link) {
        const bool same = link->recipient == recipient ||
                          (recipient.unsafe_get() == nullptr && link->cookie == cookie);
        if (!same || link->flags != flags) continue;
        if (outRecipient != nullptr) *outRecipient = link->recipient;
        mLinks.erase(link);
        return OK;
    }
    return NAME_NOT_FOUND;
}

// The links go before they are told, without the lock: a recipient may unlink itself or others.
void BpBinder::sendObituary() {
    std::vector<Link> links;
    {
        std::lock_guard<std::mutex> guard(mLock);
        mAlive.store(false, std::memory_order_relaxed);
        mObituarySent = true;
        links.swap(mLinks);
    }
    for (const Link& link : links) {
        const sp<DeathRecipient> recipient = link.recipient.promote();
        if (recipient != nullptr) recipient->binderDied(this);
    }
}

BpBinder* BpBinder::remoteBinder() {
    return this;
}

}  // namespace android
