#pragma once

#include <binder/Parcel.h>
#include <utils/String8.h>

namespace android {
namespace binder {

// The record that opens every reply: no exception, or which one.
class Status final {
  public:
    enum Exception {
        EX_NONE = 0,
        EX_SECURITY = -1,
        EX_BAD_PARCELABLE = -2,
        EX_ILLEGAL_ARGUMENT = -3,
        EX_NULL_POINTER = -4,
        EX_ILLEGAL_STATE = -5,
        EX_NETWORK_MAIN_THREAD = -6,
        EX_UNSUPPORTED_OPERATION = -7,
        EX_SERVICE_SPECIFIC = -8,
        EX_PARCELABLE = -9,
        EX_HAS_REPLY_HEADER = -128,    // from Java: a header that is skipped
        EX_TRANSACTION_FAILED = -129,  // never on the wire
    };

    static Status ok() { return Status(); }
    static Status fromExceptionCode(int32_t exceptionCode);
    static Status fromExceptionCode(int32_t exceptionCode, const String8& message);
    static Status fromExceptionCode(int32_t exceptionCode, const char* message);
    static Status fromServiceSpecificError(int32_t code);
    static Status fromServiceSpecificError(int32_t code, const String8& message);
    // Refuses the call: the caller's transact returns the status and the reply is empty.
    static Status fromStatusT(status_t status);

    Status() = default;

    status_t readFromParcel(const Parcel& parcel);
    status_t writeToParcel(Parcel* parcel) const;

    void setException(int32_t exceptionCode, const String8& message);
    void setServiceSpecificError(int32_t code, const String8& message);
    void setFromStatusT(status_t status);

    bool isOk() const { return mException == EX_NONE; }
    int32_t exceptionCode() const { return mException; }
    const String8& exceptionMessage() const { return mMessage; }
    status_t transactionError() const {
        return mException == EX_TRANSACTION_FAILED ? mErrorCode : OK;
    }
    int32_t serviceSpecificErrorCode() const {
        return mException == EX_SERVICE_SPECIFIC ? mErrorCode : 0;
    }
    String8 toString8() const;

  private:
    Status(int32_t exceptionCode, int32_t errorCode, const String8& message)
        : mException(exceptionCode), mErrorCode(errorCode), mMessage(message) {}

    int32_t mException = EX_NONE;
    int32_t mErrorCode = 0;
    String8 mMessage;
};

}  // namespace binder
}  // namespace android
