#pragma once

#include <chrono>
#include <cstddef>

namespace binder_impl {

// What one peer of a listening process may cost it. Read once from the environment
// (binder_host/service_control.h lists the variables); a bad value is logged and ignored.
struct SocketLimits {
    size_t maxConnections;                       // open sockets per listener
    std::chrono::milliseconds handshakeTimeout;  // for a fresh socket to take its HELLO
    std::chrono::milliseconds frameTimeout;      // for a frame to arrive once it began
    size_t maxQueuedCalls;                       // per connection, waiting or being served
    size_t maxQueuedBytes;                       // their parcel bytes
    std::chrono::milliseconds replyTimeout;      // for a peer to take what we write
};

const SocketLimits& socketLimits();

}  // namespace binder_impl
