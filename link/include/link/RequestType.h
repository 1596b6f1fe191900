#pragma once

#include <cstdint>

namespace vexal::link {

// What a request parcel asks the service for, as its requestType carries it. The values are the
// wire's and never change.
enum class RequestType : int32_t {
    kStateQuery = 0,         // current values of the listed resources (all when none are listed)
    kResourceControl = 1,    // hold the listed resource values until release or the duration ends
    kScenario = 2,           // hold the settings of the scenario whose id is the first entry
    kDiagnostics = 5,        // a service table dumped, or its history switched, by a selector
    kThermalNotify = 7,      // thermal levels by id, passed on to thermal listeners
    kEvent = 8,              // hold what the event id in the first entry stands for, plus the rest
    kNotification = 10,      // a 64-bit notification id; nothing is held
    kHistory = 11,           // the service's record of recent requests
    kPlatformResource = 12,  // hold resource values, like kResourceControl, for a platform caller
    kPowerModeStatus = 13,   // the status of the power mode in the first entry
    kPowerConsistency = 15,  // the power consistency value
    kDataset = 16,           // the device's data set
    kFeatureStatus = 17,     // the status of the feature in the first entry
};

inline int32_t toWire(RequestType type) {
    return static_cast<int32_t>(type);
}

}  // namespace vexal::link
