#define LOG_TAG "[PYM_CLIENT]"
#include "PymHalConnection.h"
#include "link/RequestEntries.h"
#include "link/RequestType.h"
#include "pym.h"

#include <log/log.h>

#include <algorithm>
#include <optional>
#include <string>

using ::aidl::vendor::vexal::hardware::trox::TroxRequestData;
using ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel;
using vexal::link::ITrox;
using vexal::link::RequestType;
using vexal::pym::CallResult;

namespace {

constexpr int32_t kPowerConsistencyOpcode = 16848496;

}  // namespace

int32_t PymMutiResStateRequest(std::vector<PymClient::Resource>& resources) {
    ALOGI("PymMutiResStateRequest enter");
    if (!vexal::pym::connectPymHal()) return -1;
    if (resources.empty()) {
        ALOGE("input resource is empty, return");
        return -1;
    }
    // Only ids are asked for: the values the caller holds now are not sent.
    TroxRequestParcel parcel;
    parcel.requestType = toWire(RequestType::kStateQuery);
    for (const auto& resource : resources) {
        parcel.requestData.push_back(vexal::link::idEntry(resource.id));
    }
    std::vector<TroxRequestData> reply;
    if (vexal::pym::callPymHal("PymMutiResStateRequest", [&](ITrox& hal) {
            return hal.troxResStateRequest(parcel, &reply);
        }) != CallResult::kOk) {
        return -1;
    }
    if (reply.empty()) {
        ALOGE("failed to get resource value");
        return -1;
    }
    int32_t filled = 0;
    for (auto& resource : resources) {
        // First match wins, so repeated ids all get the first answer.
        auto match = std::find_if(reply.begin(), reply.end(), [&](const TroxRequestData& entry) {
            return vexal::link::replyId(entry.res_Id) == resource.id;
        });
        if (match == reply.end()) {
            ALOGI("not match any opcode in pymcore");
            continue;
        }
        if (!match->res_Value) continue;
        resource.value = *match->res_Value;
        ALOGD("get resource value, opcode 0x%08x, value %s", resource.id, resource.value->c_str());
        ++filled;
    }
    return filled;
}

void PymResStateRequest(int32_t opcode, std::string& value) {
    if (opcode == kPowerConsistencyOpcode) {
        value = std::to_string(PymGetPowerConsis());
        return;
    }
    ALOGI("PymResStateRequest enter");
    std::vector<PymClient::Resource> query{{opcode, std::string()}};
    if (PymMutiResStateRequest(query) == 1) {
        // Only up to the first NUL, as a C string would carry it.
        value = query.front().value.value_or(std::string()).c_str();
    }
}

int32_t PymGetPowerConsis() {
    ALOGI("pym client PymGetPowerConsis");
    if (!vexal::pym::connectPymHal()) return -1;
    std::string text;
    TroxRequestParcel parcel;
    parcel.requestType = toWire(RequestType::kPowerConsistency);
    parcel.pkg = "none";
    for (const char* arguments : {"0 1 35", "1 1 35", "2 1 35"}) {
        TroxRequestData entry = vexal::link::idEntry(kPowerConsistencyOpcode);
        entry.res_Value = arguments;
        parcel.requestData.push_back(entry);
    }
    // The status is not looked at and the connection is kept; what the reply holds decides.
    vexal::pym::callPymHal(
            "PymGetPowerConsis",
            [&](ITrox& hal) {
                std::vector<TroxRequestData> reply;
                auto status = hal.troxResStateRequest(parcel, &reply);
                // An empty reply (a failed call leaves it empty too) is read as a missing value:
                // std::bad_optional_access, never a read past its end.
                if (reply.empty()) throw std::bad_optional_access();
                text = reply.front().res_Value.value();
                return status;
            },
            vexal::pym::OnFailure::kKeep);
    // Without a connection the text stays empty and std::stoi throws std::invalid_argument.
    return std::stoi(text);
}
