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
// The status behind a reader's argument. A device dereferences it, so null is a crash there:
// here it aborts, naming the function that got it.
const AStatus& requireStatus(const AStatus* status, const char* function);
}  // namespace binder_impl
