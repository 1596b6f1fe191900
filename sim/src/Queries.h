#pragma once

#include <aidl/vendor/vexal/hardware/trox/TroxRequestData.h>
#include <aidl/vendor/vexal/hardware/trox/TroxRequestParcel.h>

#include <cstdint>
#include <vector>

#include "trox_sim/Config.h"
#include "trox_sim/History.h"
#include "trox_sim/ResourceModel.h"

namespace sim {

using aidl::vendor::vexal::hardware::trox::TroxRequestData;
using aidl::vendor::vexal::hardware::trox::TroxRequestParcel;

// The service state a query reads, all of it under the service's lock.
struct QueryInputs {
    const Config& config;
    const ResourceModel& model;
    const RequestHistory& history;
};

// The reply to a state request of any query kind; what it cannot answer is logged under tag and
// left out.
std::vector<TroxRequestData> answerQuery(const TroxRequestParcel& request, const QueryInputs& in,
                                         const char* tag);

// The record of resource id's current value; named by its path when byPath and it has one.
TroxRequestData recordFor(const ResourceModel& model, int32_t id, bool byPath);

}  // namespace sim
