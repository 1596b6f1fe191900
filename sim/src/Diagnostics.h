#pragma once

#include <aidl/vendor/vexal/hardware/trox/TroxRequestParcel.h>

#include <cstdint>
#include <map>

#include "trox_sim/Config.h"
#include "trox_sim/History.h"
#include "trox_sim/RequestTable.h"
#include "trox_sim/ResourceModel.h"

namespace sim {

using aidl::vendor::vexal::hardware::trox::TroxRequestParcel;

// The service state a diagnostic reads, all of it under the service's lock.
struct DiagnosticInputs {
    const Config& config;
    const ResourceModel& model;
    const RequestTable& requests;
    const std::map<int32_t, int32_t>& ruleStatus;
    // Listener handle -> the pid it was registered for.
    const std::map<int32_t, int32_t>& listenerPids;
    int64_t nowMs;
};

// Serves a diagnostics request: writes the report its selector asks for to the log under tag, or
// switches history recording. 1 when served, 0 for a missing or unknown selector.
int32_t runDiagnostic(const TroxRequestParcel& request, const DiagnosticInputs& in,
                      RequestHistory& history, const char* tag);

}  // namespace sim
