#define LOG_TAG "TROXFramework-lib-vendor"
#include "CallbackRegistry.h"
#include "ClientFrame.h"
#include "halclient.h"

#include <log/log.h>

using vexal::client::ITrox;
using vexal::client::RequestType;
using vexal::client::TroxRequestParcel;

namespace {

TroxRequestParcel scenarioParcel(int handle, int duration, int id, int param, int flag, int pid) {
    TroxRequestParcel parcel;
    parcel.requestType = toWire(RequestType::kScenario);
    parcel.flag = flag >= 1;
    parcel.param = param;
    parcel.pid = pid;
    parcel.duration = duration;
    parcel.handle = handle;
    parcel.requestData.push_back(vexal::link::idEntry(id));
    return parcel;
}

}  // namespace

int troxHalclient::troxSACtlRequest(int duration, int id, int pid) {
    return troxSACtlRequest(-1, duration, id, -1, -1, pid);
}

int troxHalclient::troxSACtlRequest(int handle, int duration, int id, int param, int flag,
                                    int pid) {
    ALOGI("trox client troxSACtlRequest");
    int32_t out = -1;
    vexal::link::callTroxHal("troxSACtlRequest", [&](ITrox& hal) {
        return hal.troxResCtlRequest(scenarioParcel(handle, duration, id, param, flag, pid), &out);
    });
    return out;
}

int troxHalclient::troxSACtlRequest(int handle, int duration, int id, int param, int flag, int pid,
                                    const std::shared_ptr<IClientCallback>& callback) {
    ALOGI("trox client troxSACtlRequest with callback");
    int32_t out = -1;
    vexal::link::callTroxHal("troxSACtlRequest with callback", [&](ITrox& hal) {
        TroxRequestParcel parcel = scenarioParcel(handle, duration, id, param, flag, pid);
        ALOGI("new std::shared_ptr TroxCallbackClient callback");
        auto client = ndk::SharedRefBase::make<TroxCallbackClient>(callback, false);
        vexal::client::addRequestCallback("trox client troxSACtlRequest add to request_callbacks",
                                          client);
        parcel.callback = client;
        return hal.troxResCtlRequest(parcel, &out);
    });
    return out;
}

int troxHalclient::troxSACtlRelease(int handle) {
    ALOGI("trox client troxSACtlRelease");
    int32_t out = -1;
    vexal::link::callTroxHal("troxSACtlRelease",
                             [&](ITrox& hal) { return hal.troxResCtlRelease(handle, &out); });
    return out;
}
