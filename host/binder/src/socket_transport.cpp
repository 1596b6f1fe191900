#include "socket_transport.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <map>
#include <mutex>
#include <vector>

#include "host_dir.h"
#include "socket_connection.h"
#include "socket_listener.h"
#include "socket_state.h"

namespace binder_impl {
namespace {

// Set once anything socket-related started, so in-process resets never touch this machinery.
std::atomic<bool> gInUse{false};

struct Registry {
    // Serializes publishing and connecting; a connect holds it through the handshake.
    std::mutex mutex;
    std::map<std::string, std::unique_ptr<Listener>> listeners;
    std::map<std::string, std::weak_ptr<Connection>> clients;  // by socket path
};

Registry& registry() {
    static auto* instance = new Registry();
    return *instance;
}

}  // namespace

bool socketModeEnabled() {
    return !socketDirectory().empty();
}

bool publishService(const std::string& instance, const std::shared_ptr<RemoteObject>& service) {
    const std::string dir = socketDirectory();
    if (dir.empty()) return true;
    const std::string path = socketPath(dir, instance);
    if (path.empty()) return false;
    gInUse = true;
    socketState();  // registers the exit handler before any thread starts
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    std::unique_ptr<Listener>& slot = r.listeners[instance];
    // Clients of the replaced object keep their connections.
    if (slot != nullptr) slot->stop(false);
    slot = std::make_unique<Listener>(instance, path, service);
    if (slot->start()) return true;
    r.listeners.erase(instance);
    return false;
}

void unpublishService(const std::string& instance) {
    std::unique_ptr<Listener> listener;
    {
        Registry& r = registry();
        std::lock_guard<std::mutex> lock(r.mutex);
        auto it = r.listeners.find(instance);
        if (it == r.listeners.end()) return;
        listener = std::move(it->second);
        r.listeners.erase(it);
    }
    listener->stop(true);
}

std::shared_ptr<RemoteObject> connectService(const std::string& instance) {
    const std::string dir = socketDirectory();
    if (dir.empty()) return nullptr;
    const std::string path = socketPath(dir, instance);
    if (path.empty()) return nullptr;
    gInUse = true;
    socketState();
    Registry& r = registry();
    auto liveClient = [&]() -> std::shared_ptr<RemoteObject> {
        if (auto existing = r.clients[path].lock()) return existing->root();
        return nullptr;
    };
    {
        std::lock_guard<std::mutex> lock(r.mutex);
        if (auto root = liveClient()) return root;
    }
    // Connect and wait for the hello without the registry lock: a service that is slow to
    // answer must not hold up every other lookup in the process.
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return nullptr;
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    memcpy(addr.sun_path, path.c_str(), path.size() + 1);
    if (connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) != 0) {
        ::close(fd);
        return nullptr;
    }
    auto connection = std::make_shared<Connection>(fd, instance);
    if (!connection->readPeerCredentials() || !connection->receiveHello(path)) {
        logError("%s: no answer from the service at %s", instance.c_str(), path.c_str());
        connection->close(false);
        return nullptr;
    }
    std::lock_guard<std::mutex> lock(r.mutex);
    // Another thread may have connected meanwhile; one connection per service keeps one proxy.
    if (auto root = liveClient()) {
        connection->close(false);
        return root;
    }
    if (!connection->start()) {
        connection->close(false);
        return nullptr;
    }
    r.clients[path] = connection;
    return connection->root();
}

bool socketPresent(const std::string& instance) {
    const std::string dir = socketDirectory();
    if (dir.empty()) return false;
    const std::string path = socketPath(dir, instance);
    struct stat st = {};
    return !path.empty() && stat(path.c_str(), &st) == 0 && S_ISSOCK(st.st_mode);
}

void resetSocketTransport() {
    if (!gInUse) return;
    std::map<std::string, std::unique_ptr<Listener>> listeners;
    {
        Registry& r = registry();
        std::lock_guard<std::mutex> lock(r.mutex);
        listeners.swap(r.listeners);
        r.clients.clear();
    }
    for (auto& entry : listeners) entry.second->stop(true);
    std::vector<std::shared_ptr<Connection>> connections;
    {
        SocketState& s = socketState();
        std::lock_guard<std::mutex> lock(s.mutex);
        connections.assign(s.connections.begin(), s.connections.end());
    }
    const bool notify = !socketsExiting();
    for (auto& connection : connections) connection->close(notify);
}

}  // namespace binder_impl
