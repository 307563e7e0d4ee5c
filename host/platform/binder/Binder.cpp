// What an object answers by itself, before and behind the interface that a derived class adds: a
// ping, its descriptor, and the system's other questions as far as they can be asked on a host.
#include <binder/Binder.h>
#include <binder/IInterface.h>
#include <binder/Parcel.h>

namespace android {

sp<IInterface> IBinder::queryLocalInterface(const String16& /*descriptor*/) {
    return nullptr;
}

BBinder* IBinder::localBinder() {
    return nullptr;
}

BpBinder* IBinder::remoteBinder() {
    return nullptr;
}

const String16& BBinder::getInterfaceDescriptor() const {
    static const String16& empty = *new String16();
    return empty;
}

bool BBinder::isBinderAlive() const {
    return true;
}

status_t BBinder::pingBinder() {
    return OK;
}

// The parcel may have been written just now, by a caller in this process: hence the step back.
status_t BBinder::transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
    data.setDataPosition(0);
    status_t status = OK;
    if (code == PING_TRANSACTION) {
        reply->writeInt32(pingBinder());
    } else {
        status = onTransact(code, data, reply, flags);
    }
    if (reply != nullptr) reply->setDataPosition(0);
    return status;
}

status_t BBinder::onTransact(uint32_t code, const Parcel& /*data*/, Parcel* reply,
                             uint32_t /*flags*/) {
    switch (code) {
        case INTERFACE_TRANSACTION:
            return reply->writeString16(getInterfaceDescriptor());
        // The device's objects say OK as well, of a dump that writes nothing. Here nothing is done
        // for any of them: the descriptors that they are given cannot travel.
        case DUMP_TRANSACTION:
        case SHELL_COMMAND_TRANSACTION:
        case SYSPROPS_TRANSACTION:
            return OK;
        default:
            return UNKNOWN_TRANSACTION;
    }
}

status_t BBinder::linkToDeath(const sp<DeathRecipient>& /*recipient*/, void* /*cookie*/,
                              uint32_t /*flags*/) {
    return INVALID_OPERATION;
}

status_t BBinder::unlinkToDeath(const wp<DeathRecipient>& /*recipient*/, void* /*cookie*/,
                                uint32_t /*flags*/, wp<DeathRecipient>* /*outRecipient*/) {
    return INVALID_OPERATION;
}

BBinder* BBinder::localBinder() {
    return this;
}

// The pointer may be const as on the device; the object behind it never is.
sp<IBinder> IInterface::asBinder(const IInterface* interface) {
    return interface != nullptr ? const_cast<IInterface*>(interface)->onAsBinder() : nullptr;
}

sp<IBinder> IInterface::asBinder(const sp<IInterface>& interface) {
    return asBinder(interface.get());
}

}  // namespace android
