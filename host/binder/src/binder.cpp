#include <android/binder_ibinder.h>
#include <android/binder_stability.h>
#include <unistd.h>

#include <functional>
#include <mutex>
#include <vector>

#include "binder_internal.h"
#include "calling_context.h"
#include "fault_injection.h"
#include "parcel_internal.h"

namespace binder_impl {
namespace {

// Classes live for the rest of the process, as on a device; kept reachable for leak checkers.
void rememberClass(AIBinder_Class* clazz) {
    static std::mutex mutex;
    static auto* classes = new std::vector<AIBinder_Class*>();
    std::lock_guard<std::mutex> lock(mutex);
    classes->push_back(clazz);
}

}  // namespace

LocalBinder::LocalBinder(const AIBinder_Class* c, void* args)
    : AIBinder(c), userData_(c->onCreate != nullptr ? c->onCreate(args) : args) {}

LocalBinder::~LocalBinder() {
    const AIBinder_Class* c = clazz.load();
    if (c->onDestroy != nullptr) c->onDestroy(userData_);
}

binder_status_t LocalBinder::transact(transaction_code_t code, const AParcel& request,
                                      binder_flags_t, AParcel* reply) {
    // A call on a local object never leaves the thread, one-way or not.
    return serveLocal(this, code, request, reply, getpid(), getuid());
}

binder_status_t serveLocal(AIBinder* local, transaction_code_t code, const AParcel& request,
                           AParcel* reply, pid_t callingPid, uid_t callingUid) {
    std::unique_ptr<AParcel> in = copyParcel(request);
    CallingScope scope(callingPid, callingUid);
    const AIBinder_Class* c = local->clazz.load();
    if (!readInterfaceToken(in.get(), c->descriptor)) return STATUS_BAD_TYPE;
    return c->onTransact(local, code, in.get(), reply);
}

std::shared_ptr<RemoteObject> remoteForWriting(AIBinder* binder) {
    if (ProxyBinder* proxy = binder->asProxy()) return proxy->remote();
    return inProcessTransport().exportLocal(binder);
}

}  // namespace binder_impl

using namespace binder_impl;

AIBinder::AIBinder(const AIBinder_Class* c)
    : clazz(c), weak(std::make_shared<binder_impl::WeakControl>()) {
    weak->ptr = this;
}

AIBinder::~AIBinder() = default;

bool AIBinder::tryIncStrong() {
    int32_t count = strong.load(std::memory_order_relaxed);
    while (count > 0) {
        if (strong.compare_exchange_weak(count, count + 1, std::memory_order_acq_rel)) return true;
    }
    return false;
}

