#include <unistd.h>

#include <mutex>
#include <unordered_map>

#include "binder_internal.h"
#include "parcel_internal.h"
#include "process.h"
#include "transport.h"

namespace binder_impl {
namespace {

class InProcessObject;

// Exports local binders of this process under fresh ids; every call goes through bytes.
class InProcessTransport : public Transport {
  public:
    std::shared_ptr<RemoteObject> exportLocal(AIBinder* binder) override;
    std::shared_ptr<RemoteObject> find(uint64_t id) override;
    void forget(uint64_t id) {
        std::lock_guard<std::mutex> lock(mutex_);
        objects_.erase(id);
    }

  private:
    std::mutex mutex_;
    uint64_t nextId_ = 1;
    std::unordered_map<uint64_t, std::weak_ptr<InProcessObject>> objects_;
};

InProcessTransport& transport() {
    static auto* instance = new InProcessTransport();
    return *instance;
}

// Holds the local object alive for as long as anyone can reach it by id, like a kernel node.
class InProcessObject : public RemoteObject, public std::enable_shared_from_this<InProcessObject> {
  public:
    InProcessObject(uint64_t id, LocalBinder* local)
        : id_(id), local_(local), descriptor_(local->clazz.load()->descriptor) {
        local_->incStrong();
    }

    ~InProcessObject() override {
        transport().forget(id_);
        if (local_ != nullptr) local_->decStrong();
    }

    uint64_t id() const override { return id_; }
    std::string descriptor() const override { return descriptor_; }

    bool isAlive() const override {
        std::lock_guard<std::mutex> lock(mutex_);
        return !dead_;
    }

    binder_status_t transact(transaction_code_t code, const AParcel& request, binder_flags_t flags,
                             AParcel* reply) override {
        if ((flags & FLAG_ONEWAY) == 0) {
            StrongRef local = holdLocal();
            if (local == nullptr) return STATUS_DEAD_OBJECT;
            return serveLocal(local.get(), code, request, reply, getpid(), getuid());
        }
        std::shared_ptr<AIBinder> local = acquireLocal();
        if (local == nullptr) return STATUS_DEAD_OBJECT;
        std::shared_ptr<AParcel> copy = copyParcel(request);
        std::shared_ptr<InProcessObject> self = shared_from_this();
        // As if from another process: on a binder thread, after the ones sent before it.
        oneway_->post([self, local, code, copy] {
            // One-way calls queued before a death are lost, as with a dead process.
            if (!self->isAlive()) return;
            AParcel ignoredReply;
            serveLocal(local.get(), code, *copy, &ignoredReply, getpid(), getuid());
        });
        return STATUS_OK;
    }

    DeathLinkList& deathLinks() override { return links_; }

    std::shared_ptr<AIBinder> localBinder() override { return acquireLocal(); }

    bool die() override {
        LocalBinder* local;
        std::vector<DeathLink> links;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (dead_) return false;
            // Links first: a caller that sees the death may drop its proxy, and its links with it.
            links = links_.markDead();
            dead_ = true;
            local = local_;
            local_ = nullptr;
        }
        {
            // Re-adding the object later must export it afresh.
            std::lock_guard<std::mutex> lock(local->exportMutex);
            if (local->exported.lock().get() == this) local->exported.reset();
        }
        deliverDeaths(std::move(links));
        local->decStrong();
        return true;
    }

  private:
    struct StrongRelease {
        void operator()(AIBinder* binder) const { binder->decStrong(); }
    };
    // A strong reference without a control block to allocate: two-way calls take one each.
    using StrongRef = std::unique_ptr<AIBinder, StrongRelease>;

    StrongRef holdLocal() {
        std::lock_guard<std::mutex> lock(mutex_);
        if (dead_ || local_ == nullptr) return nullptr;
        local_->incStrong();
        return StrongRef(local_);
    }

    std::shared_ptr<AIBinder> acquireLocal() {
        StrongRef local = holdLocal();
        if (local == nullptr) return nullptr;
        return std::shared_ptr<AIBinder>(local.release(), StrongRelease());
    }

    const uint64_t id_;
    mutable std::mutex mutex_;
    LocalBinder* local_;
    bool dead_ = false;
    const std::string descriptor_;
    DeathLinkList links_;
    const std::shared_ptr<SerialQueue> oneway_ = std::make_shared<SerialQueue>();
};

std::shared_ptr<RemoteObject> InProcessTransport::exportLocal(AIBinder* binder) {
    LocalBinder* local = binder->asLocal();
    if (local == nullptr) return nullptr;
    // Declared before the lock so a stale export is released after unlocking.
    std::shared_ptr<RemoteObject> existing;
    std::lock_guard<std::mutex> exportLock(local->exportMutex);
    existing = local->exported.lock();
    if (existing != nullptr && existing->isAlive()) return existing;
    std::lock_guard<std::mutex> lock(mutex_);
    auto object = std::make_shared<InProcessObject>(nextId_++, local);
    objects_[object->id()] = object;
    local->exported = object;
    return object;
}

std::shared_ptr<RemoteObject> InProcessTransport::find(uint64_t id) {
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = objects_.find(id);
    return it == objects_.end() ? nullptr : it->second.lock();
}

}  // namespace

Transport& inProcessTransport() {
    return transport();
}

}  // namespace binder_impl
