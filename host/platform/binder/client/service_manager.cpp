// The service manager as a client sees it: object 0 of the daemon.
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
    static status_t call(uint32_t code, const Parcel& data, Parcel* reply) {
        const std::shared_ptr<DaemonSession> daemon = DaemonSession::current();
        return daemon != nullptr ? daemon->transact(0, code, data, reply, 0) : DEAD_OBJECT;
    }
};

}  // namespace host

sp<IServiceManager> defaultServiceManager() {
    static const sp<IServiceManager>& manager = *new sp<IServiceManager>([] {
        while (host::DaemonSession::current() == nullptr) sleep(1);
        return new host::ServiceManagerProxy;
    }());
    return manager;
}

}  // namespace android
