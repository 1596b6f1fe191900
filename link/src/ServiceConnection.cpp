#include "link/ServiceConnection.h"

#include <mutex>

namespace vexal::link {

void resetConnection(const ServiceConnection& connection) {
    std::unique_lock<std::shared_timed_mutex> hold(connection.mutex);
    connection.hal.reset();
}

binder_status_t linkToDeath(const std::shared_ptr<ITrox>& hal, AIBinder_DeathRecipient*& recipient,
                            AIBinder_DeathRecipient_onBinderDied onDied) {
    if (recipient != nullptr) AIBinder_DeathRecipient_delete(recipient);
    recipient = AIBinder_DeathRecipient_new(onDied);
    // The cookie is never read back; it only tells the connections apart in a debugger.
    return AIBinder_linkToDeath(hal->asBinder().get(), recipient, hal.get());
}

}  // namespace vexal::link
