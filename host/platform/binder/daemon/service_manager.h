// The service manager: it lives in the daemon, and is object 0 to every client.
#pragma once

#include <mutex>
#include <vector>

#include <binder/Binder.h>
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>

namespace android::host {

// Names are kept for ever, in the order of their first registration; a list begins with the newest.
// Clients look up and list; only the daemon itself adds. Any thread.
class ServiceManager : public IServiceManager, public BBinder {
  public:
    // The one manager of the process, never destroyed.
    static const sp<ServiceManager>& self();

    // IServiceManager says what they do; here they wait for nothing but the lock.
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

    // Answers one step of a list with the name at the index, newest first.
    status_t replyName(const Parcel& data, Parcel* reply);

    mutable std::mutex mLock;
    std::vector<Entry> mEntries;  // newest last
};

}  // namespace android::host
