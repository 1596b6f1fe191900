#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_status.h>

#ifdef __cplusplus
extern "C" {
#endif

__attribute__((warn_unused_result)) binder_exception_t AServiceManager_addService(
        AIBinder* binder, const char* instance);
/* Returns a +1 reference, or null at once when nothing is registered under the name. */
__attribute__((warn_unused_result)) AIBinder* AServiceManager_checkService(const char* instance);
/* Deprecated on devices too: it polls for seconds. */
// clang-format off
[[deprecated("this polls 5s, use AServiceManager_waitForService or AServiceManager_checkService")]]
__attribute__((warn_unused_result)) AIBinder* AServiceManager_getService(const char* instance);
// clang-format on
/* Blocks until the name is added; null at once if it is neither declared nor added. */
__attribute__((warn_unused_result)) AIBinder* AServiceManager_waitForService(const char* instance);
bool AServiceManager_isDeclared(const char* instance);
void AServiceManager_forEachDeclaredInstance(const char* interface, void* context,
                                             void (*callback)(const char*, void*));

#ifdef __cplusplus
}
#endif
