#pragma once

#include "link/ServiceCall.h"

// The Event API's connection. Never waits for the service: 0 when a connection stands on
// return, -1 otherwise.
int32_t pym_get_trox_hal_and_link_to_death();

namespace vexal::pym {

using link::CallResult;
using link::OnFailure;

inline constexpr char kTag[] = "[PYM_CLIENT]";

const link::ServiceConnection& pymHalConnection();

// Connects and logs the failure the way every Event API function does; false when there is no
// connection to call through.
bool connectPymHal();

// The Event API's call frame after connecting: one call under the shared hold.
template <typename Call>
CallResult callPymHal(const char* name, Call&& call,
                      OnFailure onFailure = OnFailure::kLogAndReset) {
    return link::callService(pymHalConnection(), name, std::forward<Call>(call), onFailure);
}

}  // namespace vexal::pym
