#pragma once

#include <android/binder_ibinder.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace binder_impl {

struct RecipientState {
    explicit RecipientState(AIBinder_DeathRecipient_onBinderDied died) : onDied(died) {}
    const AIBinder_DeathRecipient_onBinderDied onDied;
    std::atomic<AIBinder_DeathRecipient_onBinderUnlinked> onUnlinked{nullptr};
    // Set by AIBinder_DeathRecipient_delete; a deleted recipient is never called again.
    std::atomic<bool> deleted{false};
};

struct DeathLink {
    std::shared_ptr<RecipientState> recipient;
    void* cookie = nullptr;
    const AIBinder* owner = nullptr;  // the proxy the link was made on
};

// The links of one remote object; transports embed one per object they hand out.
class DeathLinkList {
  public:
    binder_status_t add(DeathLink link);  // STATUS_DEAD_OBJECT once dead
    binder_status_t remove(const AIBinder* owner, const RecipientState* recipient, void* cookie,
                           DeathLink* removed);
    std::vector<DeathLink> removeOwner(const AIBinder* owner);
    // Returns the links to notify; empty if it was already dead.
    std::vector<DeathLink> markDead();

  private:
    std::mutex mutex_;
    bool dead_ = false;
    std::vector<DeathLink> links_;
};

// Calls onBinderDied then onUnlinked for each link on the notification thread; waits for them
// unless waiting could deadlock (caller serving a transaction or on that thread) or !mayWait.
void deliverDeaths(std::vector<DeathLink> links, bool mayWait = true);
// Calls onUnlinked for links removed without a death, on the calling thread.
void notifyUnlinked(const std::vector<DeathLink>& links);

}  // namespace binder_impl
