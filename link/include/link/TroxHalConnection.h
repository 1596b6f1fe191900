#pragma once

#include "ServiceCall.h"

// The client class's connection. Connects on demand, blocking until a declared service is up;
// the outcome is not reported: callers find the connection empty instead.
void get_trox_hal_and_link_to_death();

namespace vexal::link {

const ServiceConnection& troxHalConnection();

// The client class's call frame: connect, then one call under the shared hold.
template <typename Call>
CallResult callTroxHal(const char* name, Call&& call) {
    get_trox_hal_and_link_to_death();
    return callService(troxHalConnection(), name, std::forward<Call>(call));
}

}  // namespace vexal::link
