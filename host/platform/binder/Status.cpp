// The exception's number, and for all but "none" a message, the size of a stack trace and what the
// number asks for: the layout of the device's Status and of Java's Parcel. A native process sends
// no trace and no parcelable, but reads over those that a Java one sends.
#include <binder/Status.h>

namespace android {
namespace binder {

Status Status::fromExceptionCode(int32_t exceptionCode) {
    return Status(exceptionCode, OK, String8());
}

Status Status::fromExceptionCode(int32_t exceptionCode, const String8& message) {
    return Status(exceptionCode, OK, message);
}

Status Status::fromExceptionCode(int32_t exceptionCode, const char* message) {
    return Status(exceptionCode, OK, String8(message));
}

Status Status::fromServiceSpecificError(int32_t code) {
    return Status(EX_SERVICE_SPECIFIC, code, String8());
}

Status Status::fromServiceSpecificError(int32_t code, const String8& message) {
    return Status(EX_SERVICE_SPECIFIC, code, message);
}

Status Status::fromStatusT(status_t status) {
    Status result;
    result.setFromStatusT(status);
    return result;
}

void Status::setException(int32_t exceptionCode, const String8& message) {
    *this = Status(exceptionCode, OK, message);
}

void Status::setServiceSpecificError(int32_t code, const String8& message) {
    *this = Status(EX_SERVICE_SPECIFIC, code, message);
}

// A status that is no error is no exception either.
void Status::setFromStatusT(status_t status) {
    *this = Status(status == OK ? EX_NONE : EX_TRANSACTION_FAILED, status, String8());
}

// Skips a block whose size word counts itself. UNKNOWN_ERROR for a size that runs past the end.
static status_t skipSized(const Parcel& parcel) {
    const size_t start = parcel.dataPosition();
    const size_t left = parcel.dataAvail();
    int32_t size = 0;
    const status_t status = parcel.readInt32(&size);
    if (status != OK) return status;
    if (size < 0 || static_cast<size_t>(size) > left) return UNKNOWN_ERROR;
    parcel.setDataPosition(start + static_cast<size_t>(size));
    return OK;
}

// Skips a stack trace, whose size word does not count itself.
static status_t skipTrace(const Parcel& parcel) {
    int32_t size = 0;
    const status_t status = parcel.readInt32(&size);
    if (status != OK) return status;
    if (size < 0 || static_cast<size_t>(size) > parcel.dataAvail()) return UNKNOWN_ERROR;
    parcel.setDataPosition(parcel.dataPosition() + static_cast<size_t>(size));
    return OK;
}

status_t Status::readFromParcel(const Parcel& parcel) {
    *this = Status();
    status_t status = parcel.readInt32(&mException);
    // Java puts data of its strict mode before a reply that has no exception; nobody here wants it.
    if (status == OK && mException == EX_HAS_REPLY_HEADER) {
        status = skipSized(parcel);
        mException = EX_NONE;
    }
    if (status == OK && mException != EX_NONE) {
        String16 message;
        status = parcel.readString16(&message);
        mMessage = String8(message);
        if (status == OK) status = skipTrace(parcel);
        if (status == OK && mException == EX_SERVICE_SPECIFIC) {
            status = parcel.readInt32(&mErrorCode);
        } else if (status == OK && mException == EX_PARCELABLE) {
            status = skipSized(parcel);
        }
    }
    if (status != OK) setFromStatusT(status);
    return status;
}

// The order is the wire's: exception, message, size of the trace, and what the exception brings
// along.
status_t Status::writeToParcel(Parcel* parcel) const {
    if (mException == EX_TRANSACTION_FAILED) return mErrorCode;
    status_t status = parcel->writeInt32(mException);
    if (status != OK || mException == EX_NONE) return status;
    status = parcel->writeString16(String16(mMessage));
    if (status == OK) status = parcel->writeInt32(0);  // no remote stack trace
    if (status != OK) return status;
    if (mException == EX_SERVICE_SPECIFIC) return parcel->writeInt32(mErrorCode);
    return mException == EX_PARCELABLE ? parcel->writeInt32(0) : OK;
}

// The same words as on the device, for logs that are read side by side.
String8 Status::toString8() const {
    if (mException == EX_NONE) return String8("No error");
    if (mException == EX_SERVICE_SPECIFIC || mException == EX_TRANSACTION_FAILED) {
        return String8::format("Status(%d): '%d: %s'", mException, mErrorCode, mMessage.string());
    }
    return String8::format("Status(%d): '%s'", mException, mMessage.string());
}

}  // namespace binder
}  // namespace android
