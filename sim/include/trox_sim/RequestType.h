#pragma once

#include <cstdint>

namespace sim {

// Request kinds the service understands.
// The client library keeps its own copy on purpose: the two ends of the wire share no header.
enum RequestType : int32_t {
    kStateQuery = 0,
    kResourceControl = 1,
    kScenario = 2,
    kDiagnostics = 5,
    kThermalNotify = 7,
    kEvent = 8,
    kNotification = 10,
    kHistory = 11,
    kPlatformResource = 12,
    kPowerModeStatus = 13,
    kPowerConsistency = 15,
    kDataset = 16,
    kFeatureStatus = 17,
};

// The id power consistency is asked for by, in a kStateQuery or kPowerConsistency request.
inline constexpr int32_t kPowerConsistencyId = 16848496;

// Diagnostic selectors, carried as the id of the single entry of a kDiagnostics request.
enum DiagnosticSelector : int32_t {
    kDumpToDoQueue = 0,
    kDumpRunMap = 1,
    kDumpActiveResMap = 2,
    kDumpResRequest = 3,
    kDumpResInfo = 4,
    kDumpSAInfo = 5,
    kDumpPidFdList = 6,
    kDumpPidfdMonitorMap = 7,
    kDumpResRecordList = 8,
    kHistoryOn = 10,
    kHistoryOff = 11,
};

}  // namespace sim
