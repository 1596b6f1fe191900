#include "socket_listener.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <exception>

#include "host_dir.h"
#include "socket_connection.h"
#include "socket_limits.h"
#include "socket_state.h"

namespace binder_impl {

Listener::Listener(std::string instance, std::string path, std::shared_ptr<RemoteObject> service)
    : instance_(std::move(instance)), path_(std::move(path)), service_(std::move(service)) {}

Listener::~Listener() {
    stop(false);
}

bool Listener::start() {
    fd_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    wake_ = eventfd(0, EFD_CLOEXEC);
    if (fd_ < 0 || wake_ < 0) {
        logError("%s: cannot create a socket: %s", instance_.c_str(), strerror(errno));
        return false;
    }
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    memcpy(addr.sun_path, path_.c_str(), path_.size() + 1);
    // A process still answering there keeps its socket; one that ended left a stale file.
    if (const pid_t owner = liveOwner(); owner != 0) {
        logError("%s: %s is in use by pid %d", instance_.c_str(), path_.c_str(),
                 static_cast<int>(owner));
        return false;
    }
    struct stat st = {};
    if (lstat(path_.c_str(), &st) == 0 && S_ISSOCK(st.st_mode)) unlink(path_.c_str());
    if (bind(fd_, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) != 0 ||
        stat(path_.c_str(), &st) != 0 || listen(fd_, 64) != 0) {
        logError("%s: cannot listen on %s: %s", instance_.c_str(), path_.c_str(), strerror(errno));
        return false;
    }
    device_ = st.st_dev;
    inode_ = st.st_ino;
    thread_ = std::thread([this] { run(); });
    return true;
}

void Listener::stop(bool closeConnections) {
    if (thread_.joinable()) {
        uint64_t one = 1;
        if (write(wake_, &one, sizeof(one)) != sizeof(one)) {
            logError("%s: cannot wake the listener", instance_.c_str());
        }
        thread_.join();
    }
    if (fd_ >= 0) {
        ::close(fd_);
        // Only our own socket: a newer process may have bound the name since.
        struct stat st = {};
        if (stat(path_.c_str(), &st) == 0 && st.st_dev == device_ && st.st_ino == inode_) {
            unlink(path_.c_str());
        }
        fd_ = -1;
    }
    if (wake_ >= 0) ::close(wake_);
    wake_ = -1;
    std::vector<std::weak_ptr<Connection>> accepted;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        accepted.swap(accepted_);
    }
    if (!closeConnections) return;
    const bool notify = !socketsExiting();
    for (auto& weak : accepted) {
        if (auto connection = weak.lock()) connection->close(notify);
    }
}

// The pid listening on path_ (-1 when it cannot be told), 0 when nobody answers there.
pid_t Listener::liveOwner() const {
    const int probe = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (probe < 0) return 0;
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    memcpy(addr.sun_path, path_.c_str(), path_.size() + 1);
    pid_t owner = 0;
    if (connect(probe, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) == 0) {
        ucred cred{};
        socklen_t size = sizeof(cred);
        owner = getsockopt(probe, SOL_SOCKET, SO_PEERCRED, &cred, &size) == 0 && cred.pid > 0
                        ? cred.pid
                        : -1;
    } else if (errno == EAGAIN) {
        owner = -1;  // alive, its backlog full
    }
    ::close(probe);
    return owner;
}

// Holds one place under the connection cap while its reader runs.
struct Listener::Slot {
    explicit Slot(std::shared_ptr<std::atomic<size_t>> open) : open_(std::move(open)) { ++*open_; }
    ~Slot() { --*open_; }
    Slot(const Slot&) = delete;
    Slot& operator=(const Slot&) = delete;
    const std::shared_ptr<std::atomic<size_t>> open_;
};

// Refusals come in bursts: one line a second says how many.
void Listener::logRefusal(const char* format, ...) {
    ++refusedSinceLog_;
    const auto now = std::chrono::steady_clock::now();
    if (now - lastRefusalLog_ < std::chrono::seconds(1)) return;
    char reason[256];
    va_list args;
    va_start(args, format);
    vsnprintf(reason, sizeof(reason), format, args);
    va_end(args);
    logError("%s: %s; refused %zu connection(s)", instance_.c_str(), reason, refusedSinceLog_);
    refusedSinceLog_ = 0;
    lastRefusalLog_ = now;
}

