#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <unordered_map>

namespace binder_impl {

class Connection;

// The socket connections of this process and the reader threads that serve them.
struct SocketState {
    std::mutex mutex;
    std::condition_variable readersDone;
    int readers = 0;
    bool exiting = false;
    std::set<std::shared_ptr<Connection>> connections;
    // Service side: connections by the channel key their HELLO carried.
    std::unordered_map<uint64_t, std::weak_ptr<Connection>> byKey;
};

// The first use registers the handler that stops everything at exit.
SocketState& socketState();
// The process is exiting: closed connections notify no deaths.
bool socketsExiting();

}  // namespace binder_impl
