#include "socket_connection.h"

#include <errno.h>
#include <sys/socket.h>
#include <unistd.h>

#include <system_error>
#include <utility>

#include "host_dir.h"
#include "socket_limits.h"
#include "socket_state.h"

namespace binder_impl {

Connection::Connection(int fd, std::string label) : fd_(fd), label_(std::move(label)) {}

Connection::~Connection() {
    if (fd_ >= 0) ::close(fd_);
}

bool Connection::readPeerCredentials() {
    ucred cred{};
    socklen_t size = sizeof(cred);
    if (getsockopt(fd_, SOL_SOCKET, SO_PEERCRED, &cred, &size) != 0) return false;
    peerPid_ = cred.pid;
    peerUid_ = cred.uid;
    return true;
}

bool Connection::sendHello(const std::shared_ptr<RemoteObject>& service) {
    std::shared_ptr<AIBinder> local = service->localBinder();
    if (local == nullptr) return false;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto& slot = exports_[service->id()];
        slot = std::make_shared<Export>(service, std::move(local));
        slot->count = 1;
    }
    const uint64_t key = newChannelKey();
    {
        SocketState& s = socketState();
        std::lock_guard<std::mutex> lock(s.mutex);
        s.byKey[key] = shared_from_this();
    }
    {
        std::lock_guard<std::mutex> lock(mutex_);
        key_ = key;
    }
    FrameWriter frame(kHello);
    frame.u64(service->id());
    frame.str(service->descriptor());
    frame.u64(key);
    return sendFrame(frame.finish());
}

bool Connection::receiveHello(const std::string& path) {
    uint64_t ref = 0;
    std::string descriptor;
    uint64_t key = 0;
    if (!readHello(fd_, &ref, &descriptor, &key)) return false;
    std::lock_guard<std::mutex> lock(mutex_);
    root_ = importLocked(ref, std::move(descriptor));
    framesHandled_ = 1;
    key_ = key;
    if (key != 0) path_ = path;
    return true;
}

bool Connection::start(std::shared_ptr<void> slot) {
    SocketState& s = socketState();
    {
        std::lock_guard<std::mutex> lock(s.mutex);
        ++s.readers;
        s.connections.insert(shared_from_this());
    }
    try {
        std::thread([self = shared_from_this(), slot = std::move(slot)]() mutable {
            self->readLoop();
            self.reset();
            slot.reset();
            SocketState& st = socketState();
            std::lock_guard<std::mutex> lock(st.mutex);
            --st.readers;
            st.readersDone.notify_all();
        }).detach();
    } catch (const std::system_error& e) {
        logError("%s: no thread for the connection of pid %d (%s); closing it", label_.c_str(),
                 static_cast<int>(peerPid_), e.what());
        std::lock_guard<std::mutex> lock(s.mutex);
        --s.readers;
        s.readersDone.notify_all();
        return false;
    }
    return true;
}

bool Connection::alive() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return !closed_;
}

std::shared_ptr<RemoteObject> Connection::root() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return closed_ ? nullptr : root_;
}

void Connection::close(bool notify) {
    std::vector<std::shared_ptr<SocketObject>> imported;
    std::map<uint64_t, std::shared_ptr<Export>> exports;
    std::shared_ptr<SocketObject> root;
    std::vector<std::shared_ptr<Waiter>> waiters;
    std::set<std::shared_ptr<Channel>> channels;
    uint64_t key = 0;
    {
        std::unique_lock<std::mutex> lock(mutex_);
        if (closed_) {
            // Another thread is closing: wait so callers may rely on the objects being gone.
            waitForCloseLocked(lock);
            return;
        }
        closed_ = true;
        closer_ = std::this_thread::get_id();
        for (auto& entry : imports_) {
            if (auto object = entry.second.lock()) imported.push_back(std::move(object));
        }
        imports_.clear();
        exports.swap(exports_);
        for (auto& entry : pending_) waiters.push_back(std::move(entry.second));
        pending_.clear();
        root = std::move(root_);
        channels.swap(channels_);
        idleChannels_.clear();
        key = key_;
    }
    if (const int fd = fd_; fd >= 0) ::shutdown(fd, SHUT_RDWR);
    // Callers and service threads blocked on a channel wake up and see the death.
    for (const auto& channel : channels) ::shutdown(channel->fd, SHUT_RDWR);
    channels.clear();
    {
        SocketState& s = socketState();
        std::lock_guard<std::mutex> lock(s.mutex);
        s.connections.erase(shared_from_this());
        auto it = s.byKey.find(key);
        if (it != s.byKey.end() && it->second.lock().get() == this) s.byKey.erase(it);
    }
    // Deaths are queued before any waiting caller learns of them: a caller that resets its
    // connection on the failed call drops its proxy, and the proxy's links with it.
    for (auto& object : imported) object->dieAndNotify(notify);
    imported.clear();
    exports.clear();
    root.reset();
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto& waiter : waiters) {
        waiter->done = true;
        waiter->status = STATUS_DEAD_OBJECT;
        waiter->cv.notify_all();
    }
    closeFinished_ = true;
    closer_ = std::thread::id();
    closeDone_.notify_all();
    framesHandledCv_.notify_all();
}

