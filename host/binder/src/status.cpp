#include <android/binder_status.h>
#include <log/log.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "status_internal.h"

namespace binder_impl {

const char* statusName(binder_status_t status) {
    switch (status) {
        case STATUS_OK:
            return "STATUS_OK";
        case STATUS_UNKNOWN_ERROR:
            return "STATUS_UNKNOWN_ERROR";
        case STATUS_NO_MEMORY:
            return "STATUS_NO_MEMORY";
        case STATUS_INVALID_OPERATION:
            return "STATUS_INVALID_OPERATION";
        case STATUS_BAD_VALUE:
            return "STATUS_BAD_VALUE";
        case STATUS_BAD_TYPE:
            return "STATUS_BAD_TYPE";
        case STATUS_NAME_NOT_FOUND:
            return "STATUS_NAME_NOT_FOUND";
        case STATUS_PERMISSION_DENIED:
            return "STATUS_PERMISSION_DENIED";
        case STATUS_NO_INIT:
            return "STATUS_NO_INIT";
        case STATUS_ALREADY_EXISTS:
            return "STATUS_ALREADY_EXISTS";
        case STATUS_DEAD_OBJECT:
            return "STATUS_DEAD_OBJECT";
        case STATUS_FAILED_TRANSACTION:
            return "STATUS_FAILED_TRANSACTION";
        case STATUS_BAD_INDEX:
            return "STATUS_BAD_INDEX";
        case STATUS_NOT_ENOUGH_DATA:
            return "STATUS_NOT_ENOUGH_DATA";
        case STATUS_WOULD_BLOCK:
            return "STATUS_WOULD_BLOCK";
        case STATUS_TIMED_OUT:
            return "STATUS_TIMED_OUT";
        case STATUS_UNKNOWN_TRANSACTION:
            return "STATUS_UNKNOWN_TRANSACTION";
        case STATUS_FDS_NOT_ALLOWED:
            return "STATUS_FDS_NOT_ALLOWED";
        case STATUS_UNEXPECTED_NULL:
            return "STATUS_UNEXPECTED_NULL";
        default:
            return "unknown status";
    }
}

namespace {

const char* exceptionName(binder_exception_t exception) {
    switch (exception) {
        case EX_NONE:
            return "EX_NONE";
        case EX_SECURITY:
            return "EX_SECURITY";
        case EX_BAD_PARCELABLE:
            return "EX_BAD_PARCELABLE";
        case EX_ILLEGAL_ARGUMENT:
            return "EX_ILLEGAL_ARGUMENT";
        case EX_NULL_POINTER:
            return "EX_NULL_POINTER";
        case EX_ILLEGAL_STATE:
            return "EX_ILLEGAL_STATE";
        case EX_NETWORK_MAIN_THREAD:
            return "EX_NETWORK_MAIN_THREAD";
        case EX_UNSUPPORTED_OPERATION:
            return "EX_UNSUPPORTED_OPERATION";
        case EX_SERVICE_SPECIFIC:
            return "EX_SERVICE_SPECIFIC";
        case EX_PARCELABLE:
            return "EX_PARCELABLE";
        case EX_TRANSACTION_FAILED:
            return "EX_TRANSACTION_FAILED";
        default:
            return "unknown exception";
    }
}

// Never deleted: AStatus_delete recognises it, so callers can treat it like any other status.
AStatus* okSingleton() {
    static AStatus* const ok = new AStatus();
    return ok;
}

AStatus* make(binder_exception_t exception, int32_t errorCode, const char* message) {
    if (exception == EX_NONE) return okSingleton();
    if (exception == EX_TRANSACTION_FAILED && errorCode == STATUS_OK) {
        errorCode = STATUS_FAILED_TRANSACTION;
    }
    auto* status = new AStatus();
    status->exception = exception;
    status->errorCode = errorCode;
    if (message != nullptr) status->message = message;
    return status;
}

}  // namespace

const AStatus& requireStatus(const AStatus* status, const char* function) {
    if (status == nullptr) {
        const std::string message = std::string(function) +
                                    ": null AStatus (an empty ndk::ScopedAStatus: default-made or "
                                    "moved from)";
        __android_log_write(ANDROID_LOG_FATAL, "binder_host", message.c_str());
        std::fprintf(stderr, "%s\n", message.c_str());
        std::fflush(stderr);
        std::abort();
    }
    return *status;
}

}  // namespace binder_impl

using binder_impl::make;
using binder_impl::requireStatus;

AStatus* AStatus_newOk() {
    return binder_impl::okSingleton();
}

AStatus* AStatus_fromExceptionCode(binder_exception_t exception) {
    return make(exception, 0, nullptr);
}

AStatus* AStatus_fromExceptionCodeWithMessage(binder_exception_t exception, const char* message) {
    return make(exception, 0, message);
}

AStatus* AStatus_fromServiceSpecificError(int32_t serviceSpecific) {
    return make(EX_SERVICE_SPECIFIC, serviceSpecific, nullptr);
}

AStatus* AStatus_fromServiceSpecificErrorWithMessage(int32_t serviceSpecific, const char* message) {
    return make(EX_SERVICE_SPECIFIC, serviceSpecific, message);
}

AStatus* AStatus_fromStatus(binder_status_t status) {
    if (status == STATUS_OK) return binder_impl::okSingleton();
    return make(EX_TRANSACTION_FAILED, status, nullptr);
}

bool AStatus_isOk(const AStatus* status) {
    return requireStatus(status, __func__).exception == EX_NONE;
}

binder_exception_t AStatus_getExceptionCode(const AStatus* status) {
    return requireStatus(status, __func__).exception;
}

int32_t AStatus_getServiceSpecificError(const AStatus* status) {
    const AStatus& s = requireStatus(status, __func__);
    return s.exception == EX_SERVICE_SPECIFIC ? s.errorCode : 0;
}

binder_status_t AStatus_getStatus(const AStatus* status) {
    const AStatus& s = requireStatus(status, __func__);
    return s.exception == EX_TRANSACTION_FAILED ? s.errorCode : STATUS_OK;
}

const char* AStatus_getMessage(const AStatus* status) {
    return requireStatus(status, __func__).message.c_str();
}

const char* AStatus_getDescription(const AStatus* status) {
    requireStatus(status, __func__);
    std::string text;
    if (status->exception == EX_NONE) {
        text = "No error";
    } else {
        text = "Status(" + std::to_string(status->exception) + ", " +
               binder_impl::exceptionName(status->exception) + "): '";
        if (status->exception == EX_SERVICE_SPECIFIC) {
            text += std::to_string(status->errorCode) + ": ";
        } else if (status->exception == EX_TRANSACTION_FAILED) {
            text += std::string(binder_impl::statusName(status->errorCode)) + ": ";
        }
        text += status->message + "'";
    }
    return strdup(text.c_str());
}

void AStatus_deleteDescription(const char* description) {
    free(const_cast<char*>(description));
}

void AStatus_delete(AStatus* status) {
    if (status != binder_impl::okSingleton()) delete status;
}
