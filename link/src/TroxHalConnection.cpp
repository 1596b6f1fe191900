#include "link/TroxHalConnection.h"

#include "link/TroxInstance.h"

#include <android/binder_manager.h>

#include <mutex>

using ::aidl::vendor::vexal::hardware::trox::ITrox;

namespace {

constexpr char kTag[] = "TROXFramework-lib-vendor";

// The lock is declared first so that at unload the pointer goes before it: a death notice
// arriving late then still finds a live lock.
std::shared_timed_mutex g_trox_hal_mutex;
std::shared_ptr<ITrox> g_trox_hal;
AIBinder_DeathRecipient* g_trox_death_recipient = nullptr;

void onTroxHalDied(void* /*cookie*/) {
    std::unique_lock<std::shared_timed_mutex> hold(g_trox_hal_mutex);
    g_trox_hal.reset();
    __android_log_print(ANDROID_LOG_ERROR, kTag, "Trox HAL Service died");
}

void logFailedCall(const char* name) {
    __android_log_print(ANDROID_LOG_ERROR, kTag, "%s() failed: trox HAL service not available",
                        name);
}

}  // namespace

namespace vexal::link {

const ServiceConnection& troxHalConnection() {
    static const ServiceConnection connection{g_trox_hal, g_trox_hal_mutex, kTag, logFailedCall};
    return connection;
}

}  // namespace vexal::link

void get_trox_hal_and_link_to_death() {
    {
        std::shared_lock<std::shared_timed_mutex> hold(g_trox_hal_mutex);
        if (g_trox_hal) return;
    }
    std::unique_lock<std::shared_timed_mutex> hold(g_trox_hal_mutex);
    using vexal::link::kTroxInstance;
    // A thread that lost the race to connect lands here too and logs the same line.
    if (g_trox_hal || !AServiceManager_isDeclared(kTroxInstance)) {
        __android_log_print(ANDROID_LOG_ERROR, kTag,
                            "Trox is not declared, AServiceManager_isDeclared:%d",
                            AServiceManager_isDeclared(kTroxInstance));
        return;
    }
    g_trox_hal = ITrox::fromBinder(ndk::SpAIBinder(AServiceManager_waitForService(kTroxInstance)));
    if (!g_trox_hal) {
        __android_log_print(ANDROID_LOG_ERROR, kTag, "Trox HAL Service not found");
        return;
    }
    if (vexal::link::linkToDeath(g_trox_hal, g_trox_death_recipient, onTroxHalDied) != STATUS_OK) {
        g_trox_hal.reset();
        __android_log_print(ANDROID_LOG_ERROR, kTag,
                            "Unable to link to g_trox_hal death notifications!");
    }
}