void AIBinder::decStrong() {
    if (strong.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    {
        std::lock_guard<std::mutex> lock(weak->mutex);
        weak->ptr = nullptr;
    }
    delete this;
}

AIBinder_Class* AIBinder_Class_define(const char* interfaceDescriptor,
                                      AIBinder_Class_onCreate onCreate,
                                      AIBinder_Class_onDestroy onDestroy,
                                      AIBinder_Class_onTransact onTransact) {
    if (interfaceDescriptor == nullptr || onTransact == nullptr) return nullptr;
    auto* clazz = new AIBinder_Class();
    clazz->descriptor = interfaceDescriptor;
    clazz->onCreate = onCreate;
    clazz->onDestroy = onDestroy;
    clazz->onTransact = onTransact;
    rememberClass(clazz);
    return clazz;
}

void AIBinder_Class_setOnDump(AIBinder_Class*, AIBinder_onDump) {}

const char* AIBinder_Class_getDescriptor(const AIBinder_Class* clazz) {
    return clazz->descriptor.c_str();
}

AIBinder* AIBinder_new(const AIBinder_Class* clazz, void* args) {
    if (clazz == nullptr) return nullptr;
    return new LocalBinder(clazz, args);
}

bool AIBinder_isRemote(const AIBinder* binder) {
    return binder != nullptr && const_cast<AIBinder*>(binder)->asProxy() != nullptr;
}

bool AIBinder_isAlive(const AIBinder* binder) {
    return binder != nullptr && binder->isAlive();
}

binder_status_t AIBinder_ping(AIBinder* binder) {
    if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
    return binder->isAlive() ? STATUS_OK : STATUS_DEAD_OBJECT;
}

binder_status_t AIBinder_dump(AIBinder* binder, int, const char**, uint32_t) {
    return binder == nullptr ? STATUS_UNEXPECTED_NULL : STATUS_OK;
}

void AIBinder_incStrong(AIBinder* binder) {
    if (binder != nullptr) binder->incStrong();
}

void AIBinder_decStrong(AIBinder* binder) {
    if (binder != nullptr) binder->decStrong();
}

int32_t AIBinder_debugGetRefCount(AIBinder* binder) {
    return binder == nullptr ? -1 : binder->strong.load();
}

bool AIBinder_associateClass(AIBinder* binder, const AIBinder_Class* clazz) {
    return binder != nullptr && clazz != nullptr && binder->associateClass(clazz);
}

const AIBinder_Class* AIBinder_getClass(AIBinder* binder) {
    return binder == nullptr ? nullptr : binder->clazz.load();
}

void* AIBinder_getUserData(AIBinder* binder) {
    LocalBinder* local = binder == nullptr ? nullptr : binder->asLocal();
    return local == nullptr ? nullptr : local->userData();
}

binder_status_t AIBinder_prepareTransaction(AIBinder* binder, AParcel** in) {
    if (binder == nullptr || in == nullptr) return STATUS_UNEXPECTED_NULL;
    const AIBinder_Class* clazz = binder->clazz.load();
    if (clazz == nullptr) return STATUS_INVALID_OPERATION;
    auto parcel = std::make_unique<AParcel>();
    if (binder_status_t s = writeUtf8AsString16(parcel.get(), clazz->descriptor.data(),
                                                clazz->descriptor.size());
        s != STATUS_OK) {
        return s;
    }
    *in = parcel.release();
    return STATUS_OK;
}

binder_status_t AIBinder_transact(AIBinder* binder, transaction_code_t code, AParcel** in,
                                  AParcel** out, binder_flags_t flags) {
    if (in == nullptr) return STATUS_UNEXPECTED_NULL;
    std::unique_ptr<AParcel> request(*in);
    *in = nullptr;
    if (binder == nullptr || request == nullptr || out == nullptr) return STATUS_UNEXPECTED_NULL;
    *out = nullptr;
    if (code < FIRST_CALL_TRANSACTION || code > LAST_CALL_TRANSACTION) {
        return STATUS_UNKNOWN_TRANSACTION;
    }
    // Vendor code marks its calls private (FLAG_PRIVATE_LOCAL); the flag never leaves the process.
    flags &= ~static_cast<binder_flags_t>(FLAG_PRIVATE_VENDOR);
    if (AIBinder_isRemote(binder)) {
        if (binder_status_t injected = proxyTransactionFault().take(); injected != STATUS_OK) {
            return injected;
        }
    }
    auto reply = std::make_unique<AParcel>();
    binder_status_t status = binder->transact(code, *request, flags, reply.get());
    if (status != STATUS_OK) return status;
    if ((flags & FLAG_ONEWAY) != 0) AParcel_reset(reply.get());
    reply->position = 0;
    *out = reply.release();
    return STATUS_OK;
}

AIBinder_Weak* AIBinder_Weak_new(AIBinder* binder) {
    if (binder == nullptr) return nullptr;
    return new AIBinder_Weak{binder->weak, binder};
}

void AIBinder_Weak_delete(AIBinder_Weak* weakBinder) {
    delete weakBinder;
}

AIBinder* AIBinder_Weak_promote(AIBinder_Weak* weakBinder) {
    if (weakBinder == nullptr) return nullptr;
    std::lock_guard<std::mutex> lock(weakBinder->control->mutex);
    AIBinder* binder = weakBinder->control->ptr;
    return binder != nullptr && binder->tryIncStrong() ? binder : nullptr;
}

AIBinder_Weak* AIBinder_Weak_clone(const AIBinder_Weak* weak) {
    return weak == nullptr ? nullptr : new AIBinder_Weak(*weak);
}

bool AIBinder_lt(const AIBinder* lhs, const AIBinder* rhs) {
    return std::less<const AIBinder*>()(lhs, rhs);
}

bool AIBinder_Weak_lt(const AIBinder_Weak* lhs, const AIBinder_Weak* rhs) {
    return std::less<const AIBinder*>()(lhs->original, rhs->original);
}

void AIBinder_markVendorStability(AIBinder* binder) {
    binder->stability = kStabilityVendor;
}
void AIBinder_markVintfStability(AIBinder* binder) {
    binder->stability = kStabilityVintf;
}
