// What every binder object can do, wherever it lives.
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
    // Codes of calls: an interface counts its methods from the first one on; the others are the
    // system's own, which every object answers. FLAG_ONEWAY: nobody waits, and there is no reply.
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

    // Who is to be told of a death. The proxy that it is linked to holds it weakly, so somebody
    // else has to keep it: one that is gone by then is passed over.
    class DeathRecipient : public virtual RefBase {
      public:
        // who is the proxy that was linked. All notices of a process come on one thread, which runs
        // nothing else: who takes long here delays the others. On the device it is any thread of
        // the pool.
        virtual void binderDied(const wp<IBinder>& who) = 0;
    };

    // The object itself if it lives here and has that interface, else null: then a proxy is needed.
    virtual sp<IInterface> queryLocalInterface(const String16& descriptor);
    // Gives the name of the object's interface. A proxy asks the object, once; it is empty when
    // that fails.
    virtual const String16& getInterfaceDescriptor() const = 0;
    // False once the process that hosts the object was seen to be gone, or a call came back with
    // DEAD_OBJECT. True says nothing about the next call.
    virtual bool isBinderAlive() const = 0;
    // OK if the object answers. A proxy waits for that like for any call.
    virtual status_t pingBinder() = 0;
    // Calls the object and waits for its reply, without a limit; with FLAG_ONEWAY it waits for
    // nothing. The status is the call's own, and says nothing about the Status in the reply. On a
    // failure the reply holds nothing of use.
    //
    // Unlike on the device: FAILED_TRANSACTION beyond 192 KiB or 256 objects, of the arguments or
    // of the reply (there 1 MiB less two pages for all that runs at once). From the daemon to a
    // client only one-way calls are possible: INVALID_OPERATION else, also for a ping, and the
    // descriptor of a client's object stays empty.
    virtual status_t transact(uint32_t code, const Parcel& data, Parcel* reply,
                              uint32_t flags = 0) = 0;

    // INVALID_OPERATION for a local object, DEAD_OBJECT once the notice was sent. For an object
    // that is dead and not yet noticed the link succeeds, and the notice follows. Who is linked
    // twice is told twice.
    virtual status_t linkToDeath(const sp<DeathRecipient>& recipient, void* cookie = nullptr,
                                 uint32_t flags = 0) = 0;
    // Removes the first link with equal flags and an equal recipient, or a null recipient and an
    // equal cookie; NAME_NOT_FOUND if there is none.
    virtual status_t unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie = nullptr,
                                   uint32_t flags = 0,
                                   wp<DeathRecipient>* outRecipient = nullptr) = 0;

    // The object as what it is: exactly one of the two is not null.
    virtual BBinder* localBinder();
    virtual BpBinder* remoteBinder();
};

}  // namespace android
