// Calls of the echo service, as the tests, benchmarks and the peer program make them.
#pragma once

#include "tests/echo_service.h"

namespace echo {

inline android::sp<android::IBinder> find() {
    return android::defaultServiceManager()->getService(kName);
}

// A call whose arguments are int32s and whose reply, if it has one, begins with an int32.
inline android::status_t call(const android::sp<android::IBinder>& service, uint32_t code,
                              const std::vector<int32_t>& arguments = {}, int32_t* out = nullptr) {
    android::Parcel data;
    android::Parcel reply;
    for (const int32_t argument : arguments) data.writeInt32(argument);
    const android::status_t status = service->transact(code, data, &reply);
    if (status == android::OK && out != nullptr) *out = reply.readInt32();
    return status;
}

inline int32_t ask(const android::sp<android::IBinder>& service, uint32_t code) {
    int32_t answer = -1;
    call(service, code, {}, &answer);
    return answer;
}

// The object in the reply to a call without arguments.
inline android::sp<android::IBinder> receive(const android::sp<android::IBinder>& service,
                                             uint32_t code) {
    android::Parcel data;
    android::Parcel reply;
    service->transact(code, data, &reply);
    return reply.readStrongBinder();
}

// Hands an object over. known: whether the daemon had it already.
inline android::status_t keep(const android::sp<android::IBinder>& service,
                              const android::sp<android::IBinder>& object, bool* known = nullptr) {
    android::Parcel data;
    android::Parcel reply;
    data.writeStrongBinder(object);
    const android::status_t status = service->transact(KEEP, data, &reply);
    if (known != nullptr) *known = reply.readInt32() == 1;
    return status;
}

}  // namespace echo