// True when woken to stop.
bool Listener::pauseOrStop(std::chrono::milliseconds delay) {
    pollfd wake{wake_, POLLIN, 0};
    const int ready = poll(&wake, 1, static_cast<int>(delay.count()));
    return ready > 0 && wake.revents != 0;
}

// The accept loop never gives up: out of descriptors or memory it refuses or waits, and
// accepts again once they are back.
void Listener::run() {
    constexpr auto kFirstBackoff = std::chrono::milliseconds(10);
    constexpr auto kLastBackoff = std::chrono::milliseconds(500);
    auto backoff = kFirstBackoff;
    // Kept free so that at the descriptor limit a client is told no at once rather than
    // left in the backlog.
    int spare = open("/dev/null", O_RDONLY | O_CLOEXEC);
    for (;;) {
        pollfd fds[2] = {{fd_, POLLIN, 0}, {wake_, POLLIN, 0}};
        if (poll(fds, 2, -1) < 0) {
            if (errno == EINTR) continue;
            logError("%s: poll failed: %s; retrying", instance_.c_str(), strerror(errno));
            if (pauseOrStop(kLastBackoff)) break;
            continue;
        }
        if (fds[1].revents != 0) break;
        int fd = accept4(fd_, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd < 0) {
            const int error = errno;
            if (error == EINTR || error == ECONNABORTED || error == EAGAIN || error == EPROTO) {
                continue;
            }
            if ((error == EMFILE || error == ENFILE) && spare >= 0) {
                ::close(spare);
                const int refused = accept4(fd_, nullptr, nullptr, SOCK_CLOEXEC);
                if (refused >= 0) ::close(refused);
                spare = open("/dev/null", O_RDONLY | O_CLOEXEC);
                if (refused >= 0) {
                    logRefusal("accept failed: %s", strerror(error));
                    continue;
                }
            }
            logRefusal("accept failed: %s; retrying within %lld ms", strerror(error),
                       static_cast<long long>(backoff.count()));
            if (pauseOrStop(backoff)) break;
            backoff = std::min(backoff * 2, kLastBackoff);
            if (spare < 0) spare = open("/dev/null", O_RDONLY | O_CLOEXEC);
            continue;
        }
        backoff = kFirstBackoff;
        try {
            serveAccepted(fd);
        } catch (const std::exception& e) {
            // Out of memory for this one: the socket is closed by whoever owned it.
            logRefusal("cannot take a connection: %s", e.what());
        }
    }
    if (spare >= 0) ::close(spare);
}

void Listener::serveAccepted(int fd) {
    const SocketLimits& limits = socketLimits();
    std::shared_ptr<Connection> connection;
    try {
        connection = std::make_shared<Connection>(fd, instance_);
    } catch (...) {
        ::close(fd);
        throw;
    }
    if (!connection->readPeerCredentials()) {
        connection->close(false);
        return;
    }
    if (open_->load() >= limits.maxConnections) {
        logRefusal("%zu connections open, the limit (BINDER_HOST_MAX_CONNECTIONS)",
                   limits.maxConnections);
        connection->close(false);
        return;
    }
    const timeval sendTimeout{static_cast<time_t>(limits.replyTimeout.count() / 1000),
                              static_cast<suseconds_t>(limits.replyTimeout.count() % 1000 * 1000)};
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &sendTimeout, sizeof(sendTimeout));
    auto slot = std::make_shared<Slot>(open_);
    connection->markAccepted();
    if (!connection->sendHello(service_) || !connection->start(std::move(slot))) {
        connection->close(false);
        return;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    std::vector<std::weak_ptr<Connection>> live;
    for (auto& weak : accepted_) {
        if (!weak.expired()) live.push_back(std::move(weak));
    }
    live.push_back(connection);
    accepted_.swap(live);
    if (refusedSinceLog_ > 0) {
        logError("%s: accepting again; %zu more connection(s) were refused", instance_.c_str(),
                 refusedSinceLog_);
        refusedSinceLog_ = 0;
    }
}

}  // namespace binder_impl
