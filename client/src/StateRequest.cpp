#define LOG_TAG "TROXFramework-lib-vendor"
#include "ClientFrame.h"
#include "halclient.h"

#include <log/log.h>

using vexal::client::ITrox;
using vexal::client::RequestType;
using vexal::client::TroxRequestData;
using vexal::client::TroxRequestParcel;

int troxHalclient::troxResStateRequest(ResourceList& request, int pid, ResourceList& result) {
    ALOGI("trox client troxResStateRequest");
    std::vector<TroxRequestData> reply;
    const auto called = vexal::link::callTroxHal("troxResStateRequest", [&](ITrox& hal) {
        TroxRequestParcel parcel;
        parcel.requestType = toWire(RequestType::kStateQuery);
        parcel.pid = pid;
        // Unlike a control request, the list is sent unchecked.
        parcel.requestData = vexal::client::resourceEntries(request);
        ALOGI("trox client hal troxResStateRequest");
        return hal.troxResStateRequest(parcel, &reply);
    });
    if (called != vexal::link::CallResult::kOk || reply.empty()) return -1;
    for (const auto& entry : reply) {
        result.push_back({vexal::link::replyId(entry.res_Id), entry.res_Value.value_or("")});
    }
    const int size = static_cast<int>(result.size());
    ALOGI("trox client troxResStateRequest size %d", size);
    return size;
}
