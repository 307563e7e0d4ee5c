// The service manager: it lives in the daemon, and is object 0 to every client.
#pragma once

#include <mutex>
#include <vector>

#include <binder/Binder.h>
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>

namespace android::host {

// Names are kept for ever, newest first. Clients look up and list; only the daemon itself adds.
class ServiceManager : public IServiceManager, public BBinder {
  public:
    static const sp<ServiceManager>& self();

    sp<IBinder> checkService(const String16& name) const override;
    status_t addService(const String16& name, const sp<IBinder>& service, bool allowIsolated,
                        int dumpsysFlags) override;
    Vector<String16> listServices(int dumpsysFlags) override;

    const String16& getInterfaceDescriptor() const override { return transactionDescriptor(); }

  protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override;

  private:
    struct Entry {
        String16 name;
        sp<IBinder> service;
        int dumpsysFlags;  // those of the first registration
    };

    status_t replyName(const Parcel& data, Parcel* reply);

    mutable std::mutex mLock;
    std::vector<Entry> mEntries;  // newest last
};

}  // namespace android::host
