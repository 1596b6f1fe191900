#pragma once

#include <android/binder_status.h>

#include <string>

struct AStatus {
    binder_exception_t exception = EX_NONE;
    // Service-specific error for EX_SERVICE_SPECIFIC, transport status for EX_TRANSACTION_FAILED.
    int32_t errorCode = 0;
    std::string message;
};

namespace binder_impl {
const char* statusName(binder_status_t status);
}  // namespace binder_impl
