// Objects that live in another process.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include <binder/IBinder.h>

namespace android {

namespace host {
class Session;
}

// The proxy of an object in another process. While one is held, the same object arriving again is
// the same proxy. Any thread may use it.
class BpBinder : public IBinder {
  public:
    // Host only. id is the object's number at its owner, the peer of the session.
    BpBinder(std::shared_ptr<host::Session> session, uint64_t id);
    ~BpBinder() override;

    const String16& getInterfaceDescriptor() const override;
    bool isBinderAlive() const override;
    status_t pingBinder() override;
    // DEAD_OBJECT at once when the object is known to be dead.
    status_t transact(uint32_t code, const Parcel& data, Parcel* reply,
                      uint32_t flags = 0) override;
    status_t linkToDeath(const sp<DeathRecipient>& recipient, void* cookie = nullptr,
                         uint32_t flags = 0) override;
    status_t unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie = nullptr,
                           uint32_t flags = 0, wp<DeathRecipient>* outRecipient = nullptr) override;
    BpBinder* remoteBinder() override;
    // Tells the session, which tells the owner that it may let go.
    void onLastStrongRef(const void* id) override;

    // Host only. Tells every linked recipient, the first time it is called. No lock may be held.
    void sendObituary();

    // Host only. The session stays as long as a proxy of it, also when it has ended.
    host::Session* session() const { return mSession.get(); }
    uint64_t id() const { return mId; }

  private:
    struct Link {
        wp<DeathRecipient> recipient;
        void* cookie;
        uint32_t flags;
    };

    const std::shared_ptr<host::Session> mSession;
    const uint64_t mId;
    std::atomic<bool> mAlive{true};
    mutable std::mutex mLock;  // of what follows; never held while somebody else's code runs
    bool mObituarySent = false;
    std::vector<Link> mLinks;
    mutable String16 mDescriptor;
};

}  // namespace android
