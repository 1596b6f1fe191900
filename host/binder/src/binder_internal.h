#pragma once

#include <android/binder_ibinder.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "transport.h"

struct AIBinder_Class {
    std::string descriptor;
    AIBinder_Class_onCreate onCreate = nullptr;
    AIBinder_Class_onDestroy onDestroy = nullptr;
    AIBinder_Class_onTransact onTransact = nullptr;
};

namespace binder_impl {

enum Stability : int32_t {
    kStabilityUndeclared = 0,
    kStabilityVendor = 0x03,
    kStabilitySystem = 0x0c,
    kStabilityVintf = 0x3f,
};

// Shared between an object and its weak handles; ptr is cleared before the object is freed.
struct WeakControl {
    std::mutex mutex;
    AIBinder* ptr = nullptr;
};

class LocalBinder;
class ProxyBinder;

}  // namespace binder_impl

struct AIBinder {
    explicit AIBinder(const AIBinder_Class* clazz);
    virtual ~AIBinder();
    AIBinder(const AIBinder&) = delete;
    AIBinder& operator=(const AIBinder&) = delete;

    void incStrong() { strong.fetch_add(1, std::memory_order_relaxed); }
    // False once the count has reached zero: the object is being destroyed.
    bool tryIncStrong();
    void decStrong();

    virtual binder_impl::LocalBinder* asLocal() { return nullptr; }
    virtual binder_impl::ProxyBinder* asProxy() { return nullptr; }
    virtual bool isAlive() const = 0;
    virtual bool associateClass(const AIBinder_Class* clazz) = 0;
    virtual binder_status_t transact(transaction_code_t code, const AParcel& request,
                                     binder_flags_t flags, AParcel* reply) = 0;

    std::atomic<int32_t> strong{1};
    std::atomic<const AIBinder_Class*> clazz;
    std::atomic<int32_t> stability{binder_impl::kStabilityVendor};
    const std::shared_ptr<binder_impl::WeakControl> weak;
};

struct AIBinder_Weak {
    std::shared_ptr<binder_impl::WeakControl> control;
    const AIBinder* original = nullptr;  // ordering key only, never dereferenced
};

namespace binder_impl {

class LocalBinder : public AIBinder {
  public:
    LocalBinder(const AIBinder_Class* clazz, void* args);
    ~LocalBinder() override;

    LocalBinder* asLocal() override { return this; }
    bool isAlive() const override { return true; }
    bool associateClass(const AIBinder_Class* c) override { return c == clazz.load(); }
    binder_status_t transact(transaction_code_t code, const AParcel& request, binder_flags_t flags,
                             AParcel* reply) override;

    void* userData() const { return userData_; }

    // The transport's current export of this object (weak: exports keep us, not the reverse).
    std::mutex exportMutex;
    std::weak_ptr<RemoteObject> exported;

  private:
    void* userData_;
};

class ProxyBinder : public AIBinder {
  public:
    ProxyBinder(std::shared_ptr<RemoteObject> remote, int32_t stability);
    ~ProxyBinder() override;

    ProxyBinder* asProxy() override { return this; }
    bool isAlive() const override { return remote_->isAlive(); }
    bool associateClass(const AIBinder_Class* c) override;
    binder_status_t transact(transaction_code_t code, const AParcel& request, binder_flags_t flags,
                             AParcel* reply) override;

    const std::shared_ptr<RemoteObject>& remote() const { return remote_; }

  private:
    const std::shared_ptr<RemoteObject> remote_;
};

// The one proxy for remote in this process, with a reference for the caller.
AIBinder* proxyFor(const std::shared_ptr<RemoteObject>& remote, int32_t stability);

// Serves a request on a local binder on this thread: checks the interface token, then runs the
// class's onTransact with the caller identity set.
binder_status_t serveLocal(AIBinder* local, transaction_code_t code, const AParcel& request,
                           AParcel* reply, pid_t callingPid, uid_t callingUid);

// The object to put on the wire for binder: its export (local) or its remote (proxy).
std::shared_ptr<RemoteObject> remoteForWriting(AIBinder* binder);

}  // namespace binder_impl
