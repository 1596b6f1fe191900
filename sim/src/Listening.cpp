#include "trox_sim/TroxService.h"

#include <android/binder_ibinder.h>
#include <android/log.h>

#include "RequestText.h"

// Who hears about changes: listener registrations, by resource and thermal, and the thermal
// notifications passed on to them.
namespace sim {

#define SLOG(prio, ...) __android_log_print(prio, tag_.c_str(), __VA_ARGS__)

ndk::ScopedAStatus TroxService::troxResListeningRegister(
        const TroxRequestParcel& request, const std::shared_ptr<ITroxCallback>& callback,
        int32_t* _aidl_return) {
    ndk::ScopedAStatus st = enter("troxResListeningRegister");
    if (!st.isOk()) return st;
    std::lock_guard<std::mutex> lock(mutex_);
    *_aidl_return = -1;
    if (!callback) {
        SLOG(ANDROID_LOG_ERROR, "listening registration without a callback");
        return st;
    }
    if (!roomLocked("listening registration", AIBinder_getCallingPid())) return st;
    Listener l;
    for (const TroxRequestData& e : request.requestData) {
        const ResourceDef* def = nullptr;
        if (e.res_Path && !e.res_Path->empty()) {
            def = model_.findByPath(*e.res_Path);
            l.byPath = true;
        } else {
            def = model_.find(low32(e.res_Id));
        }
        if (def == nullptr) {
            SLOG(ANDROID_LOG_ERROR, "listening registration for unknown resource %s",
                 e.res_Path && !e.res_Path->empty() ? e.res_Path->c_str()
                                                    : hexId(low32(e.res_Id)).c_str());
            return st;
        }
        l.ids.insert(def->id);
    }
    l.handle = requests_.newHandle();
    requests_.reserve(l.handle);
    l.callback = callback;
    l.pid = request.pid != 0 ? request.pid : AIBinder_getCallingPid();
    *_aidl_return = l.handle;
    SLOG(ANDROID_LOG_INFO, "listener %d registered for %s (%s form)", l.handle,
         l.ids.empty() ? "every resource" : (std::to_string(l.ids.size()) + " resources").c_str(),
         l.byPath ? "path" : "id");
    record("listen", l.pid,
           "handle=" + std::to_string(l.handle) + " resources=" + std::to_string(l.ids.size()));
    listeners_[l.handle] = std::move(l);
    return st;
}

ndk::ScopedAStatus TroxService::troxResListeningUnRegister(int32_t handle, int32_t* _aidl_return) {
    ndk::ScopedAStatus st = enter("troxResListeningUnRegister");
    if (!st.isOk()) return st;
    std::lock_guard<std::mutex> lock(mutex_);
    if (listeners_.erase(handle) != 0) {
        requests_.unreserve(handle);
        SLOG(ANDROID_LOG_INFO, "listener %d unregistered", handle);
        *_aidl_return = 0;
    } else {
        SLOG(ANDROID_LOG_WARN, "unregister of unknown listener %d", handle);
        *_aidl_return = -1;
    }
    record("unlisten", AIBinder_getCallingPid(),
           "handle=" + std::to_string(handle) + " -> " + std::to_string(*_aidl_return));
    return st;
}

ndk::ScopedAStatus TroxService::troxThermalListeningRegister(
        const std::vector<int32_t>& ids, const std::shared_ptr<ITroxCallback>& callback,
        int32_t* _aidl_return) {
    ndk::ScopedAStatus st = enter("troxThermalListeningRegister");
    if (!st.isOk()) return st;
    std::lock_guard<std::mutex> lock(mutex_);
    *_aidl_return = -1;
    if (!callback) {
        SLOG(ANDROID_LOG_ERROR, "thermal registration without a callback");
        return st;
    }
    if (!roomLocked("thermal registration", AIBinder_getCallingPid())) return st;
    Listener l;
    l.thermal = true;
    l.ids.insert(ids.begin(), ids.end());
    l.callback = callback;
    l.pid = AIBinder_getCallingPid();
    l.handle = requests_.newHandle();
    requests_.reserve(l.handle);
    *_aidl_return = l.handle;
    SLOG(ANDROID_LOG_INFO, "thermal listener %d registered for %zu ids", l.handle, ids.size());
    record("thermal-listen", l.pid, "handle=" + std::to_string(l.handle));
    listeners_[l.handle] = std::move(l);
    return st;
}

ndk::ScopedAStatus TroxService::troxThermalListeningUnregister(int32_t handle,
                                                               int32_t* _aidl_return) {
    ndk::ScopedAStatus st = enter("troxThermalListeningUnregister");
    if (!st.isOk()) return st;
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = listeners_.find(handle);
    if (it != listeners_.end() && it->second.thermal) {
        listeners_.erase(it);
        requests_.unreserve(handle);
        SLOG(ANDROID_LOG_INFO, "thermal listener %d unregistered", handle);
        *_aidl_return = 0;
    } else {
        SLOG(ANDROID_LOG_WARN, "unregister of unknown thermal listener %d", handle);
        *_aidl_return = -1;
    }
    return st;
}

int32_t TroxService::thermalNotify(const TroxRequestParcel& request, Deliveries& out) {
    if (request.requestData.empty()) {
        SLOG(ANDROID_LOG_WARN, "thermal notification without levels");
        return 0;
    }
    for (const TroxRequestData& e : request.requestData) {
        if (!textFits("thermal level", e.res_Value, AIBinder_getCallingPid())) return 0;
        if (thermalLevels_.count(low32(e.res_Id)) == 0 &&
            thermalLevels_.size() >= config_.maxRequests) {
            SLOG(ANDROID_LOG_ERROR, "thermal levels refused: %zu ids known, the limit",
                 thermalLevels_.size());
            return 0;
        }
    }
    for (const TroxRequestData& e : request.requestData) {
        thermalLevels_[low32(e.res_Id)] = e.res_Value.value_or("");
        SLOG(ANDROID_LOG_INFO, "thermal %d level %s", low32(e.res_Id), orNone(e.res_Value).c_str());
    }
    timeline_.thermal(request.requestData, AIBinder_getCallingPid());
    for (const auto& [handle, l] : listeners_) {
        if (!l.thermal) continue;
        std::vector<TroxRequestData> records;
        for (const TroxRequestData& e : request.requestData) {
            if (!l.ids.empty() && l.ids.count(low32(e.res_Id)) == 0) continue;
            TroxRequestData d;
            d.res_Id = static_cast<int64_t>(static_cast<uint32_t>(low32(e.res_Id)));
            d.res_Value = e.res_Value.value_or("");
            records.push_back(std::move(d));
        }
        if (!records.empty()) out.push_back({l.callback, std::move(records), handle});
    }
    return 1;
}

}  // namespace sim
