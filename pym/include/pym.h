#pragma once

// The Event API: plain exported functions that acquire and release resources for events, send
// notifications and rule changes, and read resource values and service data.
//
// Results: a function that returns a number gives what the service wrote, unchanged and whatever
// its sign, or -1 when there was no connection, the call failed or the input was rejected. The
// exceptions (pymInit's -2, the one-way acquisition's own handle, the counts of the queries) are
// stated at each function.
//
// Blocking: each call first makes sure of its connection. That never waits for the service to
// appear: when it is not registered (or not declared) the call fails at once. Connecting holds
// the connection's lock exclusively for one service-manager lookup, which other Event API calls
// wait for. A two-way call then waits for the service's answer; the one-way acquisition does not.
//
// Threads: every function may be called from any thread, at the same time as any other. Calls
// run in parallel under a shared hold of the connection's lock; dropping a failed or dead
// connection waits for the calls in progress to finish.
//
// Exceptions: every function but pymGetRandomHandle may throw std::bad_alloc when building a
// request or an answer runs out of memory. The few that throw more say so.
//
// Death recovery: when the service dies, binder tells the library on one of the caller
// process's binder threads, and the next call connects afresh. The library starts no thread of
// its own, so the process must run a binder thread pool (ABinderProcess_startThreadPool, or a
// thread in ABinderProcess_joinThreadPool). Without one the notice never comes: the first
// two-way call after a death fails (with -1, or as that function states) and drops the
// connection, and the call after it reconnects.

#include "PymClient.h"
#include "vexal_export.h"

#include <cstdint>
#include <string>
#include <vector>

