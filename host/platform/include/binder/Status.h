// How a method says that it could not do what was asked.
#pragma once

#include <binder/Parcel.h>
#include <utils/String8.h>

namespace android {
namespace binder {

// The record that opens every reply: no exception, or which one. It is the answer of the method;
// the status of the transaction tells whether there was an answer at all, and is kept here for
// callers that want one word for both. A value, used by one thread at a time.
class Status final {
  public:
    // The numbers are those of the device, and the Java exceptions of these names there.
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

    // How a method makes its answer.
    static Status ok() { return Status(); }
    static Status fromExceptionCode(int32_t exceptionCode);
    static Status fromExceptionCode(int32_t exceptionCode, const String8& message);
    static Status fromExceptionCode(int32_t exceptionCode, const char* message);
    // An error of the service's own, whose numbers it explains in its interface.
    static Status fromServiceSpecificError(int32_t code);
    static Status fromServiceSpecificError(int32_t code, const String8& message);
    // Refuses the call: the caller's transact returns the status and the reply is empty. OK is no
    // refusal, but the same as ok().
    static Status fromStatusT(status_t status);

    Status() = default;

    // What generated code does with it. Reading returns the parcel's error, and becomes that error;
    // the message and what else belongs to the exception is read, a stack trace is passed over.
    status_t readFromParcel(const Parcel& parcel);
    // Writes nothing for a refusal, and returns it instead: so it becomes the transaction's status.
    status_t writeToParcel(Parcel* parcel) const;

    void setException(int32_t exceptionCode, const String8& message);
    void setServiceSpecificError(int32_t code, const String8& message);
    void setFromStatusT(status_t status);

    // What callers look at. A transaction that failed is the exception EX_TRANSACTION_FAILED, and
    // its status is transactionError(), which is OK otherwise.
    bool isOk() const { return mException == EX_NONE; }
    int32_t exceptionCode() const { return mException; }
    const String8& exceptionMessage() const { return mMessage; }
    status_t transactionError() const {
        return mException == EX_TRANSACTION_FAILED ? mErrorCode : OK;
    }
    int32_t serviceSpecificErrorCode() const {
        return mException == EX_SERVICE_SPECIFIC ? mErrorCode : 0;
    }
    // Says it in words, for people.
    String8 toString8() const;

  private:
    Status(int32_t exceptionCode, int32_t errorCode, const String8& message)
        : mException(exceptionCode), mErrorCode(errorCode), mMessage(message) {}

    int32_t mException = EX_NONE;
    int32_t mErrorCode = 0;  // the transaction's or the service's own, by the exception
    String8 mMessage;
};

}  // namespace binder
}  // namespace android
