#pragma once

#include <stdint.h>

#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/String16.h>

namespace android {

class BBinder;
class BpBinder;
class IInterface;
class Parcel;

#define B_PACK_CHARS(c1, c2, c3, c4) (((c1) << 24) | ((c2) << 16) | ((c3) << 8) | (c4))

// An object that can be called from another process: BBinder where it lives, BpBinder elsewhere.
class IBinder : public virtual RefBase {
  public:
    enum {
        FIRST_CALL_TRANSACTION = 0x00000001,
        LAST_CALL_TRANSACTION = 0x00ffffff,

        PING_TRANSACTION = B_PACK_CHARS('_', 'P', 'N', 'G'),
        DUMP_TRANSACTION = B_PACK_CHARS('_', 'D', 'M', 'P'),
        SHELL_COMMAND_TRANSACTION = B_PACK_CHARS('_', 'C', 'M', 'D'),
        INTERFACE_TRANSACTION = B_PACK_CHARS('_', 'N', 'T', 'F'),
        SYSPROPS_TRANSACTION = B_PACK_CHARS('_', 'S', 'P', 'R'),

        FLAG_ONEWAY = 0x00000001,
    };

    // Held weakly by the proxy it is linked to.
    class DeathRecipient : public virtual RefBase {
      public:
        // On a binder thread, with no lock held; who is the proxy that was linked.
        virtual void binderDied(const wp<IBinder>& who) = 0;
    };

    virtual sp<IInterface> queryLocalInterface(const String16& descriptor);
    virtual const String16& getInterfaceDescriptor() const = 0;
    // False only after the process that hosts the object was seen to be gone.
    virtual bool isBinderAlive() const = 0;
    virtual status_t pingBinder() = 0;
    virtual status_t transact(uint32_t code, const Parcel& data, Parcel* reply,
                              uint32_t flags = 0) = 0;

    // A local object: INVALID_OPERATION. After the notice was sent: DEAD_OBJECT. An object that is
    // dead but not yet noticed: 0, and the notice follows. Linked twice, told twice.
    virtual status_t linkToDeath(const sp<DeathRecipient>& recipient, void* cookie = nullptr,
                                 uint32_t flags = 0) = 0;
    // Removes the first link with equal flags and an equal recipient, or a null recipient and an
    // equal cookie; NAME_NOT_FOUND if there is none.
    virtual status_t unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie = nullptr,
                                   uint32_t flags = 0,
                                   wp<DeathRecipient>* outRecipient = nullptr) = 0;

    virtual BBinder* localBinder();
    virtual BpBinder* remoteBinder();
};

}  // namespace android