extern "C" {

// Makes sure the service is reachable and tells it to initialise. Returns 0 when the service
// took it, -1 without a connection, -2 when the call failed (the connection is then dropped).
VEXAL_EXPORT int32_t pymInit();

// Acquires resources for an event and waits for the service's handle. `cmdid` -2 asks for a
// plain resource acquisition and -3 for a platform one, which send only `resources`; any other
// value is an event id, sent as the request's first entry before `resources`. `pkg` and
// `identity` name who asks (either may be empty), `duration` is how long the request holds,
// as the service counts it. A resource without a value goes out with an empty one. Returns the
// handle the service wrote, or -1.
VEXAL_EXPORT int32_t PymEventAcquire(int32_t cmdid, const std::string& pkg,
                                     const std::string& identity, int32_t duration,
                                     const std::vector<PymClient::Resource>& resources);
// As PymEventAcquire without waiting for the service. The handle is drawn here with
// pymGetRandomHandle and sent with the request, together with the pid that
// IPCThreadState reports for the calling thread (the remote caller's while this thread serves
// a binder call, else this process's). Returns that handle, also when the send failed (the
// connection is then dropped); -1 without a connection, or when no handle could be drawn (the
// request still goes out, with handle -1).
// Being one-way, it cannot see the service die: a dead connection is noticed only through the
// death notice (which needs a binder thread pool, see above) or a later two-way call.
VEXAL_EXPORT int32_t PymEventAcquireOneWay(int32_t cmdid, const std::string& pkg,
                                           const std::string& identity, int32_t duration,
                                           const std::vector<PymClient::Resource>& resources);
// PymEventAcquire(-2, "", identity, duration, resources). The second argument is accepted and
// never read; it keeps the calling order.
VEXAL_EXPORT int32_t PymResAcquire(const std::vector<PymClient::Resource>& resources,
                                   int32_t unused, const std::string& identity, int32_t duration);
// PymEventAcquire(-3, pkg, identity, duration, resources); `unused` is never read.
VEXAL_EXPORT int32_t PymPlatformResAcquire(const std::vector<PymClient::Resource>& resources,
                                           int32_t unused, const std::string& identity,
                                           const std::string& pkg, int32_t duration);
// Asks the service to end the request with `handle` and waits for it to answer. Nothing is
// reported back: the service's answer is not read, and failures are only logged.
VEXAL_EXPORT void PymRelease(int32_t handle);

// Notification: the two words fill every entry's 64-bit id, low then high. The request carries
// one such entry per element of `values` (at least one); the values themselves are not sent.
// Returns what the service wrote, or -1.
VEXAL_EXPORT int32_t PymNotify(int32_t idLow, int32_t idHigh, const std::vector<int32_t>& values);
// Hands the service one system-information pair. Returns what the service wrote, or -1.
VEXAL_EXPORT int32_t setRelatedSysInfo(int32_t info, int32_t value);
// Sets rule `ruleId` to `status` with the settings in `resources` (a resource without a value
// goes out with an empty one). Returns what the service wrote, or -1.
VEXAL_EXPORT int32_t pymRuleCtl(int32_t ruleId, int32_t status,
                                const std::vector<PymClient::Resource>& resources);

// State queries. PymMutiResStateRequest asks for the ids in `resources` (their present values
// are not sent) and sets the value of each one the service answered with a value; repeated ids
// all get the first answer, and a resource without such an answer keeps what it held. Returns
// how many it filled (0 or more), or -1 for an empty list, without a connection, when the call
// failed or when the service answered with nothing.
VEXAL_EXPORT int32_t PymMutiResStateRequest(std::vector<PymClient::Resource>& resources);
// Writes the current value of resource `opcode` to `value`, up to its first NUL; leaves `value`
// as it was when there is none. The power-consistency opcode 16848496 is answered instead with
// PymGetPowerConsis's result in decimal (so "-1" without a connection), and throws what that
// throws.
VEXAL_EXPORT void PymResStateRequest(int32_t opcode, std::string& value);
// The power-consistency figure: the leading decimal number of the service's first answer.
// Returns -1 without a connection. The connection is kept even when the call failed.
// Throws std::bad_optional_access when the answer is empty (a failed call leaves it empty) or
// its first entry has no value; std::invalid_argument when that value does not start with a
// number, or when the connection went away between connecting and calling;
// std::out_of_range when the number does not fit.
VEXAL_EXPORT int32_t PymGetPowerConsis();

// Data and status queries.
// Sets `history` to "start:" and the texts of the service's history records joined by ";"
// ("none" for a record without one), then ";end". Returns 0, or -1 (leaving `history` as it
// was) without a connection, when the call failed or when the history is empty.
VEXAL_EXPORT int32_t PymGetHistory(std::string& history);
// The status of power mode `mode`: the leading decimal number of the service's first answer.
// Returns -1 without a connection, when the call failed or when there is no such value. A
// value that is not a number, or does not fit, also gives -1, after a line on the process's
// standard output: this function catches its conversion errors.
VEXAL_EXPORT int32_t PymGetPMStatus(int32_t mode);
// Appends one resource per record of the service's data set to `dataset`. Returns the size of
// `dataset` afterwards, or -1 without a connection, when the call failed or when the data set
// is empty. Throws std::bad_optional_access at a record without a value; the records appended
// before it stay.
VEXAL_EXPORT int32_t Pym_fetch_dataset(std::vector<PymClient::Resource>& dataset);
// The status of feature `feature`: the leading decimal number of the service's answer, when it
// answered with exactly one entry; otherwise -1, as without a connection or when the call
// failed. Throws std::bad_optional_access when that one entry has no value,
// std::invalid_argument when its value does not start with a number and std::out_of_range when
// the number does not fit.
VEXAL_EXPORT int32_t PymGetFeatureStatus(int32_t feature);

}  // extern "C"

// A client-side request handle from 0 to 2147483647, read from /dev/urandom (opened and closed
// on every call), or -1 when the device cannot be opened or read. Never blocks on the service,
// thread-safe, throws nothing. C++ linkage, unlike the functions above.
VEXAL_EXPORT int32_t pymGetRandomHandle();
