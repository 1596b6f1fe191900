#define LOG_TAG "TROXFramework-lib-vendor"
#include "CallbackRegistry.h"
#include "ClientFrame.h"
#include "halclient.h"

#include <log/log.h>

#include <algorithm>
#include <optional>

using vexal::client::CallResult;
using vexal::client::ITrox;
using vexal::client::RequestType;
using vexal::client::TroxRequestParcel;

int troxHalclient::troxResListeningRegister(ResourceList& resources, int value,
                                            const std::shared_ptr<IClientCallback>& callback) {
    ALOGI("troxResListeningRegister");
    // The failure is reported under the map registration's name on purpose.
    constexpr char kName[] = "trox_res_listening_register_map";
    int32_t out = -1;
    std::vector<int> ids;
    std::shared_ptr<TroxCallbackClient> client;
    std::optional<vexal::client::CallbackGroupsHold> groups;
    const auto called = vexal::client::callKeepingFailure(
            kName, [&](ITrox& hal) -> std::optional<ndk::ScopedAStatus> {
                TroxRequestParcel parcel;
                parcel.pid = value;
                for (const auto& resource : resources) {
                    parcel.requestData.push_back(vexal::link::resourceEntry(resource));
                    ids.push_back(resource.id);
                }
                groups.emplace();
                for (const auto& group : groups->groups()) {
                    if (group.ids == ids) {
                        ALOGE("Same callback interface registered already");
                        return std::nullopt;
                    }
                }
                client = ndk::SharedRefBase::make<TroxCallbackClient>(callback);
                return hal.troxResListeningRegister(parcel, client, &out);
            });
    if (called == CallResult::kOk) {
        groups->groups().emplace_back(client, std::move(ids), out);
        ALOGI("A callback has been registered to Trox HAL ");
    }
    groups.reset();
    if (called == CallResult::kFailed) vexal::client::reportFailure(kName);
    return out;
}

int troxHalclient::troxResListeningUnRegister(int handle) {
    ALOGI("trox client troxResListeningUnRegister");
    constexpr char kName[] = "troxResListeningUnRegister";
    int32_t out = -1;
    const auto called = vexal::client::callKeepingFailure(
            kName, [&](ITrox& hal) { return hal.troxResListeningUnRegister(handle, &out); });
    if (called == CallResult::kNoService) return out;
    {
        vexal::client::CallbackGroupsHold hold;
        auto& groups = hold.groups();
        bool found = false;
        auto kept =
                std::remove_if(groups.begin(), groups.end(), [&](const TroxCallbackGroup& group) {
                    if (group.handle != handle) return false;
                    ALOGI("a callback has been unregistered to Trox HAL handle %d", handle);
                    found = true;
                    return true;
                });
        groups.erase(kept, groups.end());
        if (!found) ALOGE("The callback was not registered before");
    }
    if (called == CallResult::kFailed) vexal::client::reportFailure(kName);
    return out;
}

int troxHalclient::troxThermalNotify(ResourceList& resources, int value) {
    ALOGI("trox client troxThermalNotify");
    int32_t out = -1;
    vexal::link::callTroxHal(
            "troxThermalNotify", [&](ITrox& hal) -> std::optional<ndk::ScopedAStatus> {
                TroxRequestParcel parcel;
                parcel.pid = value;
                if (!checkResourceList(resources)) {
                    ALOGE("troxThermalNotify ERROR: size unmatched for id and level ");
                    return std::nullopt;
                }
                parcel.requestType = toWire(RequestType::kThermalNotify);
                parcel.requestData = vexal::client::resourceEntries(resources);
                return hal.troxResCtlRequest(parcel, &out);
            });
    return out >= 1 ? 0 : -1;
}

int troxHalclient::troxThermalListeningRegister(const std::vector<int>& ids,
                                                const std::shared_ptr<IClientCallback>& callback) {
    ALOGI("troxThermalListeningRegister");
    int32_t out = -1;
    std::shared_ptr<TroxCallbackClient> client;
    const auto called = vexal::link::callTroxHal("troxThermalListeningRegister", [&](ITrox& hal) {
        client = ndk::SharedRefBase::make<TroxCallbackClient>(callback);
        return hal.troxThermalListeningRegister(ids, client, &out);
    });
    if (called == CallResult::kOk) {
        // Appended without callback_group_mutex and without a duplicate check, as designed.
        vexal::client::callbackGroupsUnguarded().emplace_back(client, ids, out);
        ALOGI("subsys's callback has been registered to Trox HAL");
    }
    return out;
}

int troxHalclient::troxThermalListeningUnregister(int handle) {
    ALOGI("trox client troxThermalListeningUnregister");
    int32_t out = -1;
    const auto called = vexal::link::callTroxHal("troxThermalListeningUnregister", [&](ITrox& hal) {
        return hal.troxThermalListeningUnregister(handle, &out);
    });
    if (called == CallResult::kOk) ALOGI("subsys's callback has been unRegistered to Trox HAL");
    return out;
}
