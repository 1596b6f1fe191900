#define LOG_TAG "TROXFramework-lib-vendor"
#include "CallbackRegistry.h"
#include "ClientFrame.h"
#include "halclient.h"

#include <log/log.h>

#include <optional>

using vexal::client::ITrox;
using vexal::client::RequestType;
using vexal::client::TroxRequestParcel;

namespace {

TroxRequestParcel resourceControlParcel(int handle, int duration,
                                        const std::list<PymClient::Resource>& resources, int param,
                                        int flag, int pid) {
    TroxRequestParcel parcel;
    parcel.flag = flag >= 1;
    parcel.requestType = toWire(RequestType::kResourceControl);
    parcel.handle = handle;
    parcel.duration = duration;
    parcel.param = param;
    parcel.pid = pid;
    parcel.requestData = vexal::client::resourceEntries(resources);
    return parcel;
}

}  // namespace

bool checkResourceList(std::list<PymClient::Resource>& resources) {
    for (const auto& resource : resources) {
        const bool hasValue = resource.value.has_value() && !resource.value->empty();
        if ((resource.id == 0) == hasValue) return false;
    }
    return true;
}

int troxHalclient::troxResCtlRequest(int handle, int duration, ResourceList& resources, int param,
                                     int flag, int pid) {
    ALOGI("trox client troxResCtlRequest");
    int32_t out = -1;
    vexal::link::callTroxHal(
            "troxResCtlRequest", [&](ITrox& hal) -> std::optional<ndk::ScopedAStatus> {
                if (!checkResourceList(resources)) {
                    ALOGE("troxResCtlRequest ERROR: size unmatched for id and "
                          "value ");
                    return std::nullopt;
                }
                return hal.troxResCtlRequest(
                        resourceControlParcel(handle, duration, resources, param, flag, pid), &out);
            });
    return out;
}

int troxHalclient::troxResCtlRequest(int duration, ResourceList& resources, int pid) {
    return troxResCtlRequest(-1, duration, resources, -1, -1, pid);
}

int troxHalclient::troxResCtlRequest(int duration, ResourceList& resources, int flag, int pid) {
    return troxResCtlRequest(-1, duration, resources, -1, flag, pid);
}

int troxHalclient::troxResCtlRequest(int duration, ResourceList& resources, int param, int flag,
                                     int pid) {
    return troxResCtlRequest(-1, duration, resources, param, flag, pid);
}

int troxHalclient::troxResCtlRequest(int handle, int duration, ResourceList& resources, int pid) {
    return troxResCtlRequest(handle, duration, resources, -1, -1, pid);
}

int troxHalclient::troxResCtlRequest(int handle, int duration, ResourceList& resources, int flag,
                                     int pid) {
    return troxResCtlRequest(handle, duration, resources, -1, flag, pid);
}

int troxHalclient::troxResCtlRequest(int handle, int duration, ResourceList& resources, int param,
                                     int flag, int pid,
                                     const std::shared_ptr<IClientCallback>& callback) {
    ALOGI("trox client troxResCtlRequest with callback");
    int32_t out = -1;
    // The failure is reported under this name on purpose.
    vexal::link::callTroxHal(
            "trox client TroxCallbackClient with callback",
            [&](ITrox& hal) -> std::optional<ndk::ScopedAStatus> {
                if (!checkResourceList(resources)) {
                    ALOGE("trox client trox_resctl_request ERROR: size unmatched for id and "
                          "value ");
                    return std::nullopt;
                }
                ALOGI("new std::shared_ptr TroxCallbackClient callback");
                auto client = ndk::SharedRefBase::make<TroxCallbackClient>(callback, false);
                vexal::client::addRequestCallback(
                        "trox client troxResCtlRequest add to request_callbacks", client);
                TroxRequestParcel parcel =
                        resourceControlParcel(handle, duration, resources, param, flag, pid);
                parcel.callback = client;
                return hal.troxResCtlRequest(parcel, &out);
            });
    return out;
}

int troxHalclient::troxResCtlRelease(int handle) {
    ALOGI("trox client troxResCtlRelease");
    int32_t out = -1;
    vexal::link::callTroxHal("troxResCtlRelease",
                             [&](ITrox& hal) { return hal.troxResCtlRelease(handle, &out); });
    return out;
}
