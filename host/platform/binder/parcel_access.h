// What the transport needs of a parcel and nobody else may have.
#pragma once

#include <binder/Parcel.h>

namespace android::host {

// Bytes that a binder object takes in a parcel, on the device and so in a packet.
constexpr size_t kObjectSize = 24;

class ParcelAccess {
  public:
    using Object = Parcel::Object;

    // The objects in the parcel, by ascending offset.
    static const std::vector<Object>& objects(const Parcel& parcel) { return parcel.mObjects; }

    // Makes the parcel hold what was received. objects stand by ascending offset, whole within the
    // data and apart from each other; their bytes there are rewritten to say what they are in this
    // process. The caller has made sure of the offsets.
    static void fill(const uint8_t* data, size_t size, std::vector<Object> objects, Parcel* parcel);
};

}  // namespace android::host
