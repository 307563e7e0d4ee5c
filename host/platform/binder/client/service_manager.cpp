// The service manager as a client sees it: object 0 of the daemon. Its transactions are those of
// the device's manager, so a list is asked for name by name.
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>
#include <unistd.h>

#include "host/platform/binder/client/daemon_session.h"

namespace android {
namespace host {

// Asks whichever daemon serves at the time of the call.
class ServiceManagerProxy : public IServiceManager {
  public:
    sp<IBinder> checkService(const String16& name) const override {
        Parcel data;
        Parcel reply;
        data.writeInterfaceToken(transactionDescriptor());
        data.writeString16(name);
        call(CHECK_SERVICE_TRANSACTION, data, &reply);
        // An empty reply, to a name that is not known or a call that failed, holds no object.
        return reply.readStrongBinder();
    }

    status_t addService(const String16& name, const sp<IBinder>& service, bool allowIsolated,
                        int dumpsysFlags) override {
        Parcel data;
        Parcel reply;
        data.writeInterfaceToken(transactionDescriptor());
        data.writeString16(name);
        data.writeStrongBinder(service);
        data.writeInt32(allowIsolated ? 1 : 0);
        data.writeInt32(dumpsysFlags);
        const status_t status = call(ADD_SERVICE_TRANSACTION, data, &reply);
        return status == OK ? reply.readInt32() : status;
    }

    Vector<String16> listServices(int dumpsysFlags) override {
        Vector<String16> names;
        for (int32_t index = 0;; ++index) {
            Parcel data;
            Parcel reply;
            data.writeInterfaceToken(transactionDescriptor());
            data.writeInt32(index);
            data.writeInt32(dumpsysFlags);
            if (call(LIST_SERVICES_TRANSACTION, data, &reply) != OK) return names;
            names.add(reply.readString16());
        }
    }

  private:
    // DEAD_OBJECT where no daemon serves.
    static status_t call(uint32_t code, const Parcel& data, Parcel* reply) {
        const std::shared_ptr<DaemonSession> daemon = DaemonSession::current();
        return daemon != nullptr ? daemon->transact(0, code, data, reply, 0) : DEAD_OBJECT;
    }
};

}  // namespace host

// Waits for a daemon once a process. One that is gone later is not waited for: look-ups then find
// nothing until the next one serves.
sp<IServiceManager> defaultServiceManager() {
    static const sp<IServiceManager>& manager = *new sp<IServiceManager>([] {
        while (host::DaemonSession::current() == nullptr) sleep(1);
        return new host::ServiceManagerProxy;
    }());
    return manager;
}

}  // namespace android
