// The pattern of an interface I: the class that users see, BnI where the object lives, BpI where it
// is called from. Classes of the kind are generated from .aidl files; this is what they are made
// with.
#pragma once

#include <memory>

#include <binder/Binder.h>

namespace android {

// What both ends of an interface have in common: behind it stands a binder object.
class IInterface : public virtual RefBase {
  public:
    // Gives that object, by which two interfaces are told apart; null for null.
    static sp<IBinder> asBinder(const IInterface* interface);
    static sp<IBinder> asBinder(const sp<IInterface>& interface);

  protected:
    virtual IBinder* onAsBinder() = 0;
};

// Gives null for a null binder. For a remote object it is a new proxy each time: compare by
// asBinder.
template <typename INTERFACE>
inline sp<INTERFACE> interface_cast(const sp<IBinder>& object) {
    return INTERFACE::asInterface(object);
}

// Where the object lives: it is the interface and the binder object in one.
template <typename INTERFACE>
class BnInterface : public INTERFACE, public BBinder {
  public:
    sp<IInterface> queryLocalInterface(const String16& descriptor) override {
        if (descriptor == INTERFACE::descriptor) return this;
        return nullptr;
    }
    const String16& getInterfaceDescriptor() const override {
        return INTERFACE::getInterfaceDescriptor();
    }

  protected:
    IBinder* onAsBinder() override { return this; }
};

// Where it is called from: it turns each method into a transaction of the remote object.
template <typename INTERFACE>
class BpInterface : public INTERFACE, public BpRefBase {
  public:
    explicit BpInterface(const sp<IBinder>& remote) : BpRefBase(remote) {}

  protected:
    IBinder* onAsBinder() override { return remote(); }
};

// The next two go into each interface's header and source. asInterface gives the object itself
// where it lives, and a new proxy elsewhere. The descriptor is what tokens are compared with.
//
// getDefaultImpl is asked by the code that the host's aidl generates; there is never one.
#define DECLARE_META_INTERFACE(INTERFACE)                                                         \
    static const ::android::String16 descriptor;                                                  \
    static ::android::sp<I##INTERFACE> asInterface(const ::android::sp<::android::IBinder>& obj); \
    virtual const ::android::String16& getInterfaceDescriptor() const;                            \
    static I##INTERFACE* getDefaultImpl() {                                                       \
        return nullptr;                                                                           \
    }                                                                                             \
    I##INTERFACE();                                                                               \
    virtual ~I##INTERFACE();

#define IMPLEMENT_META_INTERFACE(INTERFACE, NAME)                                          \
    const ::android::String16 I##INTERFACE::descriptor(NAME);                              \
    const ::android::String16& I##INTERFACE::getInterfaceDescriptor() const {              \
        return I##INTERFACE::descriptor;                                                   \
    }                                                                                      \
    ::android::sp<I##INTERFACE> I##INTERFACE::asInterface(                                 \
            const ::android::sp<::android::IBinder>& obj) {                                \
        if (obj == nullptr) return nullptr;                                                \
        ::android::sp<::android::IInterface> local = obj->queryLocalInterface(descriptor); \
        if (local != nullptr) return static_cast<I##INTERFACE*>(local.get());              \
        return new Bp##INTERFACE(obj);                                                     \
    }                                                                                      \
    I##INTERFACE::I##INTERFACE() {}                                                        \
    I##INTERFACE::~I##INTERFACE() {}

}  // namespace android
