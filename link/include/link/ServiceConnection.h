#pragma once

#include <aidl/vendor/vexal/hardware/trox/ITrox.h>

#include <memory>
#include <shared_mutex>

namespace vexal::link {

using ::aidl::vendor::vexal::hardware::trox::ITrox;

// One process-wide connection to the service: the proxy, its lock and how failures are logged.
// The storage belongs to the unit that owns the connection; this only refers to it.
struct ServiceConnection {
    std::shared_ptr<ITrox>& hal;
    std::shared_timed_mutex& mutex;
    const char* tag;
    // Logs, in the owner's words, that the call `name` failed.
    void (*logFailure)(const char* name);
};

// Empties the connection so that the next caller connects afresh.
void resetConnection(const ServiceConnection& connection);

// Allocates a death recipient for `onDied`, frees the one it replaces (deleting it unlinks it, so a
// replaced connection never reports a death twice) and links it to the proxy held in `hal`.
// Returns the link status.
binder_status_t linkToDeath(const std::shared_ptr<ITrox>& hal, AIBinder_DeathRecipient*& recipient,
                            AIBinder_DeathRecipient_onBinderDied onDied);

}  // namespace vexal::link
