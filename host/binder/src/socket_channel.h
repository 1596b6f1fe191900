#pragma once

#include <cstddef>
#include <cstdint>

// Channels: a client thread waiting on the shared stream would be woken by the reader thread,
// and the call would be handed from the service's reader to a pool thread: two extra thread
// switches per call. So each client thread that makes a two-way call borrows a channel: a
// second socket to the same listener whose first frame is JOIN (uint64 key from the HELLO).
// The service answers JOINED (empty) and from then on serves TRANSACTs from that socket on the
// thread reading it, which counts as one of its binder threads: a process that gave binder
// none admits no channel, and its calls wait on the first socket for a thread. The caller
// reads its REPLY itself. Everything else stays on the first
// socket. A REPLY on a channel carries, after its transaction id, a uint64: how many frames the
// service had sent on the first socket by then. The caller returns only once its reader has
// handled that many, so what the service sent before replying is seen first, as on one stream.
// A reply that hands the client back objects of its own is followed by ACK (empty) from the
// client once it has resolved them; until then the service keeps its references, so a RELEASE
// on the first socket cannot make them vanish first.

namespace binder_impl {

// Channels a connection keeps open (a thread each on the service side, within the binder thread
// limit of the service's process), and how many of them a client keeps when no call uses them.
constexpr size_t kMaxChannels = 64;
constexpr size_t kMaxIdleChannels = 8;

// One socket of a connection's channels; closed when the last user lets go.
struct Channel {
    explicit Channel(int socket) : fd(socket) {}
    ~Channel();
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;
    const int fd;
};

// A random key that is never 0, for a HELLO to name its connection by.
uint64_t newChannelKey();

}  // namespace binder_impl
