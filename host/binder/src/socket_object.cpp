#include "socket_object.h"

#include <utility>
#include <vector>

#include "socket_connection.h"

namespace binder_impl {
namespace {

// Ids of socket objects carry this bit so they never collide with local export ids in a parcel.
constexpr uint64_t kSocketIdBit = uint64_t{1} << 63;

std::atomic<uint64_t> gNextSocketObjectId{1};

}  // namespace

SocketObject::SocketObject(std::shared_ptr<Connection> connection, uint64_t ref,
                           std::string descriptor)
    : id_(kSocketIdBit | gNextSocketObjectId++),
      ref_(ref),
      descriptor_(std::move(descriptor)),
      connection_(std::move(connection)) {}

SocketObject::~SocketObject() {
    connection_->released(this);
}

bool SocketObject::isAlive() const {
    return !dead_.load() && connection_->alive();
}

binder_status_t SocketObject::transact(transaction_code_t code, const AParcel& request,
                                       binder_flags_t flags, AParcel* reply) {
    if (dead_.load()) return STATUS_DEAD_OBJECT;
    return connection_->call(ref_, code, request, flags, reply);
}

bool SocketObject::dieAndNotify(bool notify) {
    // Links first: a caller that sees the death may drop its proxy, and its links with it.
    std::vector<DeathLink> links = links_.markDead();
    if (dead_.exchange(true)) return false;
    if (notify) deliverDeaths(std::move(links), /*mayWait=*/false);
    return true;
}

}  // namespace binder_impl
