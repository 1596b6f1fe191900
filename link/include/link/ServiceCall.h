#pragma once

#include "ServiceConnection.h"

#include <android/log.h>

#include <optional>
#include <type_traits>
#include <utility>

namespace vexal::link {

enum class CallResult {
    kNoService,  // the connection was empty: nothing was sent
    kDeclined,   // the caller's request builder refused to send
    kFailed,     // the service call returned a failed status
    kOk,
};

enum class OnFailure {
    kLogAndReset,  // the usual rule: log the failure and drop the connection
    kKeep,         // leave logging and the connection alone
};

// Makes exactly one service call under the connection's shared hold. `call` receives the proxy
// and returns the call's status, or std::nullopt to decline without calling. The shared hold is
// released before a failed call's reset takes the lock exclusively: a shared hold is never
// upgraded in place.
template <typename Call>
CallResult callService(const ServiceConnection& connection, const char* name, Call&& call,
                       OnFailure onFailure = OnFailure::kLogAndReset) {
    std::optional<ndk::ScopedAStatus> status;
    {
        std::shared_lock<std::shared_timed_mutex> hold(connection.mutex);
        if (!connection.hal) return CallResult::kNoService;
        if constexpr (std::is_same_v<std::invoke_result_t<Call, ITrox&>, ndk::ScopedAStatus>) {
            status = std::forward<Call>(call)(*connection.hal);
        } else {
            status = std::forward<Call>(call)(*connection.hal);
            if (!status) return CallResult::kDeclined;
        }
    }
    if (status->isOk()) return CallResult::kOk;
    if (onFailure == OnFailure::kLogAndReset) {
        connection.logFailure(name);
        resetConnection(connection);
    }
    return CallResult::kFailed;
}

}  // namespace vexal::link
