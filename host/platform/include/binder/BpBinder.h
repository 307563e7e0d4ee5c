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
// the same proxy.
class BpBinder : public IBinder {
  public:
    // Host only. id is the object's number at its owner, the peer of the session.
    BpBinder(std::shared_ptr<host::Session> session, uint64_t id);
    ~BpBinder() override;

    const String16& getInterfaceDescriptor() const override;
    bool isBinderAlive() const override;
    status_t pingBinder() override;
    status_t transact(uint32_t code, const Parcel& data, Parcel* reply,
                      uint32_t flags = 0) override;
    status_t linkToDeath(const sp<DeathRecipient>& recipient, void* cookie = nullptr,
                         uint32_t flags = 0) override;
    status_t unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie = nullptr,
                           uint32_t flags = 0, wp<DeathRecipient>* outRecipient = nullptr) override;
    BpBinder* remoteBinder() override;
    void onLastStrongRef(const void* id) override;

    // Host only. Tells every linked recipient, the first time it is called. No lock may be held.
    void sendObituary();

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
    mutable std::mutex mLock;
    bool mObituarySent = false;
    std::vector<Link> mLinks;
    mutable String16 mDescriptor;
};

}  // namespace android
