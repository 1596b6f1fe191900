#pragma once

#include <android/binder_ibinder.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Private transaction flag: the call is coupled with the vendor image. */
enum {
    FLAG_PRIVATE_VENDOR = 0x10000000,
};

/* The host stands in for a vendor build: what a vendor module sees, and nothing else. */
enum {
    FLAG_PRIVATE_LOCAL = FLAG_PRIVATE_VENDOR,
};

void AIBinder_markVendorStability(AIBinder* binder);

static inline void AIBinder_markCompilationUnitStability(AIBinder* binder) {
    AIBinder_markVendorStability(binder);
}

void AIBinder_markVintfStability(AIBinder* binder);

#ifdef __cplusplus
}
#endif
