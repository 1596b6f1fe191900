#pragma once

#include <android/binder_ibinder.h>

#include <cstdint>
#include <memory>
#include <string>

#include "death.h"

namespace binder_impl {

class SocketObject;

// A binder object as reached through a transport. Proxies own one each; a transport must hand
// out the same RemoteObject for the same object while any reference to it is alive, so the
// proxy table can key on its address.
class RemoteObject {
  public:
    virtual ~RemoteObject() = default;
    virtual uint64_t id() const = 0;
    virtual std::string descriptor() const = 0;
    virtual bool isAlive() const = 0;
    // Request positioned anywhere; reply is filled on success (untouched for one-way).
    virtual binder_status_t transact(transaction_code_t code, const AParcel& request,
                                     binder_flags_t flags, AParcel* reply) = 0;
    virtual DeathLinkList& deathLinks() = 0;
    // The object's host is gone: fail calls from now on and notify the links.
    virtual bool die() = 0;
    // The local binder behind an export of this process; null for objects of other processes.
    virtual std::shared_ptr<AIBinder> localBinder() { return nullptr; }
    virtual SocketObject* asSocketObject() { return nullptr; }
};

// How local objects are exported and how object ids read from a parcel are resolved.
class Transport {
  public:
    virtual ~Transport() = default;
    // Local binders only; returns the live export of that binder, creating one if needed.
    virtual std::shared_ptr<RemoteObject> exportLocal(AIBinder* local) = 0;
    // Null when the id names nothing alive.
    virtual std::shared_ptr<RemoteObject> find(uint64_t id) = 0;
};

Transport& inProcessTransport();

}  // namespace binder_impl
