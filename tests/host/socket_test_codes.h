#pragma once

#include <android/binder_ibinder.h>

// Calls the socket test service answers beyond the echo ones of binder_test_util.h.
enum : transaction_code_t {
    kCallerIdentity = FIRST_CALL_TRANSACTION + 10,  // -> calling pid, calling uid, own pid
    kRemember,                                      // binder in: kept until kForget
    kNotifyLater,   // int32 n: a service thread sends kRecord 0..n-1 one-way to the kept binder
    kForget,        // drops the kept binder
    kReturnBinder,  // binder in, same binder out
};
