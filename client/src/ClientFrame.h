#pragma once

#include "link/RequestEntries.h"
#include "link/RequestType.h"
#include "link/TroxHalConnection.h"

#include <android/log.h>

#include <list>
#include <utility>

namespace vexal::client {

using ::aidl::vendor::vexal::hardware::trox::ITrox;
using ::aidl::vendor::vexal::hardware::trox::TroxRequestData;
using ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel;
using link::CallResult;
using link::RequestType;

// The frame with the failure left to the caller: for members that hold callback_group_mutex
// past the call, so that the exclusive reset is never awaited while holding it (a registering
// thread may hold the connection shared while it waits for that mutex).
template <typename Call>
CallResult callKeepingFailure(const char* name, Call&& call) {
    get_trox_hal_and_link_to_death();
    return link::callService(link::troxHalConnection(), name, std::forward<Call>(call),
                             link::OnFailure::kKeep);
}

// What the frame does after a failed call: log it and drop the connection.
inline void reportFailure(const char* name) {
    const auto& connection = link::troxHalConnection();
    connection.logFailure(name);
    link::resetConnection(connection);
}

// One entry per resource, the value present (empty when the resource has none).
inline std::vector<TroxRequestData> resourceEntries(const std::list<PymClient::Resource>& list) {
    std::vector<TroxRequestData> entries;
    entries.reserve(list.size());
    for (const auto& resource : list) entries.push_back(link::resourceEntry(resource));
    return entries;
}

inline TroxRequestData pathEntry(const std::string& path, const std::string& value) {
    TroxRequestData entry;
    entry.res_Path = path;
    entry.res_Value = value;
    return entry;
}

}  // namespace vexal::client
