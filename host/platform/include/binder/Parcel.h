// What travels in a call.
#pragma once

#include <string>
#include <vector>

#include <binder/IInterface.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/String16.h>

namespace android {

namespace host {
class ParcelAccess;
}

// The arguments or results of one call: items of multiples of 4 bytes, little endian, untyped, and
// the binder objects among them. Writes and reads share one position. Used by one thread at a time.
//
// Unless it says otherwise, a read fails with NOT_ENOUGH_DATA when the parcel ends before the item,
// and then leaves the position alone. The count that opens a text or a vector is consumed all the
// same, and a failure that shows in the item itself is noticed behind it. The bytes of a binder
// object are no data: PERMISSION_DENIED.
class Parcel {
  public:
    Parcel() = default;
    Parcel(const Parcel&) = delete;
    Parcel& operator=(const Parcel&) = delete;

    // The bytes that were written: fewer than dataSize() while the position lies beyond them.
    const uint8_t* data() const { return mData.data(); }
    size_t dataSize() const;
    // Counts from the position to the end.
    size_t dataAvail() const;
    size_t dataPosition() const { return mPosition; }
    // May lie beyond the end: a write fills the gap with zero bytes, a read finds nothing.
    void setDataPosition(size_t position) const { mPosition = position; }
    // Cuts, or grows by zero bytes. Objects that do not fit whole are given up. Always OK.
    status_t setDataSize(size_t size);
    // Makes the parcel hold a copy of the bytes, without any object, read from the beginning.
    // Always OK.
    status_t setData(const uint8_t* buffer, size_t length);

    // Every call begins with a token: a header of the device's strict mode, of no use here, and the
    // interface's descriptor.
    status_t writeInterfaceToken(const String16& interface);
    // Reads the token, and says whether it is the interface's. The header may hold anything.
    bool enforceInterface(const String16& interface) const;
    // The same with the descriptor of the object, of which a proxy may have to ask.
    bool checkInterface(IBinder* binder) const;

    // The bytes, filled up with zero bytes to a multiple of 4. BAD_VALUE from 2 GiB on.
    status_t write(const void* data, size_t length);
    status_t writeInt32(int32_t value);
    status_t writeInt64(int64_t value);
    // A bool travels as an int32, 0 or 1.
    status_t writeBool(bool value);
    // The number of units, the units and a 0. A null text has the number -1 and nothing else.
    status_t writeString16(const String16& value);
    status_t writeString16(const char16_t* value, size_t units);
    // The number of items, and the items.
    status_t writeInt32Vector(const std::vector<int32_t>& value);
    status_t writeString16Vector(const std::vector<String16>& value);
    // 24 bytes that say what the object is in this process, or that it is null. The parcel holds
    // the object; what another process gets instead is the transport's business.
    status_t writeStrongBinder(const sp<IBinder>& value);

    // The bytes, and moves on by a multiple of 4. The variants below that return the value itself
    // give 0, false, an empty text or null for a failure, and cannot be told from it.
    status_t read(void* out, size_t length) const;
    int32_t readInt32() const;
    status_t readInt32(int32_t* out) const;
    int64_t readInt64() const;
    status_t readInt64(int64_t* out) const;
    bool readBool() const;
    status_t readBool(bool* out) const;  // anything but 0 is true
    // UNEXPECTED_NULL, and an empty text, for a null one and for any that is damaged.
    String16 readString16() const;
    status_t readString16(String16* out) const;
    // UNEXPECTED_NULL for a negative count. One that cannot be met by what is left is refused with
    // BAD_VALUE before anything is allocated; the device would try to. When an item fails, *out has
    // the ones before it.
    status_t readInt32Vector(std::vector<int32_t>* out) const;
    status_t readString16Vector(std::vector<String16>* out) const;
    // BAD_TYPE for what is no object. Null is an object for readNullableStrongBinder and for the
    // one without a status, and UNEXPECTED_NULL for the others.
    sp<IBinder> readStrongBinder() const;
    status_t readStrongBinder(sp<IBinder>* out) const;
    status_t readNullableStrongBinder(sp<IBinder>* out) const;

    // An object as an interface; for a remote one a new proxy.
    template <typename T>
    status_t readStrongBinder(sp<T>* out) const {
        sp<IBinder> binder;
        status_t status = readStrongBinder(&binder);
        if (status == OK) {
            *out = interface_cast<T>(binder);
            if (*out == nullptr) return UNKNOWN_ERROR;
        }
        return status;
    }

  private:
    friend class host::ParcelAccess;

    // Where in the bytes an object stands, and which it is: the bytes alone are never believed.
    struct Object {
        size_t offset;
        sp<IBinder> binder;
    };

    // What stands at the position; null if that is less than length.
    const uint8_t* peek(size_t length) const;
    bool touchesObject(size_t begin, size_t end) const;
    template <typename T>
    status_t readValue(T* out) const;

    std::vector<uint8_t> mData;
    mutable size_t mPosition = 0;
    std::vector<Object> mObjects;  // by ascending offset
};

}  // namespace android
