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
// the binder objects among them. Writes and reads share one position. A failed read leaves the
// position alone (a String16's count is consumed). Used by one thread at a time.
class Parcel {
  public:
    Parcel() = default;
    Parcel(const Parcel&) = delete;
    Parcel& operator=(const Parcel&) = delete;

    const uint8_t* data() const { return mData.data(); }
    size_t dataSize() const;
    size_t dataAvail() const;
    size_t dataPosition() const { return mPosition; }
    void setDataPosition(size_t position) const { mPosition = position; }
    status_t setDataSize(size_t size);
    status_t setData(const uint8_t* buffer, size_t length);

    status_t writeInterfaceToken(const String16& interface);
    bool enforceInterface(const String16& interface) const;
    bool checkInterface(IBinder* binder) const;

    status_t write(const void* data, size_t length);
    status_t writeInt32(int32_t value);
    status_t writeInt64(int64_t value);
    status_t writeBool(bool value);
    status_t writeString16(const String16& value);
    status_t writeString16(const char16_t* value, size_t units);  // null is its own value
    status_t writeInt32Vector(const std::vector<int32_t>& value);
    status_t writeString16Vector(const std::vector<String16>& value);
    status_t writeStrongBinder(const sp<IBinder>& value);

    status_t read(void* out, size_t length) const;
    int32_t readInt32() const;
    status_t readInt32(int32_t* out) const;
    int64_t readInt64() const;
    status_t readInt64(int64_t* out) const;
    bool readBool() const;
    status_t readBool(bool* out) const;
    String16 readString16() const;
    status_t readString16(String16* out) const;
    // A count that cannot be met by what is left is refused with BAD_VALUE before anything is
    // allocated; the device would try to.
    status_t readInt32Vector(std::vector<int32_t>* out) const;
    status_t readString16Vector(std::vector<String16>* out) const;
    sp<IBinder> readStrongBinder() const;
    status_t readStrongBinder(sp<IBinder>* out) const;  // null is UNEXPECTED_NULL
    status_t readNullableStrongBinder(sp<IBinder>* out) const;

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

    struct Object {
        size_t offset;
        sp<IBinder> binder;
    };

    const uint8_t* peek(size_t length) const;
    bool touchesObject(size_t begin, size_t end) const;
    template <typename T>
    status_t readValue(T* out) const;

    std::vector<uint8_t> mData;
    mutable size_t mPosition = 0;
    std::vector<Object> mObjects;  // by ascending offset
};

}  // namespace android
