#pragma once

#include <errno.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

#ifndef __BIONIC__
// Off-device builds see the newest API level, as the device's header arranges for them.
#ifndef __ANDROID_API__
#define __ANDROID_API__ 10000
#endif
#ifndef __assert2
// bionic's assertion hook, which generated code calls (the delegator's version check, union tag
// checks); a device logs and aborts there, so the host must not fall back to a no-op.
static inline __attribute__((noreturn)) void binder_host_assert2(const char* file, int line,
                                                                 const char* function,
                                                                 const char* message) {
    fprintf(stderr, "%s:%d: %s: assertion \"%s\" failed\n", file, line, function, message);
    fflush(stderr);
    abort();
}
#define __assert2(file, line, function, message) binder_host_assert2(file, line, function, message)
#endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

enum {
    STATUS_OK = 0,
    STATUS_UNKNOWN_ERROR = (-2147483647 - 1),
    STATUS_NO_MEMORY = -ENOMEM,
    STATUS_INVALID_OPERATION = -ENOSYS,
    STATUS_BAD_VALUE = -EINVAL,
    STATUS_BAD_TYPE = (STATUS_UNKNOWN_ERROR + 1),
    STATUS_NAME_NOT_FOUND = -ENOENT,
    STATUS_PERMISSION_DENIED = -EPERM,
    STATUS_NO_INIT = -ENODEV,
    STATUS_ALREADY_EXISTS = -EEXIST,
    STATUS_DEAD_OBJECT = -EPIPE,
    STATUS_FAILED_TRANSACTION = (STATUS_UNKNOWN_ERROR + 2),
    STATUS_BAD_INDEX = -EOVERFLOW,
    STATUS_NOT_ENOUGH_DATA = -ENODATA,
    STATUS_WOULD_BLOCK = -EWOULDBLOCK,
    STATUS_TIMED_OUT = -ETIMEDOUT,
    STATUS_UNKNOWN_TRANSACTION = -EBADMSG,
    STATUS_FDS_NOT_ALLOWED = (STATUS_UNKNOWN_ERROR + 7),
    STATUS_UNEXPECTED_NULL = (STATUS_UNKNOWN_ERROR + 8),
};

typedef int32_t binder_status_t;

enum {
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
    EX_TRANSACTION_FAILED = -129,
};

typedef int32_t binder_exception_t;

struct AStatus;
typedef struct AStatus AStatus;

__attribute__((warn_unused_result)) AStatus* AStatus_newOk(void);
__attribute__((warn_unused_result)) AStatus* AStatus_fromExceptionCode(
        binder_exception_t exception);
__attribute__((warn_unused_result)) AStatus* AStatus_fromExceptionCodeWithMessage(
        binder_exception_t exception, const char* message);
__attribute__((warn_unused_result)) AStatus* AStatus_fromServiceSpecificError(
        int32_t serviceSpecific);
__attribute__((warn_unused_result)) AStatus* AStatus_fromServiceSpecificErrorWithMessage(
        int32_t serviceSpecific, const char* message);
__attribute__((warn_unused_result)) AStatus* AStatus_fromStatus(binder_status_t status);

/* The readers below need a status: a null one aborts (a device dereferences it). */
bool AStatus_isOk(const AStatus* status);
binder_exception_t AStatus_getExceptionCode(const AStatus* status);
int32_t AStatus_getServiceSpecificError(const AStatus* status);
binder_status_t AStatus_getStatus(const AStatus* status);
/* Never null; empty when the status has no message. Owned by the status. */
const char* AStatus_getMessage(const AStatus* status);
/* Allocated; release with AStatus_deleteDescription. */
__attribute__((warn_unused_result)) const char* AStatus_getDescription(const AStatus* status);
void AStatus_deleteDescription(const char* description);
void AStatus_delete(AStatus* status);

#ifdef __cplusplus
}
#endif