void Connection::released(SocketObject* object) {
    uint64_t count = 0;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto it = imports_.find(object->ref());
        // A newer object for the same ref may already have replaced this one.
        if (it != imports_.end() && it->second.expired()) imports_.erase(it);
        if (closed_) return;
        count = object->received;
    }
    FrameWriter frame(kRelease);
    frame.u64(object->ref());
    frame.u32(static_cast<uint32_t>(count));
    if (!sendFrame(frame.finish())) close(!socketsExiting());
}

void Connection::handOver(AParcel* from, AParcel* reply) {
    reply->data = std::move(from->data);
    reply->peerObjects = std::move(from->peerObjects);
    reply->objects.clear();
    reply->fromPeer = true;
    reply->position = 0;
}

// A closed connection answers only once the closing thread has queued the deaths (see
// close()); the closing thread itself may get here through a destructor.
void Connection::waitForCloseLocked(std::unique_lock<std::mutex>& lock) {
    if (closer_ != std::this_thread::get_id()) {
        closeDone_.wait(lock, [this] { return closeFinished_; });
    }
}

std::shared_ptr<Connection::Export> Connection::findExport(uint64_t ref) {
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = exports_.find(ref);
    return it == exports_.end() ? nullptr : it->second;
}

// Caller holds mutex_.
std::shared_ptr<SocketObject> Connection::importLocked(uint64_t ref, std::string descriptor) {
    std::weak_ptr<SocketObject>& slot = imports_[ref];
    std::shared_ptr<SocketObject> object = slot.lock();
    if (object == nullptr) {
        object = std::make_shared<SocketObject>(shared_from_this(), ref, std::move(descriptor));
        slot = object;
        if (closed_) object->dieAndNotify(false);
    }
    ++object->received;
    return object;
}

binder_status_t Connection::encodeObjects(const AParcel& parcel, FrameWriter* frame) {
    struct Entry {
        uint64_t wireId;
        std::shared_ptr<RemoteObject> object;
        SocketObject* socket;
        std::shared_ptr<AIBinder> local;
    };
    std::vector<Entry> entries;
    auto add = [&](uint64_t wireId, const std::shared_ptr<RemoteObject>& object) {
        for (const Entry& e : entries) {
            if (e.wireId == wireId) return STATUS_OK;
        }
        Entry e{wireId, object, object->asSocketObject(), nullptr};
        if (e.socket != nullptr) {
            // Objects of a third process would need forwarding through us: not supported.
            if (e.socket->connection() != this) return STATUS_BAD_VALUE;
        } else {
            e.local = object->localBinder();
            if (e.local == nullptr) return STATUS_DEAD_OBJECT;
        }
        entries.push_back(std::move(e));
        return STATUS_OK;
    };
    if (parcel.peerObjects.size() + parcel.objects.size() > kMaxObjectsPerParcel) {
        return STATUS_FAILED_TRANSACTION;
    }
    for (const auto& [wireId, object] : parcel.peerObjects) {
        if (binder_status_t s = add(wireId, object); s != STATUS_OK) return s;
    }
    for (const auto& object : parcel.objects) {
        if (binder_status_t s = add(object->id(), object); s != STATUS_OK) return s;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    if (closed_) return STATUS_DEAD_OBJECT;
    frame->u32(static_cast<uint32_t>(entries.size()));
    for (Entry& e : entries) {
        frame->u64(e.wireId);
        if (e.socket != nullptr) {
            frame->u32(kReceiverObject);
            frame->u64(e.socket->ref());
            frame->str(std::string());
            continue;
        }
        std::shared_ptr<Export>& slot = exports_[e.object->id()];
        if (slot == nullptr) slot = std::make_shared<Export>(e.object, std::move(e.local));
        ++slot->count;
        frame->u32(kSenderObject);
        frame->u64(e.object->id());
        frame->str(e.object->descriptor());
    }
    return STATUS_OK;
}

bool Connection::decodeObjects(FrameReader* reader, AParcel* out) {
    out->fromPeer = true;
    uint32_t count = 0;
    if (!reader->u32(&count) || count > kMaxObjectsPerParcel) return false;
    for (uint32_t i = 0; i < count; ++i) {
        uint64_t wireId = 0;
        uint32_t kind = 0;
        uint64_t ref = 0;
        std::string descriptor;
        if (!reader->u64(&wireId) || !reader->u32(&kind) || !reader->u64(&ref) ||
            !reader->str(&descriptor, kMaxDescriptor)) {
            return false;
        }
        std::lock_guard<std::mutex> lock(mutex_);
        if (kind == kSenderObject) {
            out->peerObjects.emplace_back(wireId, importLocked(ref, std::move(descriptor)));
        } else if (kind == kReceiverObject) {
            auto it = exports_.find(ref);
            if (it == exports_.end()) return false;
            out->peerObjects.emplace_back(wireId, it->second->object);
        } else {
            return false;
        }
    }
    return true;
}

bool Connection::sendFrame(const std::vector<uint8_t>& frame) {
    std::lock_guard<std::mutex> lock(writeMutex_);
    ++framesSent_;
    return writeFull(fd_, frame.data(), frame.size());
}

// After a failed write: a send timeout (SO_SNDTIMEO of accepted sockets) means the peer
// stopped reading.
void Connection::logStalledPeer() {
    if (errno != EAGAIN && errno != EWOULDBLOCK) return;
    logError("%s: pid %d took nothing we wrote for %lld ms; dropping the connection",
             label_.c_str(), static_cast<int>(peerPid_),
             static_cast<long long>(socketLimits().replyTimeout.count()));
}

}  // namespace binder_impl
