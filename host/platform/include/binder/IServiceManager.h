// The names of services. The one manager lives in the daemon; a client asks it.
#pragma once

#include <binder/IBinder.h>
#include <utils/Vector.h>

namespace android {

// Any thread may ask. What a client asks is answered also while all of the daemon's calls hang.
class IServiceManager : public virtual RefBase {
  public:
    // The codes of the manager's own transactions, and the flags of "dumpsys", by which a service
    // says how urgent its dump is. Only the flags' use as a mask in listServices is served here.
    enum {
        GET_SERVICE_TRANSACTION = IBinder::FIRST_CALL_TRANSACTION,
        CHECK_SERVICE_TRANSACTION,
        ADD_SERVICE_TRANSACTION,
        LIST_SERVICES_TRANSACTION,
    };

    static const int DUMP_FLAG_PRIORITY_CRITICAL = 1 << 0;
    static const int DUMP_FLAG_PRIORITY_HIGH = 1 << 1;
    static const int DUMP_FLAG_PRIORITY_NORMAL = 1 << 2;
    static const int DUMP_FLAG_PRIORITY_DEFAULT = 1 << 3;
    static const int DUMP_FLAG_PRIORITY_ALL = DUMP_FLAG_PRIORITY_CRITICAL |
                                              DUMP_FLAG_PRIORITY_HIGH | DUMP_FLAG_PRIORITY_NORMAL |
                                              DUMP_FLAG_PRIORITY_DEFAULT;

    // Looks a name up for about 5 s, every 100 ms (every 1000 ms once sys.boot_completed is "1").
    // Null when that was in vain.
    virtual sp<IBinder> getService(const String16& name) const;
    // Looks a name up once. Null for an unknown name and for a call that failed alike.
    virtual sp<IBinder> checkService(const String16& name) const = 0;
    // Names are 1 to 127 units. A name that exists gets the new service and keeps its place and its
    // flags. 0, or PERMISSION_DENIED: a null service, a bad name, or a process that is not the
    // daemon (the others host callbacks). allowIsolated makes no difference.
    virtual status_t addService(const String16& name, const sp<IBinder>& service,
                                bool allowIsolated = false,
                                int dumpsysFlags = DUMP_FLAG_PRIORITY_DEFAULT) = 0;
    // The names whose flags meet the mask, newest first. Empty for a call that failed as well.
    virtual Vector<String16> listServices(int dumpsysFlags = DUMP_FLAG_PRIORITY_ALL) = 0;

    // Host only: the descriptor that the manager's transactions carry.
    static const String16& transactionDescriptor();
};

// Gives this process's manager, never null. In a client it waits for the daemon's socket, one try a
// second.
sp<IServiceManager> defaultServiceManager();

}  // namespace android
