// Objects that live in this process, and what proxies of interfaces derive from.
#pragma once

#include <binder/IBinder.h>

namespace android {

// An object that lives in this process. Calls arrive on any binder thread, several at once.
class BBinder : public IBinder {
  public:
    // Empty unless a derived class has an interface.
    const String16& getInterfaceDescriptor() const override;
    // An object that can be asked lives.
    bool isBinderAlive() const override;
    status_t pingBinder() override;
    // Where calls arrive, from other processes and from this one: reads from the beginning of data,
    // answers a ping, hands everything else to onTransact, and leaves the reply to be read from its
    // beginning.
    status_t transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags = 0) final;
    // Both are refused with INVALID_OPERATION: who holds an object of its own process dies with it.
    status_t linkToDeath(const sp<DeathRecipient>& recipient, void* cookie = nullptr,
                         uint32_t flags = 0) override;
    status_t unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie = nullptr,
                           uint32_t flags = 0, wp<DeathRecipient>* outRecipient = nullptr) override;
    BBinder* localBinder() override;

  protected:
    // Override it for an interface, and hand here what is not the interface's: answers the system's
    // own codes, and every other with UNKNOWN_TRANSACTION. The result is the caller's status.
    virtual status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply,
                                uint32_t flags = 0);
};

// What every proxy class derives from: it holds the remote object, for as long as it lives.
class BpRefBase : public virtual RefBase {
  protected:
    explicit BpRefBase(const sp<IBinder>& object) : mRemote(object) {}
    IBinder* remote() { return mRemote.get(); }
    IBinder* remote() const { return mRemote.get(); }

  private:
    const sp<IBinder> mRemote;
};

}  // namespace android
