#include "PymHalConnection.h"

#include "link/TroxInstance.h"

#include <android/binder_manager.h>

#include <mutex>

using ::aidl::vendor::vexal::hardware::trox::ITrox;
using vexal::pym::kTag;

namespace {

// The lock is declared first so that at unload the pointer goes before it: a death notice
// arriving late then still finds a live lock.
std::shared_timed_mutex g_pym_hal_mutex;
std::shared_ptr<ITrox> g_pym_hal;
AIBinder_DeathRecipient* g_pym_death_recipient = nullptr;

void onPymHalDied(void* /*cookie*/) {
    std::unique_lock<std::shared_timed_mutex> hold(g_pym_hal_mutex);
    g_pym_hal.reset();
    __android_log_print(ANDROID_LOG_ERROR, kTag, "Trox HAL Service died");
}

// The Event API's failure line has a blank before the colon, unlike the client class's.
void logFailedCall(const char* name) {
    __android_log_print(ANDROID_LOG_ERROR, kTag, "%s() failed : trox HAL service not available",
                        name);
}

}  // namespace

namespace vexal::pym {

const link::ServiceConnection& pymHalConnection() {
    static const link::ServiceConnection connection{g_pym_hal, g_pym_hal_mutex, kTag,
                                                    logFailedCall};
    return connection;
}

bool connectPymHal() {
    if (pym_get_trox_hal_and_link_to_death() == 0) return true;
    __android_log_print(ANDROID_LOG_ERROR, kTag, "pym_get_trox_hal_and_link_to_death error:%d", -1);
    return false;
}

}  // namespace vexal::pym

int32_t pym_get_trox_hal_and_link_to_death() {
    {
        std::shared_lock<std::shared_timed_mutex> hold(g_pym_hal_mutex);
        if (g_pym_hal) return 0;
    }
    // No second look after taking the lock: two racing callers connect one after the other and
    // the second proxy replaces the first (they are the same binder object).
    std::unique_lock<std::shared_timed_mutex> hold(g_pym_hal_mutex);
    using vexal::link::kTroxInstance;
    if (!AServiceManager_isDeclared(kTroxInstance)) {
        __android_log_print(ANDROID_LOG_ERROR, kTag,
                            "Trox is not declared, AServiceManager_isDeclared:%d",
                            AServiceManager_isDeclared(kTroxInstance));
        return -1;
    }
    g_pym_hal = ITrox::fromBinder(ndk::SpAIBinder(AServiceManager_checkService(kTroxInstance)));
    if (!g_pym_hal) {
        __android_log_print(ANDROID_LOG_ERROR, kTag, "Trox HAL Service not found");
        return -1;
    }
    if (vexal::link::linkToDeath(g_pym_hal, g_pym_death_recipient, onPymHalDied) != STATUS_OK) {
        g_pym_hal.reset();
        __android_log_print(ANDROID_LOG_ERROR, kTag,
                            "Unable to link to g_pym_hal death notifications!");
        return -1;
    }
    return 0;
}
