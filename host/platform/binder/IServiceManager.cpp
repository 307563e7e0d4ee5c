// What the service manager in the daemon and its proxy in a client share: waiting for a service is
// asking again and again, and a transaction begins with the same descriptor.
#include <binder/IServiceManager.h>
#include <cutils/properties.h>
#include <string.h>
#include <unistd.h>

namespace android {

const String16& IServiceManager::transactionDescriptor() {
    static const String16& descriptor = *new String16("android.os.IServiceManager");
    return descriptor;
}

// The times are those of libbinder: a booted device is asked less often.
sp<IBinder> IServiceManager::getService(const String16& name) const {
    char booted[PROPERTY_VALUE_MAX];
    property_get("sys.boot_completed", booted, "0");
    const int stepMs = strcmp(booted, "1") == 0 ? 1000 : 100;
    for (int waitedMs = 0;; waitedMs += stepMs) {
        sp<IBinder> service = checkService(name);
        if (service != nullptr || waitedMs >= 5000) return service;
        usleep(static_cast<useconds_t>(stepMs) * 1000);
    }
}

}  // namespace android
