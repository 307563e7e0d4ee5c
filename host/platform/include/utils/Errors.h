// The errors of the platform's libraries. A status travels as it is, from the process that hosts an
// object to the one that calls it: so the numbers are those of the device, negated errno values of
// Linux and a few that count up from the smallest number.
#pragma once

#include <errno.h>
#include <stdint.h>

namespace android {

// A status is 0 when all was done. What else it may be stands at each function.
typedef int32_t status_t;

enum {
    OK = 0,
    NO_ERROR = OK,

    // What has no name of its own. It is its own negative: negate it without a sign.
    UNKNOWN_ERROR = INT32_MIN,

    NO_MEMORY = -ENOMEM,
    // An object that cannot do it at all, such as a link to the death of a local one.
    INVALID_OPERATION = -ENOSYS,
    BAD_VALUE = -EINVAL,
    // A parcel that holds something else there; for a service, the token of another interface.
    BAD_TYPE = UNKNOWN_ERROR + 1,
    NAME_NOT_FOUND = -ENOENT,
    // It is -1, with which the service manager and the shell service refuse.
    PERMISSION_DENIED = -EPERM,
    NO_INIT = -ENODEV,
    ALREADY_EXISTS = -EEXIST,
    // The process that hosts the object is gone. An object that comes anew is another one.
    DEAD_OBJECT = -EPIPE,
    // Could not be delivered: it is too large, the receiver is too far behind, or does not know the
    // object. The process that hosts it lives.
    FAILED_TRANSACTION = UNKNOWN_ERROR + 2,
    BAD_INDEX = -EOVERFLOW,
    // A parcel that ends before what is read.
    NOT_ENOUGH_DATA = -ENODATA,
    WOULD_BLOCK = -EWOULDBLOCK,
    TIMED_OUT = -ETIMEDOUT,
    // A code that the object's interface does not have.
    UNKNOWN_TRANSACTION = -EBADMSG,
    // A null where the interface allows none. Generated stubs answer it with EX_NULL_POINTER.
    UNEXPECTED_NULL = UNKNOWN_ERROR + 8,
};

}  // namespace android
