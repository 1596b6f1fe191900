#define LOG_TAG "[PYM_CLIENT]"
#include "PymHalConnection.h"
#include "link/RequestEntries.h"
#include "link/RequestType.h"
#include "pym.h"

#include <log/log.h>

#include <algorithm>

using ::aidl::vendor::vexal::hardware::trox::TroxRequestData;
using ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel;
using vexal::link::ITrox;
using vexal::link::RequestType;
using vexal::pym::CallResult;

namespace {

int32_t resultOrFailure(CallResult result, int32_t out) {
    return result == CallResult::kOk ? out : -1;
}

}  // namespace

int32_t PymNotify(int32_t idLow, int32_t idHigh, const std::vector<int32_t>& values) {
    ALOGI("PymNotify enter");
    int32_t out = -1;
    if (!vexal::pym::connectPymHal()) return -1;
    TroxRequestParcel parcel;
    parcel.requestType = toWire(RequestType::kNotification);
    TroxRequestData entry;
    entry.res_Id =
            static_cast<int64_t>((static_cast<uint64_t>(static_cast<uint32_t>(idHigh)) << 32) |
                                 static_cast<uint32_t>(idLow));
    // One identical entry per value; the values themselves are not sent. At least one entry.
    parcel.requestData.assign(std::max<size_t>(values.size(), 1), entry);
    auto result = vexal::pym::callPymHal(
            "PymNotify", [&](ITrox& hal) { return hal.troxResCtlRequest(parcel, &out); });
    return resultOrFailure(result, out);
}

int32_t setRelatedSysInfo(int32_t info, int32_t value) {
    int32_t out = -1;
    if (!vexal::pym::connectPymHal()) return -1;
    auto result = vexal::pym::callPymHal("setRelatedSysInfo", [&](ITrox& hal) {
        return hal.setRelatedSysInfo(info, value, &out);
    });
    return resultOrFailure(result, out);
}

int32_t pymRuleCtl(int32_t ruleId, int32_t status,
                   const std::vector<PymClient::Resource>& resources) {
    int32_t out = -1;
    ALOGI("pymRuleCtl, ruleId:%d, status:%d", ruleId, status);
    if (!vexal::pym::connectPymHal()) return -1;
    auto result = vexal::pym::callPymHal("pymRuleCtl", [&](ITrox& hal) {
        std::vector<TroxRequestData> data;
        data.reserve(resources.size());
        for (const auto& resource : resources) data.push_back(vexal::link::resourceEntry(resource));
        return hal.troxRuleCtl(ruleId, status, data, &out);
    });
    return resultOrFailure(result, out);
}
