#pragma once

// The Event API: plain exported functions that acquire and release resources for events, send
// notifications and rule changes, and read resource values and service data. Every function
// returns -1 when it has no answer, no connection or rejected input.
//
// Death recovery: when the service dies, binder tells the library on one of the caller
// process's binder threads, and the next call connects afresh. The library starts no thread of
// its own, so the process must run a binder thread pool (ABinderProcess_startThreadPool, or a
// thread in ABinderProcess_joinThreadPool). Without one the notice never comes: the first call
// after a death fails with -1 and the call after it reconnects.

#include "PymClient.h"
#include "vexal_export.h"

#include <cstdint>
#include <string>
#include <vector>

extern "C" {

// Makes sure the service is reachable and tells it to initialise: 0, -1 without a connection,
// -2 when the call failed.
VEXAL_EXPORT int32_t pymInit();

// Event acquisition. cmdid -2 asks for a plain resource acquisition, -3 for a platform one;
// any other value is an event id. Returns the service's handle or -1.
VEXAL_EXPORT int32_t PymEventAcquire(int32_t cmdid, const std::string& pkg,
                                     const std::string& identity, int32_t duration,
                                     const std::vector<PymClient::Resource>& resources);
// As PymEventAcquire without waiting for the service; returns a handle drawn here, or -1.
// Being one-way, it cannot see the service die: a dead connection is noticed only through the
// death notice (which needs a binder thread pool, see above) or a later two-way call.
VEXAL_EXPORT int32_t PymEventAcquireOneWay(int32_t cmdid, const std::string& pkg,
                                           const std::string& identity, int32_t duration,
                                           const std::vector<PymClient::Resource>& resources);
// The second argument is accepted and never read; it keeps the calling order.
VEXAL_EXPORT int32_t PymResAcquire(const std::vector<PymClient::Resource>& resources,
                                   int32_t unused, const std::string& identity, int32_t duration);
VEXAL_EXPORT int32_t PymPlatformResAcquire(const std::vector<PymClient::Resource>& resources,
                                           int32_t unused, const std::string& identity,
                                           const std::string& pkg, int32_t duration);
VEXAL_EXPORT void PymRelease(int32_t handle);

// Notification: the two words fill every entry's 64-bit id, low then high.
VEXAL_EXPORT int32_t PymNotify(int32_t idLow, int32_t idHigh, const std::vector<int32_t>& values);
VEXAL_EXPORT int32_t setRelatedSysInfo(int32_t info, int32_t value);
VEXAL_EXPORT int32_t pymRuleCtl(int32_t ruleId, int32_t status,
                                const std::vector<PymClient::Resource>& resources);

// State queries. PymMutiResStateRequest fills in values and returns how many it filled.
VEXAL_EXPORT int32_t PymMutiResStateRequest(std::vector<PymClient::Resource>& resources);
VEXAL_EXPORT void PymResStateRequest(int32_t opcode, std::string& value);
// May throw std::bad_optional_access, std::invalid_argument or std::out_of_range.
VEXAL_EXPORT int32_t PymGetPowerConsis();

// Data and status queries.
VEXAL_EXPORT int32_t PymGetHistory(std::string& history);
VEXAL_EXPORT int32_t PymGetPMStatus(int32_t mode);
// Appends to `dataset`; may throw std::bad_optional_access.
VEXAL_EXPORT int32_t Pym_fetch_dataset(std::vector<PymClient::Resource>& dataset);
// May throw std::bad_optional_access, std::invalid_argument or std::out_of_range.
VEXAL_EXPORT int32_t PymGetFeatureStatus(int32_t feature);

}  // extern "C"

// A client-side request handle from 0 to 2147483647, or -1.
VEXAL_EXPORT int32_t pymGetRandomHandle();
