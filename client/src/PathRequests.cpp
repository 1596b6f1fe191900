#define LOG_TAG "TROXFramework-lib-vendor"
#include "CallbackRegistry.h"
#include "ClientFrame.h"
#include "halclient.h"

#include <log/log.h>

#include <optional>

using vexal::client::CallResult;
using vexal::client::ITrox;
using vexal::client::RequestType;
using vexal::client::TroxRequestData;
using vexal::client::TroxRequestParcel;

namespace {

TroxRequestParcel pathControlParcel(int handle, long duration, int param, int flag, int pid) {
    TroxRequestParcel parcel;
    troxHalclient::trox_add_zdbdebug_for_request_parcel(parcel);
    parcel.requestType = toWire(RequestType::kResourceControl);
    parcel.flag = flag >= 1;
    parcel.param = param;
    parcel.pid = pid;
    parcel.duration = static_cast<int64_t>(duration);
    parcel.handle = handle;
    return parcel;
}

std::vector<TroxRequestData> pathEntries(const std::vector<std::string>& paths,
                                         const std::vector<std::string>& values) {
    std::vector<TroxRequestData> entries;
    entries.reserve(paths.size());
    for (size_t i = 0; i < paths.size(); ++i) {
        entries.push_back(vexal::client::pathEntry(paths[i], values[i]));
    }
    return entries;
}

// The tagged parcel of the state and listening members: `value` travels as the pid.
TroxRequestParcel taggedParcel(int value) {
    TroxRequestParcel parcel;
    troxHalclient::trox_add_zdbdebug_for_request_parcel(parcel);
    parcel.pid = value;
    return parcel;
}

TroxRequestData pathOnly(const std::string& path) {
    TroxRequestData entry;
    entry.res_Path = path;
    return entry;
}

// Registers a path-form listener unless a registration with the same paths stands. Holds
// callback_group_mutex from the duplicate check until the registry is updated.
int registerByPath(const char* name, TroxRequestParcel& parcel,
                   const std::vector<std::string>& paths,
                   const std::shared_ptr<IClientCallbackByPath>& callback) {
    int32_t out = -1;
    std::shared_ptr<TroxCallbackClient> client;
    std::optional<vexal::client::CallbackGroupsHold> groups;
    const auto called = vexal::client::callKeepingFailure(
            name, [&](ITrox& hal) -> std::optional<ndk::ScopedAStatus> {
                groups.emplace();
                for (const auto& group : groups->groups()) {
                    if (group.paths == paths) {
                        ALOGE("Same callback interface registered already");
                        return std::nullopt;
                    }
                }
                client = ndk::SharedRefBase::make<TroxCallbackClient>(callback, true, true);
                return hal.troxResListeningRegister(parcel, client, &out);
            });
    if (called == CallResult::kOk) {
        groups->groups().emplace_back(client, paths, out);
        ALOGI("A callback has been registered to Trox HAL ");
    }
    groups.reset();
    if (called == CallResult::kFailed) vexal::client::reportFailure(name);
    return out;
}

}  // namespace

int troxHalclient::trox_resctl_request_by_path(int handle, long duration,
                                               const std::vector<std::string>& paths,
                                               const std::vector<std::string>& values, int param,
                                               int flag, int pid) {
    ALOGI("trox client trox_resctl_request");
    int32_t out = -1;
    vexal::link::callTroxHal(
            "trox_resctl_request_by_path", [&](ITrox& hal) -> std::optional<ndk::ScopedAStatus> {
                TroxRequestParcel parcel = pathControlParcel(handle, duration, param, flag, pid);
                if (paths.size() != values.size()) {
                    ALOGE("trox_resctl_request ERROR: size unmatched for paths and value ");
                    return std::nullopt;
                }
                parcel.requestData = pathEntries(paths, values);
                return hal.troxResCtlRequest(parcel, &out);
            });
    return out;
}

