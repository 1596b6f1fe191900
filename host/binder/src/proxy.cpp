#include <mutex>
#include <unordered_map>

#include "binder_internal.h"

namespace binder_impl {
namespace {

// One proxy per remote object; entries are raw so the table never keeps a proxy alive.
struct ProxyTable {
    std::mutex mutex;
    std::unordered_map<const RemoteObject*, ProxyBinder*> proxies;
};

ProxyTable& table() {
    static auto* instance = new ProxyTable();
    return *instance;
}

}  // namespace

ProxyBinder::ProxyBinder(std::shared_ptr<RemoteObject> remote, int32_t stab)
    : AIBinder(nullptr), remote_(std::move(remote)) {
    stability = stab;
}

ProxyBinder::~ProxyBinder() {
    {
        ProxyTable& t = table();
        std::lock_guard<std::mutex> lock(t.mutex);
        auto it = t.proxies.find(remote_.get());
        // A newer proxy may already have taken the slot while this one was dying.
        if (it != t.proxies.end() && it->second == this) t.proxies.erase(it);
    }
    notifyUnlinked(remote_->deathLinks().removeOwner(this));
}

bool ProxyBinder::associateClass(const AIBinder_Class* c) {
    const AIBinder_Class* current = clazz.load();
    if (current == c) return true;
    if (current != nullptr || remote_->descriptor() != c->descriptor) return false;
    return clazz.compare_exchange_strong(current, c) || current == c;
}

binder_status_t ProxyBinder::transact(transaction_code_t code, const AParcel& request,
                                      binder_flags_t flags, AParcel* reply) {
    return remote_->transact(code, request, flags, reply);
}

AIBinder* proxyFor(const std::shared_ptr<RemoteObject>& remote, int32_t stability) {
    ProxyTable& t = table();
    std::lock_guard<std::mutex> lock(t.mutex);
    ProxyBinder*& slot = t.proxies[remote.get()];
    if (slot != nullptr && slot->tryIncStrong()) return slot;
    slot = new ProxyBinder(remote, stability);
    return slot;
}

}  // namespace binder_impl
