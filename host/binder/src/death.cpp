#include <android/binder_ibinder.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>

#include "binder_internal.h"
#include "calling_context.h"
#include "death.h"
#include "fault_injection.h"
#include "process.h"

struct AIBinder_DeathRecipient {
    std::shared_ptr<binder_impl::RecipientState> state;
};

namespace binder_impl {

binder_status_t DeathLinkList::add(DeathLink link) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (dead_) return STATUS_DEAD_OBJECT;
    // Deleted recipients are never called again; without this a caller that relinks with a fresh
    // recipient after every failed call grows the list for as long as the object lives.
    links_.erase(std::remove_if(links_.begin(), links_.end(),
                                [](const DeathLink& l) { return l.recipient->deleted.load(); }),
                 links_.end());
    links_.push_back(std::move(link));
    return STATUS_OK;
}

binder_status_t DeathLinkList::remove(const AIBinder* owner, const RecipientState* recipient,
                                      void* cookie, DeathLink* removed) {
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto it = links_.begin(); it != links_.end(); ++it) {
        if (it->owner == owner && it->recipient.get() == recipient && it->cookie == cookie) {
            *removed = std::move(*it);
            links_.erase(it);
            return STATUS_OK;
        }
    }
    return dead_ ? STATUS_DEAD_OBJECT : STATUS_NAME_NOT_FOUND;
}

std::vector<DeathLink> DeathLinkList::removeOwner(const AIBinder* owner) {
    std::vector<DeathLink> removed;
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto it = links_.begin(); it != links_.end();) {
        if (it->owner == owner) {
            removed.push_back(std::move(*it));
            it = links_.erase(it);
        } else {
            ++it;
        }
    }
    return removed;
}

std::vector<DeathLink> DeathLinkList::markDead() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (dead_) return {};
    dead_ = true;
    return std::move(links_);
}

void deliverDeaths(std::vector<DeathLink> links, bool mayWait) {
    if (links.empty()) return;
    struct Pending {
        std::mutex mutex;
        std::condition_variable done;
        size_t left;
    };
    auto pending = std::make_shared<Pending>();
    pending->left = links.size();
    // Waiting while serving a call, on a binder thread, or with no binder thread to run the
    // handlers could wait on ourselves.
    const bool wait =
            mayWait && !isServingTransaction() && !onBinderThread() && threadPoolThreadLimit() > 0;
    auto finishOne = [pending] {
        std::lock_guard<std::mutex> lock(pending->mutex);
        if (--pending->left == 0) pending->done.notify_all();
    };
    // One task per link: a handler that waits (say, for a lock held by a caller that is
    // reconnecting) leaves the other threads of the pool to the other recipients.
    for (DeathLink& link : links) {
        // Counts the link done when its task ends, or when it is refused at exit.
        std::shared_ptr<void> done(nullptr, [finishOne](void*) { finishOne(); });
        postToThreadPool([link = std::move(link), done = std::move(done)] {
            if (link.recipient->deleted.load()) return;
            link.recipient->onDied(link.cookie);
            auto onUnlinked = link.recipient->onUnlinked.load();
            if (onUnlinked != nullptr && !link.recipient->deleted.load()) onUnlinked(link.cookie);
        });
    }
    if (!wait) return;
    std::unique_lock<std::mutex> lock(pending->mutex);
    pending->done.wait(lock, [&] { return pending->left == 0; });
}

void notifyUnlinked(const std::vector<DeathLink>& links) {
    for (const DeathLink& link : links) {
        auto onUnlinked = link.recipient->onUnlinked.load();
        if (onUnlinked != nullptr && !link.recipient->deleted.load()) onUnlinked(link.cookie);
    }
}

}  // namespace binder_impl

using namespace binder_impl;

AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(
        AIBinder_DeathRecipient_onBinderDied onBinderDied) {
    if (onBinderDied == nullptr) return nullptr;
    return new AIBinder_DeathRecipient{std::make_shared<RecipientState>(onBinderDied)};
}

void AIBinder_DeathRecipient_setOnUnlinked(AIBinder_DeathRecipient* recipient,
                                           AIBinder_DeathRecipient_onBinderUnlinked onUnlinked) {
    if (recipient != nullptr) recipient->state->onUnlinked = onUnlinked;
}

void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient) {
    if (recipient == nullptr) return;
    // Links still name the state; marking it is what unlinks them.
    recipient->state->deleted = true;
    delete recipient;
}

binder_status_t AIBinder_linkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                     void* cookie) {
    if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
    if (binder_status_t injected = linkToDeathFault().take(); injected != STATUS_OK) {
        return injected;
    }
    ProxyBinder* proxy = binder->asProxy();
    if (proxy == nullptr) return STATUS_INVALID_OPERATION;
    return proxy->remote()->deathLinks().add(DeathLink{recipient->state, cookie, binder});
}

binder_status_t AIBinder_unlinkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                       void* cookie) {
    if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
    ProxyBinder* proxy = binder->asProxy();
    if (proxy == nullptr) return STATUS_INVALID_OPERATION;
    DeathLink removed;
    binder_status_t status =
            proxy->remote()->deathLinks().remove(binder, recipient->state.get(), cookie, &removed);
    if (status == STATUS_OK) notifyUnlinked({removed});
    return status;
}
