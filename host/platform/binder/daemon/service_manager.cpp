// A list of names and objects with two doors: the daemon's modules call it directly, clients
// through transactions as the device's manager has them. A client cannot add: its objects are
// callbacks, and a service in a client would need calls from one client to another.
#include "host/platform/binder/daemon/service_manager.h"

#include <android/log.h>
#include <utils/String8.h>

#include <utility>

namespace android {

sp<IServiceManager> defaultServiceManager() {
    return host::ServiceManager::self();
}

namespace host {

static constexpr size_t kMaxName = 127;

const sp<ServiceManager>& ServiceManager::self() {
    static const sp<ServiceManager>& manager = *new sp<ServiceManager>(new ServiceManager);
    return manager;
}

// There are a handful of names: a walk is as good as any search.
sp<IBinder> ServiceManager::checkService(const String16& name) const {
    std::lock_guard<std::mutex> guard(mLock);
    for (const Entry& entry : mEntries) {
        if (entry.name == name) return entry.service;
    }
    return nullptr;
}

status_t ServiceManager::addService(const String16& name, const sp<IBinder>& service,
                                    bool /*allowIsolated*/, int dumpsysFlags) {
    if (service == nullptr || name.size() == 0 || name.size() > kMaxName) {
        __android_log_print(ANDROID_LOG_ERROR, "ServiceManager", "addService('%s') refused: %s",
                            String8(name).string(),
                            service == nullptr ? "no service" : "a name has 1 to 127 characters");
        return PERMISSION_DENIED;
    }
    sp<IBinder> before;  // let go of without the lock
    std::lock_guard<std::mutex> guard(mLock);
    for (Entry& entry : mEntries) {
        if (entry.name != name) continue;
        before = std::move(entry.service);
        entry.service = service;
        return OK;
    }
    mEntries.push_back({name, service, dumpsysFlags});
    return OK;
}

Vector<String16> ServiceManager::listServices(int dumpsysFlags) {
    Vector<String16> names;
    std::lock_guard<std::mutex> guard(mLock);
    for (auto entry = mEntries.rbegin(); entry != mEntries.rend(); ++entry) {
        if ((entry->dumpsysFlags & dumpsysFlags) != 0) names.add(entry->name);
    }
    return names;
}

// A client lists by asking for one index after the other until it is refused. A name that is added
// meanwhile moves the others on: one of them is told twice, and the new one not at all.
status_t ServiceManager::replyName(const Parcel& data, Parcel* reply) {
    const int32_t index = data.readInt32();
    const Vector<String16> names = listServices(data.readInt32());
    if (index < 0 || static_cast<size_t>(index) >= names.size()) return PERMISSION_DENIED;
    return reply->writeString16(names[static_cast<size_t>(index)]);
}

// A look-up with or without waiting is the same here: the waiting is the client's.
status_t ServiceManager::onTransact(uint32_t code, const Parcel& data, Parcel* reply,
                                    uint32_t flags) {
    if (code < GET_SERVICE_TRANSACTION || code > LIST_SERVICES_TRANSACTION) {
        return BBinder::onTransact(code, data, reply, flags);
    }
    if (!data.checkInterface(this)) return PERMISSION_DENIED;
    if (code == LIST_SERVICES_TRANSACTION) return replyName(data, reply);
    if (code == ADD_SERVICE_TRANSACTION) return PERMISSION_DENIED;
    const sp<IBinder> service = checkService(data.readString16());
    return service != nullptr ? reply->writeStrongBinder(service) : PERMISSION_DENIED;
}

}  // namespace host
}  // namespace android
