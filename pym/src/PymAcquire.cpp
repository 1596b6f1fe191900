#define LOG_TAG "[PYM_CLIENT]"
#include "PymHalConnection.h"
#include "PymTrace.h"
#include "link/RequestEntries.h"
#include "link/RequestType.h"
#include "pym.h"

#include <binder/IPCThreadState.h>
#include <log/log.h>

#include <string>

using ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel;
using vexal::link::ITrox;
using vexal::link::RequestType;
using vexal::pym::CallResult;

namespace {

constexpr int32_t kResourceAcquisition = -2;
constexpr int32_t kPlatformAcquisition = -3;

const char* orNone(const std::string& text) {
    return text.empty() ? "none" : text.c_str();
}

std::string summary(int32_t cmdid, const std::string& pkg, const std::string& identity,
                    int32_t duration) {
    return " cmd_id:" + std::to_string(cmdid) + " pkg:" + orNone(pkg) +
           " identity:" + orNone(identity) + " duration:" + std::to_string(duration);
}

RequestType requestKind(int32_t cmdid) {
    switch (cmdid) {
        case kResourceAcquisition:
            return RequestType::kResourceControl;
        case kPlatformAcquisition:
            return RequestType::kPlatformResource;
        default:
            return RequestType::kEvent;
    }
}

// The reserved ids carry only the resources; an event id goes first, as an entry of its own.
TroxRequestParcel eventParcel(int32_t cmdid, const std::string& pkg, const std::string& identity,
                              int32_t duration, const std::vector<PymClient::Resource>& resources,
                              bool logEntries) {
    TroxRequestParcel parcel;
    parcel.requestType = toWire(requestKind(cmdid));
    parcel.identity = identity;
    parcel.duration = duration;
    parcel.pkg = pkg;
    if (cmdid != kResourceAcquisition && cmdid != kPlatformAcquisition) {
        parcel.requestData.push_back(vexal::link::idEntry(cmdid));
    }
    for (const auto& resource : resources) {
        if (logEntries) {
            ALOGD("PymEventAcquireOneWay res_Id:%d ,res_Value:%s, ", resource.id,
                  resource.value ? resource.value->c_str() : "");
        }
        parcel.requestData.push_back(vexal::link::resourceEntry(resource));
    }
    return parcel;
}

}  // namespace

int32_t PymEventAcquire(int32_t cmdid, const std::string& pkg, const std::string& identity,
                        int32_t duration, const std::vector<PymClient::Resource>& resources) {
    if (vexal::pym::traceEnabled()) {
        vexal::pym::traceMarker("PymEventAcquire %s",
                                summary(cmdid, pkg, identity, duration).c_str());
    }
    ALOGI("PymEventAcquire, cmdid:%d, pkg:%s, identity:%s", cmdid, orNone(pkg), orNone(identity));
    int32_t handle = -1;
    if (!vexal::pym::connectPymHal()) return -1;
    const TroxRequestParcel parcel = eventParcel(cmdid, pkg, identity, duration, resources, false);
    switch (vexal::pym::callPymHal("PymEventAcquire", [&](ITrox& hal) {
        return hal.troxResCtlRequest(parcel, &handle);
    })) {
        case CallResult::kOk:
            return handle;
        case CallResult::kFailed:
            ALOGE("troxResCtlRequest error:%d", handle);
            return -1;
        default:
            return -1;
    }
}

int32_t PymEventAcquireOneWay(int32_t cmdid, const std::string& pkg, const std::string& identity,
                              int32_t duration, const std::vector<PymClient::Resource>& resources) {
    if (vexal::pym::traceEnabled()) {
        vexal::pym::traceMarker("PymEventAcquireOneWay %s",
                                summary(cmdid, pkg, identity, duration).c_str());
    }
    ALOGI("PymEventAcquireOneWay, cmdid:%d, pkg:%s, identity:%s", cmdid, orNone(pkg),
          orNone(identity));
    const int32_t handle = pymGetRandomHandle();
    const pid_t pid = android::IPCThreadState::self()->getCallingPid();
    if (!vexal::pym::connectPymHal()) return -1;
    TroxRequestParcel parcel = eventParcel(cmdid, pkg, identity, duration, resources, true);
    parcel.pid = pid;
    parcel.handle = handle;
    switch (vexal::pym::callPymHal("PymEventAcquireOneWay", [&](ITrox& hal) {
        return hal.troxResCtlRequestOneWay(parcel);
    })) {
        case CallResult::kNoService:
            return -1;
        case CallResult::kFailed:
            // The caller still gets its handle: the request may have been queued after all.
            ALOGE("troxResCtlRequest error:%d", handle);
            return handle;
        default:
            return handle;
    }
}

int32_t PymResAcquire(const std::vector<PymClient::Resource>& resources, int32_t /*unused*/,
                      const std::string& identity, int32_t duration) {
    ALOGI("PymResAcquire");
    return PymEventAcquire(kResourceAcquisition, std::string(), identity, duration, resources);
}

int32_t PymPlatformResAcquire(const std::vector<PymClient::Resource>& resources, int32_t /*unused*/,
                              const std::string& identity, const std::string& pkg,
                              int32_t duration) {
    ALOGI("PymPlatformResAcquire");
    return PymEventAcquire(kPlatformAcquisition, pkg, identity, duration, resources);
}

void PymRelease(int32_t handle) {
    vexal::pym::traceMarker("PymRelease: %d", handle);
    ALOGI("PymRelease, handle:%d", handle);
    if (!vexal::pym::connectPymHal()) return;
    int32_t ignored = 0;
    // Failures are logged under the service operation's name, not this function's.
    if (vexal::pym::callPymHal("troxResCtlRelease", [&](ITrox& hal) {
            return hal.troxResCtlRelease(handle, &ignored);
        }) == CallResult::kNoService) {
        ALOGE("PymRelease g_pym_hal is null");
    }
}
