// A parcel is its bytes and, apart from them, the binder objects that stand in them: bytes that
// merely look like an object never become one. The layout is the device's, byte for byte, so that
// what is pinned by tests here holds there as well. Text and vectors are read with the lengths that
// the other side wrote, so each is compared with what is left before anything is read or allocated.
#include <binder/BpBinder.h>
#include <binder/Parcel.h>

#include <string.h>

#include <algorithm>
#include <utility>

#include "host/platform/binder/parcel_access.h"

namespace android {

// The strict-mode header of a native caller: the policy itself is 0. The number is the flag
// PENALTY_GATHER of the device's StrictMode, which its libbinder always sets.
static constexpr int32_t kStrictModePolicyPenaltyGather = 0x00400000;

// This is struct flat_binder_object of <linux/android/binder.h>, as 64-bit processes have it.
struct FlatBinder {
    uint32_t type;
    uint32_t flags;
    uint64_t handle;
    uint64_t cookie;
};
static_assert(sizeof(FlatBinder) == host::kObjectSize, "as the device has it");

// They are BINDER_TYPE_BINDER and BINDER_TYPE_HANDLE of that header: 's', 'b' or 'h', '*', 0x85.
static constexpr uint32_t kTypeBinder = 0x73622A85;
static constexpr uint32_t kTypeHandle = 0x73682A85;
static constexpr uint32_t kFlags = 0x113;  // accepts descriptors, priority 0x13

// Every item ends at a multiple of 4 bytes.
static size_t padded(size_t length) {
    return (length + 3) & ~static_cast<size_t>(3);
}

// The position counts: what lies before it is written as zeros when the next item is.
size_t Parcel::dataSize() const {
    return std::max(mData.size(), mPosition);
}

size_t Parcel::dataAvail() const {
    return dataSize() - mPosition;
}

// Objects are sorted, so those that no longer fit are the last ones.
status_t Parcel::setDataSize(size_t size) {
    mData.resize(size);
    mPosition = std::min(mPosition, size);
    while (!mObjects.empty() && mObjects.back().offset + sizeof(FlatBinder) > size) {
        mObjects.pop_back();
    }
    return OK;
}

status_t Parcel::setData(const uint8_t* buffer, size_t length) {
    mData.assign(buffer, buffer + length);
    mPosition = 0;
    mObjects.clear();  // last: an object that goes may call, and reuse the buffer of the transport
    return OK;
}

status_t Parcel::write(const void* data, size_t length) {
    if (length > INT32_MAX) return BAD_VALUE;
    const size_t end = mPosition + padded(length);
    if (mData.size() < end) mData.resize(end);
    if (length > 0) memcpy(mData.data() + mPosition, data, length);
    std::fill(mData.data() + mPosition + length, mData.data() + end, 0);
    mPosition = end;
    return OK;
}

status_t Parcel::writeInt32(int32_t value) {
    return write(&value, sizeof(value));
}

status_t Parcel::writeInt64(int64_t value) {
    return write(&value, sizeof(value));
}

status_t Parcel::writeBool(bool value) {
    return writeInt32(value ? 1 : 0);
}

status_t Parcel::writeString16(const String16& value) {
    return writeString16(value.string(), value.size());
}

// Written at once, as the terminator belongs to the item and is not in the text that is handed
// over.
status_t Parcel::writeString16(const char16_t* value, size_t units) {
    if (value == nullptr) return writeInt32(-1);
    if (units >= INT32_MAX / sizeof(char16_t)) return BAD_VALUE;
    writeInt32(static_cast<int32_t>(units));
    const size_t begin = mPosition;
    const size_t bytes = units * sizeof(char16_t);
    const size_t end = begin + padded(bytes + sizeof(char16_t));
    if (mData.size() < end) mData.resize(end);
    if (bytes > 0) memcpy(mData.data() + begin, value, bytes);
    std::fill(mData.data() + begin + bytes, mData.data() + end, 0);
    mPosition = end;
    return OK;
}

status_t Parcel::writeInt32Vector(const std::vector<int32_t>& value) {
    if (value.size() > INT32_MAX) return BAD_VALUE;
    writeInt32(static_cast<int32_t>(value.size()));
    return write(value.data(), value.size() * sizeof(int32_t));
}

status_t Parcel::writeString16Vector(const std::vector<String16>& value) {
    if (value.size() > INT32_MAX) return BAD_VALUE;
    status_t status = writeInt32(static_cast<int32_t>(value.size()));
    for (const String16& item : value) {
        if (status != OK) break;
        status = writeString16(item);
    }
    return status;
}

// A local object is its address, a remote one the number that its owner gave it.
static FlatBinder flatten(IBinder* binder) {
    if (binder == nullptr) return {kTypeBinder, kFlags, 0, 0};
    if (const BpBinder* proxy = binder->remoteBinder()) {
        return {kTypeHandle, kFlags, proxy->id(), 0};
    }
    return {kTypeBinder, kFlags, 0, reinterpret_cast<uint64_t>(binder)};
}

// The objects are kept sorted, as one may be written into the middle, after a step back. Bytes that
// are written over an object do not take it away.
status_t Parcel::writeStrongBinder(const sp<IBinder>& value) {
    const FlatBinder flat = flatten(value.get());
    if (value != nullptr) {
        const Object object = {mPosition, value};
        const auto at = std::lower_bound(
                mObjects.begin(), mObjects.end(), object,
                [](const Object& a, const Object& b) { return a.offset < b.offset; });
        mObjects.insert(at, object);
    }
    return write(&flat, sizeof(flat));
}

status_t Parcel::writeInterfaceToken(const String16& interface) {
    const status_t status = writeInt32(kStrictModePolicyPenaltyGather);
    return status == OK ? writeString16(interface) : status;
}

bool Parcel::enforceInterface(const String16& interface) const {
    readInt32();
    String16 token;
    return readString16(&token) == OK && token == interface;
}

// A service's own descriptor costs nothing; a proxy's may be a call.
bool Parcel::checkInterface(IBinder* binder) const {
    return enforceInterface(binder->getInterfaceDescriptor());
}

const uint8_t* Parcel::peek(size_t length) const {
    if (mPosition > mData.size() || length > mData.size() - mPosition) return nullptr;
    return mData.data() + mPosition;
}

// Whether the range has bytes of an object, whole or in part.
bool Parcel::touchesObject(size_t begin, size_t end) const {
    for (const Object& object : mObjects) {
        if (begin < object.offset + sizeof(FlatBinder) && object.offset < end) return true;
    }
    return false;
}

// Padding counts as well: an item whose filling is missing is not there.
status_t Parcel::read(void* out, size_t length) const {
    if (length > INT32_MAX || peek(padded(length)) == nullptr) return NOT_ENOUGH_DATA;
    const size_t begin = mPosition;
    mPosition += padded(length);
    if (touchesObject(begin, mPosition)) return PERMISSION_DENIED;
    if (length > 0) memcpy(out, mData.data() + begin, length);
    return OK;
}

// What is handed in stays as it is when the read fails.
template <typename T>
status_t Parcel::readValue(T* out) const {
    T value;
    const status_t status = read(&value, sizeof(value));
    if (status == OK) *out = value;
    return status;
}

status_t Parcel::readInt32(int32_t* out) const {
    return readValue(out);
}

int32_t Parcel::readInt32() const {
    int32_t value = 0;
    readInt32(&value);
    return value;
}

status_t Parcel::readInt64(int64_t* out) const {
    return readValue(out);
}

int64_t Parcel::readInt64() const {
    int64_t value = 0;
    readInt64(&value);
    return value;
}

status_t Parcel::readBool(bool* out) const {
    int32_t value = 0;
    const status_t status = readInt32(&value);
    *out = value != 0;
    return status;
}

bool Parcel::readBool() const {
    return readInt32() != 0;
}

// One error for all: to a caller a text that is damaged is as good as none.
status_t Parcel::readString16(String16* out) const {
    *out = String16();
    int32_t units = 0;
    if (readInt32(&units) != OK || units < 0 || units == INT32_MAX) return UNEXPECTED_NULL;
    const size_t bytes = (static_cast<size_t>(units) + 1) * sizeof(char16_t);
    const uint8_t* body = peek(padded(bytes));
    if (body == nullptr) return UNEXPECTED_NULL;
    const size_t begin = mPosition;
    mPosition += padded(bytes);
    if (touchesObject(begin, mPosition)) return UNEXPECTED_NULL;
    char16_t terminator = 0;
    memcpy(&terminator, body + bytes - sizeof(terminator), sizeof(terminator));
    if (terminator != 0) return UNEXPECTED_NULL;
    // Items start at multiples of 4 bytes of the vector's own storage, so this is aligned.
    *out = String16(reinterpret_cast<const char16_t*>(body), static_cast<size_t>(units));
    return OK;
}

String16 Parcel::readString16() const {
    String16 value;
    readString16(&value);
    return value;
}

// The count that opens a vector, refused when it cannot be met even by items of one byte: a count
// that is too large costs nothing but a refusal.
static status_t readCount(const Parcel& parcel, size_t* out) {
    int32_t count = 0;
    const status_t status = parcel.readInt32(&count);
    if (status != OK) return status;
    if (count < 0) return UNEXPECTED_NULL;
    if (static_cast<size_t>(count) > parcel.dataAvail()) return BAD_VALUE;
    *out = static_cast<size_t>(count);
    return OK;
}

status_t Parcel::readInt32Vector(std::vector<int32_t>* out) const {
    size_t count = 0;
    status_t status = readCount(*this, &count);
    if (status != OK) return status;
    out->assign(count, 0);
    for (size_t i = 0; i < count && status == OK; ++i) status = readInt32(&(*out)[i]);
    return status;
}

status_t Parcel::readString16Vector(std::vector<String16>* out) const {
    size_t count = 0;
    status_t status = readCount(*this, &count);
    if (status != OK) return status;
    out->assign(count, String16());
    for (size_t i = 0; i < count && status == OK; ++i) status = readString16(&(*out)[i]);
    return status;
}

// An object is one that the parcel holds at just this place. A null is the only one that is told by
// its bytes alone: they can be forged, but nothing is gained by it.
status_t Parcel::readNullableStrongBinder(sp<IBinder>* out) const {
    const uint8_t* body = peek(sizeof(FlatBinder));
    if (body == nullptr) return BAD_TYPE;
    FlatBinder flat;
    memcpy(&flat, body, sizeof(flat));
    const bool null = flat.type == kTypeBinder && flat.handle == 0 && flat.cookie == 0;
    for (const Object& object : mObjects) {
        if (object.offset != mPosition) continue;
        *out = object.binder;
        mPosition += sizeof(FlatBinder);
        return OK;
    }
    if (!null || touchesObject(mPosition, mPosition + sizeof(FlatBinder))) return BAD_TYPE;
    *out = nullptr;
    mPosition += sizeof(FlatBinder);
    return OK;
}

status_t Parcel::readStrongBinder(sp<IBinder>* out) const {
    const status_t status = readNullableStrongBinder(out);
    return status == OK && *out == nullptr ? UNEXPECTED_NULL : status;
}

sp<IBinder> Parcel::readStrongBinder() const {
    sp<IBinder> value;
    readNullableStrongBinder(&value);
    return value;
}

// The sender's bytes of an object name it by the sender's numbers, or by an address there: they are
// replaced, so that nothing of it can be read here.
void host::ParcelAccess::fill(const uint8_t* data, size_t size, std::vector<Object> objects,
                              Parcel* parcel) {
    parcel->setData(data, size);
    parcel->mObjects = std::move(objects);
    for (const Object& object : parcel->mObjects) {
        const FlatBinder flat = flatten(object.binder.get());
        memcpy(parcel->mData.data() + object.offset, &flat, sizeof(flat));
    }
}

}  // namespace android
