// What the service manager in the daemon and its proxy in a client share.
#pragma once

#include <binder/IServiceManager.h>
#include <binder/Parcel.h>

namespace android::host {

// The descriptor of the manager's transactions.
const String16& serviceManagerDescriptor();

// The manager's only error.
constexpr status_t kRefused = -1;

class ServiceLookup : public IServiceManager {
  public:
    sp<IBinder> getService(const String16& name) const override;
};

}  // namespace android::host