int troxHalclient::trox_resctl_request_with_callback_by_path(
        int handle, long duration, const std::vector<std::string>& paths,
        const std::vector<std::string>& values, int param, int flag, int pid,
        const std::shared_ptr<IClientCallbackByPath>& callback) {
    ALOGI("trox client trox_resctl_request_with_callback");
    int32_t out = -1;
    vexal::link::callTroxHal(
            "trox client trox_resctl_request_with_callback",
            [&](ITrox& hal) -> std::optional<ndk::ScopedAStatus> {
                TroxRequestParcel parcel = pathControlParcel(handle, duration, param, flag, pid);
                if (paths.size() != values.size()) {
                    // Speaks of ids although this member takes paths; kept for log readers.
                    ALOGE("trox client trox_resctl_request ERROR: size unmatched for id and "
                          "value ");
                    return std::nullopt;
                }
                ALOGI("new std::shared_ptr TroxCallbackClient callback");
                auto client = ndk::SharedRefBase::make<TroxCallbackClient>(callback, false, true);
                vexal::client::addRequestCallback(
                        "trox client trox_resctl_request_with_callback add to request_callbacks",
                        client);
                parcel.callback = client;
                parcel.requestData = pathEntries(paths, values);
                return hal.troxResCtlRequest(parcel, &out);
            });
    return out;
}

int troxHalclient::trox_res_state_request_by_path(const std::vector<std::string>& paths,
                                                  const std::vector<std::string>& values, int value,
                                                  std::vector<std::string>& result) {
    ALOGI("trox client trox_res_state_request");
    std::vector<TroxRequestData> reply;
    const auto called = vexal::link::callTroxHal("trox_res_state_request", [&](ITrox& hal) {
        TroxRequestParcel parcel = taggedParcel(value);
        parcel.requestType = toWire(RequestType::kStateQuery);
        // Values count only when there is one for every path.
        if (!values.empty() && values.size() == paths.size()) {
            parcel.requestData = pathEntries(paths, values);
        } else {
            for (const auto& path : paths) parcel.requestData.push_back(pathOnly(path));
        }
        return hal.troxResStateRequest(parcel, &reply);
    });
    if (called != CallResult::kOk || reply.empty()) return -1;
    for (const auto& answer : reply) result.push_back(answer.res_Value.value_or(""));
    const int size = static_cast<int>(result.size());
    ALOGI("trox client trox_res_state_request size %d", size);
    return size;
}

int troxHalclient::trox_res_state_request_map_by_path(
        const std::map<std::string, std::string>& request, int value,
        std::map<std::string, std::string>& result) {
    ALOGI("trox client trox_res_state_request_map");
    std::vector<TroxRequestData> reply;
    const auto called = vexal::link::callTroxHal("trox_res_state_request_map", [&](ITrox& hal) {
        TroxRequestParcel parcel = taggedParcel(value);
        parcel.requestType = toWire(RequestType::kStateQuery);
        for (const auto& [path, text] : request) {
            parcel.requestData.push_back(vexal::client::pathEntry(path, text));
        }
        return hal.troxResStateRequest(parcel, &reply);
    });
    if (called != CallResult::kOk || reply.empty()) return -1;
    for (const auto& answer : reply) {
        if (!answer.res_Path || !answer.res_Value) continue;
        ALOGI("res_Path: %s, res_Value:%s", answer.res_Path->c_str(), answer.res_Value->c_str());
        result[*answer.res_Path] = *answer.res_Value;
    }
    const int size = static_cast<int>(result.size());
    ALOGI("trox client trox_res_state_request_map size %d", size);
    return size;
}

int troxHalclient::trox_res_listening_register_by_path(
        const std::vector<std::string>& paths, int value,
        const std::shared_ptr<IClientCallbackByPath>& callback) {
    ALOGI("trox client trox_res_listening_register");
    TroxRequestParcel parcel = taggedParcel(value);
    for (const auto& path : paths) parcel.requestData.push_back(pathOnly(path));
    return registerByPath("trox_res_listening_register", parcel, paths, callback);
}

int troxHalclient::trox_res_listening_register_map_by_path(
        const std::map<std::string, std::string>& request, int value,
        const std::shared_ptr<IClientCallbackByPath>& callback) {
    ALOGI("trox client trox_res_listening_register_map");
    TroxRequestParcel parcel = taggedParcel(value);
    std::vector<std::string> paths;
    for (const auto& [path, text] : request) {
        parcel.requestData.push_back(vexal::client::pathEntry(path, text));
        paths.push_back(path);
    }
    return registerByPath("trox_res_listening_register_map", parcel, paths, callback);
}
