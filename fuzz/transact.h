// What the targets of the services' onTransact share.
#pragma once

#include <binder/Binder.h>
#include <binder/Parcel.h>
#include <stdint.h>
#include <string.h>

// One call: the first four bytes of the input are the code, the others the request. A fuzzer cannot
// put an object into it, as only the transport can. What the service answers does not matter.
inline void transact(const android::sp<android::BBinder>& service, const uint8_t* data,
                     size_t size) {
    uint32_t code = 0;
    if (size < sizeof(code)) return;
    memcpy(&code, data, sizeof(code));
    android::Parcel request;
    android::Parcel reply;
    request.setData(data + sizeof(code), size - sizeof(code));
    service->transact(code, request, &reply);
}
