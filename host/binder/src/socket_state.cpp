#include "socket_state.h"

#include <chrono>
#include <cstdlib>

#include "process.h"
#include "socket_transport.h"

namespace binder_impl {
namespace {

void stopEverythingAtExit() {
    SocketState& s = socketState();
    {
        std::lock_guard<std::mutex> lock(s.mutex);
        s.exiting = true;
    }
    resetSocketTransport();
    std::unique_lock<std::mutex> lock(s.mutex);
    s.readersDone.wait_for(lock, std::chrono::seconds(2), [&s] { return s.readers == 0; });
    lock.unlock();
    stopThreadPool();
}

}  // namespace

// Never destroyed: reader threads may still finish while statics are torn down.
SocketState& socketState() {
    static SocketState* instance = [] {
        auto* s = new SocketState();
        std::atexit(stopEverythingAtExit);
        return s;
    }();
    return *instance;
}

bool socketsExiting() {
    SocketState& s = socketState();
    std::lock_guard<std::mutex> lock(s.mutex);
    return s.exiting;
}

}  // namespace binder_impl
