#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "transport.h"

namespace binder_impl {

class Connection;

// A remote object reached over one connection; one per (connection, ref) while referenced.
class SocketObject : public RemoteObject {
  public:
    SocketObject(std::shared_ptr<Connection> connection, uint64_t ref, std::string descriptor);
    ~SocketObject() override;

    uint64_t id() const override { return id_; }
    std::string descriptor() const override { return descriptor_; }
    bool isAlive() const override;
    binder_status_t transact(transaction_code_t code, const AParcel& request, binder_flags_t flags,
                             AParcel* reply) override;
    DeathLinkList& deathLinks() override { return links_; }
    bool die() override { return dieAndNotify(true); }
    SocketObject* asSocketObject() override { return this; }

    // False if it was dead already.
    bool dieAndNotify(bool notify);
    const Connection* connection() const { return connection_.get(); }
    uint64_t ref() const { return ref_; }

    // References the peer handed us; guarded by the connection's mutex.
    uint64_t received = 0;

  private:
    const uint64_t id_;
    const uint64_t ref_;
    const std::string descriptor_;
    const std::shared_ptr<Connection> connection_;
    std::atomic<bool> dead_{false};
    DeathLinkList links_;
};

}  // namespace binder_impl
