#pragma once

#include <binder/IBinder.h>

namespace android {

// An object that lives in this process. Calls arrive on any binder thread, several at once.
class BBinder : public IBinder {
  public:
    const String16& getInterfaceDescriptor() const override;
    bool isBinderAlive() const override;
    status_t pingBinder() override;
    status_t transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags = 0) final;
    status_t linkToDeath(const sp<DeathRecipient>& recipient, void* cookie = nullptr,
                         uint32_t flags = 0) override;
    status_t unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie = nullptr,
                           uint32_t flags = 0, wp<DeathRecipient>* outRecipient = nullptr) override;
    BBinder* localBinder() override;

  protected:
    // Answers the system's own codes; every other code is UNKNOWN_TRANSACTION.
    virtual status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply,
                                uint32_t flags = 0);
};

// What every proxy class derives from: it holds the remote object.
class BpRefBase : public virtual RefBase {
  protected:
    explicit BpRefBase(const sp<IBinder>& object) : mRemote(object) {}
    IBinder* remote() { return mRemote.get(); }
    IBinder* remote() const { return mRemote.get(); }

  private:
    const sp<IBinder> mRemote;
};

}  // namespace android
