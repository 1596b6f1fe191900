#define LOG_TAG "[PYM_CLIENT]"
#include "PymHalConnection.h"
#include "link/RequestEntries.h"
#include "link/RequestType.h"
#include "pym.h"

#include <log/log.h>

#include <iostream>
#include <stdexcept>
#include <string>

using ::aidl::vendor::vexal::hardware::trox::TroxRequestData;
using ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel;
using vexal::link::ITrox;
using vexal::link::RequestType;
using vexal::pym::CallResult;

namespace {

TroxRequestParcel queryParcel(RequestType kind) {
    TroxRequestParcel parcel;
    parcel.requestType = toWire(kind);
    return parcel;
}

TroxRequestParcel queryParcel(RequestType kind, int32_t id) {
    TroxRequestParcel parcel = queryParcel(kind);
    parcel.requestData.push_back(vexal::link::idEntry(id));
    return parcel;
}

// One state query through the Event API frame; `before` runs just before the call.
template <typename Before>
CallResult stateQuery(const char* name, const TroxRequestParcel& parcel,
                      std::vector<TroxRequestData>& reply, Before&& before) {
    return vexal::pym::callPymHal(name, [&](ITrox& hal) {
        before();
        return hal.troxResStateRequest(parcel, &reply);
    });
}

CallResult stateQuery(const char* name, const TroxRequestParcel& parcel,
                      std::vector<TroxRequestData>& reply) {
    return stateQuery(name, parcel, reply, [] {});
}

int sizeOf(const std::vector<TroxRequestData>& reply) {
    return static_cast<int>(reply.size());
}

}  // namespace

int32_t PymGetHistory(std::string& history) {
    ALOGI("pym client PymGetHistory");
    if (!vexal::pym::connectPymHal()) return -1;
    std::vector<TroxRequestData> reply;
    auto result = stateQuery("PymGetHistory", queryParcel(RequestType::kHistory), reply,
                             [] { ALOGI("pym client hal PymGetHistory"); });
    if (result == CallResult::kNoService) return -1;
    if (result != CallResult::kOk || reply.empty()) {
        ALOGE("failed to get history or return vector empty, data vector size %d", sizeOf(reply));
        return -1;
    }
    std::string text = "start:";
    for (size_t i = 0; i < reply.size(); ++i) {
        if (i > 0) text += ";";
        text += reply[i].res_Extra.value_or("none");
    }
    text += ";end";
    ALOGD("get history successful: %s", text.c_str());
    history = std::move(text);
    return 0;
}

int32_t PymGetPMStatus(int32_t mode) {
    ALOGI("pym client PymGetPMStatus");
    if (!vexal::pym::connectPymHal()) return -1;
    std::vector<TroxRequestData> reply;
    auto result = stateQuery("PymGetPMStatus", queryParcel(RequestType::kPowerModeStatus, mode),
                             reply, [] { ALOGI("pym client hal PymGetPMStatus"); });
    if (result == CallResult::kNoService) return -1;
    if (result == CallResult::kOk && !reply.empty() && reply.front().res_Value) {
        // Conversion errors go to standard output by choice; this is the only query that
        // catches them.
        try {
            return std::stoi(*reply.front().res_Value);
        } catch (const std::invalid_argument& e) {
            std::cout << "Invalid argument exception: " << e.what() << std::endl;
        } catch (const std::out_of_range& e) {
            std::cout << "Out of range exception: " << e.what() << std::endl;
        }
        return -1;
    }
    ALOGE("failed to get power mode status, mode %d, data vector size %d", mode, sizeOf(reply));
    return -1;
}

int32_t Pym_fetch_dataset(std::vector<PymClient::Resource>& dataset) {
    ALOGI("Pym_fetch_dataset enter");
    if (!vexal::pym::connectPymHal()) return -1;
    std::vector<TroxRequestData> reply;
    const TroxRequestParcel parcel = queryParcel(RequestType::kDataset);
    if (stateQuery("Pym_fetch_dataset", parcel, reply) != CallResult::kOk) return -1;
    if (reply.empty()) {
        ALOGE("failed to get resource value");
        return -1;
    }
    for (const auto& entry : reply) {
        // value() throws on a record without one; records appended before it stay.
        dataset.push_back({vexal::link::replyId(entry.res_Id), entry.res_Value.value()});
    }
    return static_cast<int32_t>(dataset.size());
}

int32_t PymGetFeatureStatus(int32_t feature) {
    ALOGI("PymGetFeatureStatus enter");
    // Unlike its siblings, this one logs what the connect function returned.
    const int32_t connected = pym_get_trox_hal_and_link_to_death();
    if (connected != 0) {
        ALOGE("pym_get_trox_hal_and_link_to_death error:%d", connected);
        return -1;
    }
    std::vector<TroxRequestData> reply;
    if (stateQuery("PymGetFeatureStatus", queryParcel(RequestType::kFeatureStatus, feature),
                   reply) != CallResult::kOk) {
        return -1;
    }
    if (reply.size() == 1) return std::stoi(reply.front().res_Value.value());
    ALOGE("failed to get resource value, %d", sizeOf(reply));
    return -1;
}
