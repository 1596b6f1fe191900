#pragma once

#include <android/binder_ibinder.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Vendor code marks its private transactions this way. */
enum { FLAG_PRIVATE_LOCAL = FLAG_PRIVATE_VENDOR };

void AIBinder_markCompilationUnitStability(AIBinder* binder);
void AIBinder_markVendorStability(AIBinder* binder);
void AIBinder_markSystemStability(AIBinder* binder);
void AIBinder_markVintfStability(AIBinder* binder);

#ifdef __cplusplus
}
#endif
