#include "socket_transport.h"

#include <errno.h>
#include <fcntl.h>
#include <linux/sockios.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <random>
#include <set>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <vector>

#include "binder_internal.h"
#include "death.h"
#include "host_dir.h"
#include "parcel_internal.h"
#include "process.h"
#include "socket_limits.h"

// Frames on the stream: uint32 body length, uint32 type, then the body, all little-endian.
//   HELLO    (server to client, once): uint64 ref of the service, string descriptor, and
//            optionally uint64 channel key (absent or 0: the server takes no channels)
//   TRANSACT uint64 transaction id (0 for one-way), uint64 target ref, uint32 code,
//            uint32 flags, object table, uint32 size, parcel bytes
//   REPLY    uint64 transaction id, int32 status, object table, uint32 size, parcel bytes
//   RELEASE  uint64 ref, uint32 count: the peer dropped that many references to our export
// Object table: uint32 n, then n times: uint64 id as written in the parcel bytes, uint32 kind,
// uint64 ref, string descriptor. A ref names an export of the side that owns the object: kind
// SENDER means the sender's own object (the receiver makes or reuses a proxy), kind RECEIVER
// means an object the receiver exported earlier (it resolves to the receiver's own object).
// A string is uint32 length and that many bytes.
//
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

class Connection;

namespace {

constexpr uint32_t kMaxFrame = 16u << 20;
// Leaves room in a frame for the header fields and the object table.
constexpr size_t kMaxParcelBytes = kMaxFrame - (1u << 20);
constexpr size_t kMaxObjectsPerParcel = 4096;
constexpr size_t kMaxDescriptor = 4096;
constexpr auto kHelloTimeout = std::chrono::seconds(5);
// Ids of socket objects carry this bit so they never collide with local export ids in a parcel.
constexpr uint64_t kSocketIdBit = uint64_t{1} << 63;
// Channels a connection keeps open (a thread each on the service side, within the binder thread
// limit of the service's process), and how many of them a client keeps when no call uses them.
constexpr size_t kMaxChannels = 64;
constexpr size_t kMaxIdleChannels = 8;

enum FrameType : uint32_t {
    kHello = 1,
    kTransact = 2,
    kReply = 3,
    kRelease = 4,
    kJoin = 5,
    kJoined = 6,
    kAck = 7
};
enum ObjectKind : uint32_t { kSenderObject = 1, kReceiverObject = 2 };

class FrameWriter {
  public:
    explicit FrameWriter(uint32_t type) : bytes_(8) { memcpy(bytes_.data() + 4, &type, 4); }
    void u32(uint32_t v) { raw(&v, sizeof(v)); }
    void i32(int32_t v) { raw(&v, sizeof(v)); }
    void u64(uint64_t v) { raw(&v, sizeof(v)); }
    void str(const std::string& s) {
        u32(static_cast<uint32_t>(s.size()));
        raw(s.data(), s.size());
    }
    void raw(const void* data, size_t size) {
        const auto* p = static_cast<const uint8_t*>(data);
        bytes_.insert(bytes_.end(), p, p + size);
    }
    size_t bodySize() const { return bytes_.size() - 8; }
    void reserve(size_t bodySize) { bytes_.reserve(8 + bodySize); }
    void truncate(size_t bodySize) { bytes_.resize(8 + bodySize); }
    std::vector<uint8_t>& finish() {
        const auto length = static_cast<uint32_t>(bodySize());
        memcpy(bytes_.data(), &length, 4);
        return bytes_;
    }

  private:
    std::vector<uint8_t> bytes_;
};

class FrameReader {
  public:
    FrameReader(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    bool u32(uint32_t* v) { return raw(v, sizeof(*v)); }
    bool i32(int32_t* v) { return raw(v, sizeof(*v)); }
    bool u64(uint64_t* v) { return raw(v, sizeof(*v)); }
    bool str(std::string* s, size_t maxSize) {
        uint32_t size = 0;
        if (!u32(&size) || size > maxSize || size > remaining()) return false;
        s->assign(reinterpret_cast<const char*>(data_ + offset_), size);
        offset_ += size;
        return true;
    }
    bool bytes(std::vector<uint8_t>* out) {
        uint32_t size = 0;
        if (!u32(&size) || size > remaining()) return false;
        out->assign(data_ + offset_, data_ + offset_ + size);
        offset_ += size;
        return true;
    }
    size_t remaining() const { return size_ - offset_; }
    bool atEnd() const { return offset_ == size_; }

  private:
    bool raw(void* out, size_t size) {
        if (remaining() < size) return false;
        memcpy(out, data_ + offset_, size);
        offset_ += size;
        return true;
    }

    const uint8_t* data_;
    size_t size_;
    size_t offset_ = 0;
};

bool writeFull(int fd, const uint8_t* data, size_t size) {
    while (size > 0) {
        ssize_t n = send(fd, data, size, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        data += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

// Without a deadline, blocks until size bytes arrived or the stream ended.
bool readFull(int fd, uint8_t* data, size_t size,
              const std::chrono::steady_clock::time_point* deadline = nullptr) {
    while (size > 0) {
        if (deadline != nullptr) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                    *deadline - std::chrono::steady_clock::now());
            if (left.count() <= 0) return false;
            pollfd pfd{fd, POLLIN, 0};
            int ready = poll(&pfd, 1, static_cast<int>(left.count()));
            if (ready < 0 && errno == EINTR) continue;
            if (ready <= 0) return false;
        }
        ssize_t n = recv(fd, data, size, 0);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        data += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

enum class ReadResult { kOk, kClosed, kTooLarge, kTimedOut };

// A body grows by this much at most ahead of the bytes that arrived: a length alone costs
// nothing.
constexpr size_t kBodyChunk = 64 * 1024;

bool waitReadable(int fd, const std::chrono::steady_clock::time_point* deadline) {
    for (;;) {
        int wait = -1;
        if (deadline != nullptr) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                    *deadline - std::chrono::steady_clock::now());
            if (left.count() <= 0) return false;
            wait = static_cast<int>(left.count());
        }
        pollfd pfd{fd, POLLIN, 0};
        const int ready = poll(&pfd, 1, wait);
        if (ready < 0 && errno == EINTR) continue;
        return ready > 0;
    }
}

bool readBody(int fd, uint32_t length, std::vector<uint8_t>* body,
              const std::chrono::steady_clock::time_point* deadline) {
    body->clear();
    size_t got = 0;
    while (got < length) {
        if (deadline != nullptr && !waitReadable(fd, deadline)) return false;
        const size_t end = std::min<size_t>(length, got + kBodyChunk);
        if (body->size() < end) body->resize(end);
        const ssize_t n = recv(fd, body->data() + got, end - got, 0);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        got += static_cast<size_t>(n);
    }
    return true;
}

bool pastDeadline(const std::chrono::steady_clock::time_point* deadline) {
    return deadline != nullptr && std::chrono::steady_clock::now() >= *deadline;
}

// The body is not read (or allocated) when its length is beyond maxLength. With frameTimeout,
// the frame may take that long from its first byte: a peer cannot hold a half-sent frame.
ReadResult readFrame(int fd, uint32_t* type, uint32_t* length, std::vector<uint8_t>* body,
                     const std::chrono::steady_clock::time_point* deadline = nullptr,
                     uint32_t maxLength = kMaxFrame,
                     std::chrono::milliseconds frameTimeout = std::chrono::milliseconds(0)) {
    std::chrono::steady_clock::time_point frameDeadline;
    if (frameTimeout.count() > 0) {
        if (!waitReadable(fd, deadline)) {
            return pastDeadline(deadline) ? ReadResult::kTimedOut : ReadResult::kClosed;
        }
        frameDeadline = std::chrono::steady_clock::now() + frameTimeout;
        if (deadline == nullptr || frameDeadline < *deadline) deadline = &frameDeadline;
    }
    uint8_t header[8];
    if (!readFull(fd, header, sizeof(header), deadline)) {
        return pastDeadline(deadline) ? ReadResult::kTimedOut : ReadResult::kClosed;
    }
    memcpy(length, header, 4);
    memcpy(type, header + 4, 4);
    if (*length > maxLength) return ReadResult::kTooLarge;
    if (readBody(fd, *length, body, deadline)) return ReadResult::kOk;
    return pastDeadline(deadline) ? ReadResult::kTimedOut : ReadResult::kClosed;
}

// After a large frame, a reader does not keep its buffer.
void trimBuffer(std::vector<uint8_t>* body) {
    if (body->capacity() > 16 * kBodyChunk) std::vector<uint8_t>().swap(*body);
}

// One socket of a connection's channels; closed when the last user lets go.
struct Channel {
    explicit Channel(int socket) : fd(socket) {}
    ~Channel() { ::close(fd); }
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;
    const int fd;
};

uint64_t newChannelKey() {
    static std::mutex mutex;
    static std::random_device device;
    std::lock_guard<std::mutex> lock(mutex);
    uint64_t key = 0;
    while (key == 0) key = (uint64_t{device()} << 32) | device();
    return key;
}

std::atomic<uint64_t> gNextSocketObjectId{1};
// Service side: threads serving channels, over all connections of this process.
std::atomic<uint32_t> gChannelThreads{0};
// Set once anything socket-related started, so in-process resets never touch this machinery.
std::atomic<bool> gInUse{false};

}  // namespace

// A remote object reached over one connection; one per (connection, ref) while referenced.
class SocketObject : public RemoteObject {
  public:
    SocketObject(std::shared_ptr<Connection> connection, uint64_t ref, std::string descriptor)
        : id_(kSocketIdBit | gNextSocketObjectId++),
          ref_(ref),
          descriptor_(std::move(descriptor)),
          connection_(std::move(connection)) {}
    ~SocketObject() override;

    uint64_t id() const override { return id_; }
    std::string descriptor() const override { return descriptor_; }
    bool isAlive() const override;
    binder_status_t transact(transaction_code_t code, const AParcel& request, binder_flags_t flags,
                             AParcel* reply) override;
    DeathLinkList& deathLinks() override { return links_; }
    bool die() override { return dieAndNotify(true); }
    SocketObject* asSocketObject() override { return this; }

    bool dieAndNotify(bool notify) {
        // Links first: a caller that sees the death may drop its proxy, and its links with it.
        std::vector<DeathLink> links = links_.markDead();
        if (dead_.exchange(true)) return false;
        if (notify) deliverDeaths(std::move(links), /*mayWait=*/false);
        return true;
    }
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

namespace {

struct SocketState {
    std::mutex mutex;
    std::condition_variable readersDone;
    int readers = 0;
    bool exiting = false;
    std::set<std::shared_ptr<Connection>> connections;
    // Service side: connections by the channel key their HELLO carried.
    std::unordered_map<uint64_t, std::weak_ptr<Connection>> byKey;
};

void stopEverythingAtExit();

// Never destroyed: reader threads may still finish while statics are torn down.
SocketState& state() {
    static SocketState* instance = [] {
        auto* s = new SocketState();
        std::atexit(stopEverythingAtExit);
        return s;
    }();
    return *instance;
}

bool exiting() {
    SocketState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    return s.exiting;
}

}  // namespace

class Connection : public std::enable_shared_from_this<Connection> {
  public:
    Connection(int fd, std::string label) : fd_(fd), label_(std::move(label)) {}
    ~Connection() {
        if (fd_ >= 0) ::close(fd_);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool readPeerCredentials() {
        ucred cred{};
        socklen_t size = sizeof(cred);
        if (getsockopt(fd_, SOL_SOCKET, SO_PEERCRED, &cred, &size) != 0) return false;
        peerPid_ = cred.pid;
        peerUid_ = cred.uid;
        return true;
    }

    // Server side: the service is the first object the client gets.
    bool sendHello(const std::shared_ptr<RemoteObject>& service) {
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
            SocketState& s = state();
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

    // Client side, before the reader starts. Channels are used only with a path to open them.
    bool receiveHello(const std::string& path) {
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

    // Server side, before start(): the limits of socketLimits() apply to this peer.
    void markAccepted() { accepted_ = true; }

    // slot lives as long as the reader thread. False if no thread could be made; the caller
    // closes the connection.
    bool start(std::shared_ptr<void> slot = nullptr) {
        SocketState& s = state();
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
                SocketState& st = state();
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

    bool alive() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return !closed_;
    }

    std::shared_ptr<RemoteObject> root() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return closed_ ? nullptr : root_;
    }

    // A closed connection is a death for everything reached through it.
    void close(bool notify) {
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
            SocketState& s = state();
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

    binder_status_t call(uint64_t ref, transaction_code_t code, const AParcel& request,
                         binder_flags_t flags, AParcel* reply) {
        if (request.data.size() > kMaxParcelBytes) return STATUS_FAILED_TRANSACTION;
        const bool oneway = (flags & FLAG_ONEWAY) != 0;
        if (!oneway) {
            if (std::shared_ptr<Channel> channel = takeChannel()) {
                binder_status_t status = callOnChannel(*channel, ref, code, request, flags, reply);
                giveBackChannel(std::move(channel), status);
                return status;
            }
        }
        std::shared_ptr<Waiter> waiter;
        uint64_t transaction = 0;
        if (!oneway) {
            waiter = std::make_shared<Waiter>();
            std::unique_lock<std::mutex> lock(mutex_);
            if (closed_) {
                waitForCloseLocked(lock);
                return STATUS_DEAD_OBJECT;
            }
            transaction = nextTransaction_++;
            pending_[transaction] = waiter;
        }
        FrameWriter frame(kTransact);
        if (binder_status_t s = encodeTransact(transaction, ref, code, flags, request, &frame);
            s != STATUS_OK) {
            std::lock_guard<std::mutex> lock(mutex_);
            pending_.erase(transaction);
            return s;
        }
        if (!sendFrame(frame.finish())) {
            logStalledPeer();
            close(!exiting());
            return STATUS_DEAD_OBJECT;
        }
        if (oneway) return STATUS_OK;
        std::unique_lock<std::mutex> lock(mutex_);
        waiter->cv.wait(lock, [&waiter] { return waiter->done; });
        if (waiter->status != STATUS_OK) return waiter->status;
        handOver(&waiter->reply, reply);
        return STATUS_OK;
    }

    // Service side, on the reader of a fresh socket whose first frame is JOIN: the socket joins
    // the connection that key belongs to and this thread serves its calls. False if refused.
    bool becomeChannel(FrameReader* reader) {
        uint64_t key = 0;
        if (!reader->u64(&key) || !reader->atEnd() || key == 0) return false;
        std::shared_ptr<Connection> owner;
        {
            SocketState& s = state();
            std::lock_guard<std::mutex> lock(s.mutex);
            auto it = s.byKey.find(key);
            if (it != s.byKey.end()) owner = it->second.lock();
        }
        // The key alone is not enough: the channel must come from the same process.
        if (owner == nullptr || owner.get() == this || owner->peerPid_ != peerPid_) return false;
        // This connection gives its socket to the channel and ends without a word.
        std::shared_ptr<Channel> channel;
        {
            std::lock_guard<std::mutex> lock(writeMutex_);
            channel = std::make_shared<Channel>(fd_.exchange(-1));
        }
        close(false);
        // A closed or busy owner lets the socket close: the client calls without a channel.
        if (!owner->admitChannel(channel)) return true;
        FrameWriter joined(kJoined);
        const std::vector<uint8_t>& bytes = joined.finish();
        if (writeFull(channel->fd, bytes.data(), bytes.size())) {
            BinderThreadScope binderThread;
            owner->serveChannel(channel);
        }
        owner->dropChannel(channel);
        return true;
    }

    // The last reference to object went away: hand the peer its references back.
    void released(SocketObject* object) {
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
        if (!sendFrame(frame.finish())) close(!exiting());
    }

  private:
    // One of our objects as the peer can reach it; count is how many references it holds.
    struct Export {
        Export(std::shared_ptr<RemoteObject> o, std::shared_ptr<AIBinder> l)
            : object(std::move(o)), local(std::move(l)) {}
        const std::shared_ptr<RemoteObject> object;
        const std::shared_ptr<AIBinder> local;
        uint64_t count = 0;
        const std::shared_ptr<SerialQueue> oneway = std::make_shared<SerialQueue>();
    };

    struct Waiter {
        std::condition_variable cv;
        bool done = false;
        binder_status_t status = STATUS_OK;
        AParcel reply;
    };

    static void handOver(AParcel* from, AParcel* reply) {
        reply->data = std::move(from->data);
        reply->peerObjects = std::move(from->peerObjects);
        reply->objects.clear();
        reply->fromPeer = true;
        reply->position = 0;
    }

    // A closed connection answers only once the closing thread has queued the deaths (see
    // close()); the closing thread itself may get here through a destructor.
    void waitForCloseLocked(std::unique_lock<std::mutex>& lock) {
        if (closer_ != std::this_thread::get_id()) {
            closeDone_.wait(lock, [this] { return closeFinished_; });
        }
    }

    binder_status_t encodeTransact(uint64_t transaction, uint64_t ref, transaction_code_t code,
                                   binder_flags_t flags, const AParcel& request,
                                   FrameWriter* frame) {
        frame->reserve(64 + request.data.size());
        frame->u64(transaction);
        frame->u64(ref);
        frame->u32(code);
        frame->u32(flags);
        if (binder_status_t s = encodeObjects(request, frame); s != STATUS_OK) return s;
        frame->u32(static_cast<uint32_t>(request.data.size()));
        frame->raw(request.data.data(), request.data.size());
        return STATUS_OK;
    }

    static bool readHello(int fd, uint64_t* ref, std::string* descriptor, uint64_t* key) {
        const auto deadline = std::chrono::steady_clock::now() + kHelloTimeout;
        uint32_t type = 0;
        uint32_t length = 0;
        std::vector<uint8_t> body;
        if (readFrame(fd, &type, &length, &body, &deadline, kMaxDescriptor + 20) !=
                    ReadResult::kOk ||
            type != kHello) {
            return false;
        }
        FrameReader reader(body.data(), body.size());
        if (!reader.u64(ref) || !reader.str(descriptor, kMaxDescriptor)) return false;
        *key = 0;
        return reader.atEnd() || (reader.u64(key) && reader.atEnd());
    }

    // Client side: an idle channel, a new one, or null to call over the shared stream.
    std::shared_ptr<Channel> takeChannel() {
        std::string path;
        uint64_t key = 0;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (closed_ || path_.empty()) return nullptr;
            if (!idleChannels_.empty()) {
                std::shared_ptr<Channel> channel = std::move(idleChannels_.back());
                idleChannels_.pop_back();
                return channel;
            }
            if (channels_.size() >= channelLimit_) return nullptr;
            path = path_;
            key = key_;
        }
        std::shared_ptr<Channel> channel = openChannel(path, key);
        std::lock_guard<std::mutex> lock(mutex_);
        if (channel == nullptr) {
            // The service is at its thread limit (or takes no more channels from us): calls
            // beyond the channels open now go over the shared stream.
            channelLimit_ = channels_.size();
            return nullptr;
        }
        if (closed_) return nullptr;
        channels_.insert(channel);
        return channel;
    }

    static std::shared_ptr<Channel> openChannel(const std::string& path, uint64_t key) {
        const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (fd < 0) return nullptr;
        auto channel = std::make_shared<Channel>(fd);
        sockaddr_un addr{};
        addr.sun_family = AF_UNIX;
        memcpy(addr.sun_path, path.c_str(), path.size() + 1);
        if (connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) != 0) return nullptr;
        uint64_t ref = 0;
        std::string descriptor;
        uint64_t ignored = 0;
        if (!readHello(fd, &ref, &descriptor, &ignored)) return nullptr;
        FrameWriter join(kJoin);
        join.u64(key);
        const std::vector<uint8_t>& bytes = join.finish();
        if (!writeFull(fd, bytes.data(), bytes.size())) return nullptr;
        const auto deadline = std::chrono::steady_clock::now() + kHelloTimeout;
        uint32_t type = 0;
        uint32_t length = 0;
        std::vector<uint8_t> body;
        if (readFrame(fd, &type, &length, &body, &deadline, 0) != ReadResult::kOk ||
            type != kJoined) {
            return nullptr;
        }
        return channel;
    }

    void giveBackChannel(std::shared_ptr<Channel> channel, binder_status_t status) {
        std::lock_guard<std::mutex> lock(mutex_);
        const bool keep = !closed_ && status != STATUS_DEAD_OBJECT &&
                          idleChannels_.size() < kMaxIdleChannels;
        if (keep) {
            idleChannels_.push_back(std::move(channel));
        } else {
            channels_.erase(channel);
        }
    }

    // The caller writes its TRANSACT and reads the REPLY on its own thread.
    binder_status_t callOnChannel(const Channel& channel, uint64_t ref, transaction_code_t code,
                                  const AParcel& request, binder_flags_t flags, AParcel* reply) {
        constexpr uint64_t kTransaction = 1;
        FrameWriter frame(kTransact);
        if (binder_status_t s = encodeTransact(kTransaction, ref, code, flags, request, &frame);
            s != STATUS_OK) {
            return s;
        }
        const std::vector<uint8_t>& bytes = frame.finish();
        std::vector<uint8_t> body;
        uint32_t type = 0;
        uint32_t length = 0;
        if (writeFull(channel.fd, bytes.data(), bytes.size()) &&
            readFrame(channel.fd, &type, &length, &body) == ReadResult::kOk) {
            FrameReader reader(body.data(), body.size());
            uint64_t transaction = 0;
            uint64_t framesBefore = 0;
            binder_status_t status = STATUS_OK;
            AParcel received;
            if (type == kReply && reader.u64(&transaction) && transaction == kTransaction &&
                reader.u64(&framesBefore) && readReply(&reader, &status, &received)) {
                std::unique_lock<std::mutex> lock(mutex_);
                framesHandledCv_.wait(lock, [&] {
                    return closed_ || framesHandled_ >= framesBefore;
                });
                lock.unlock();
                const bool ownObjects = std::any_of(
                        received.peerObjects.begin(), received.peerObjects.end(),
                        [](const auto& entry) { return entry.second->asSocketObject() == nullptr; });
                if (ownObjects && !sendAck(channel.fd)) {
                    close(!exiting());
                    return STATUS_DEAD_OBJECT;
                }
                if (status == STATUS_OK) handOver(&received, reply);
                return status;
            }
            logError("%s: malformed frame (type %u, %u bytes) on a channel from pid %d; closing",
                     label_.c_str(), type, length, static_cast<int>(peerPid_));
        }
        // The service is gone (or broke the stream): that is a death, as on the shared stream.
        close(!exiting());
        return STATUS_DEAD_OBJECT;
    }

    static bool sendAck(int fd) {
        FrameWriter ack(kAck);
        const std::vector<uint8_t>& bytes = ack.finish();
        return writeFull(fd, bytes.data(), bytes.size());
    }

    // Service side.
    // Each admitted channel is dropped exactly once, when its thread stops serving it.
    bool admitChannel(const std::shared_ptr<Channel>& channel) {
        const uint32_t threadLimit = threadPoolThreadLimit();
        std::lock_guard<std::mutex> lock(mutex_);
        if (closed_ || channels_.size() >= kMaxChannels) return false;
        if (gChannelThreads.fetch_add(1) >= threadLimit) {
            gChannelThreads.fetch_sub(1);
            return false;
        }
        channels_.insert(channel);
        return true;
    }

    void dropChannel(const std::shared_ptr<Channel>& channel) {
        gChannelThreads.fetch_sub(1);
        std::lock_guard<std::mutex> lock(mutex_);
        channels_.erase(channel);
    }

    // Serves two-way calls from one channel until the client closes it. Anything else on it
    // breaks the connection.
    void serveChannel(const std::shared_ptr<Channel>& channel) {
        std::vector<uint8_t> body;
        const std::chrono::milliseconds frameTimeout =
                accepted_ ? socketLimits().frameTimeout : std::chrono::milliseconds(0);
        for (;;) {
            uint32_t type = 0;
            uint32_t length = 0;
            trimBuffer(&body);
            const ReadResult read =
                    readFrame(channel->fd, &type, &length, &body, nullptr, kMaxFrame, frameTimeout);
            // A client drops channels it no longer needs; only the shared stream ending is a death.
            if (read == ReadResult::kClosed) return;
            if (read == ReadResult::kTimedOut) {
                logError("%s: pid %d left a frame unfinished on a channel for %lld ms; closing",
                         label_.c_str(), static_cast<int>(peerPid_),
                         static_cast<long long>(frameTimeout.count()));
                close(!exiting());
                return;
            }
            FrameReader reader(body.data(), body.size());
            AParcel sent;
            if (read == ReadResult::kOk && type == kTransact &&
                serveChannelCall(channel->fd, &reader, &sent) &&
                (!handsBackPeerObjects(sent) || readAck(channel->fd))) {
                continue;
            }
            logError("%s: malformed frame (type %u, %u bytes) on a channel from pid %d; closing",
                     label_.c_str(), type, length, static_cast<int>(peerPid_));
            close(!exiting());
            return;
        }
    }

    // The objects of the peer in a reply sent to it, which it resolves through its exports.
    bool handsBackPeerObjects(const AParcel& reply) const {
        auto ours = [this](const std::shared_ptr<RemoteObject>& object) {
            const SocketObject* socket = object->asSocketObject();
            return socket != nullptr && socket->connection() == this;
        };
        for (const auto& entry : reply.peerObjects) {
            if (ours(entry.second)) return true;
        }
        return std::any_of(reply.objects.begin(), reply.objects.end(), ours);
    }

    bool readAck(int fd) {
        uint32_t type = 0;
        uint32_t length = 0;
        std::vector<uint8_t> body;
        return readFrame(fd, &type, &length, &body) == ReadResult::kOk && type == kAck &&
               length == 0;
    }

    // *sent keeps the reply, and the references it holds, for the caller.
    bool serveChannelCall(int fd, FrameReader* reader, AParcel* sent) {
        Incoming call;
        if (!readTransact(reader, &call) || (call.flags & FLAG_ONEWAY) != 0) return false;
        std::shared_ptr<Export> target = findExport(call.ref);
        binder_status_t status = serve(target.get(), call.code, *call.request, sent);
        // Dropping the request first lets its releases reach the peer before the reply.
        call.request.reset();
        // Only objects that went out need holding.
        if (sendReply(call.transaction, status, *sent, fd) != STATUS_OK) *sent = AParcel();
        return true;
    }

    std::shared_ptr<Export> findExport(uint64_t ref) {
        std::lock_guard<std::mutex> lock(mutex_);
        auto it = exports_.find(ref);
        return it == exports_.end() ? nullptr : it->second;
    }


    // Caller holds mutex_.
    std::shared_ptr<SocketObject> importLocked(uint64_t ref, std::string descriptor) {
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

    binder_status_t encodeObjects(const AParcel& parcel, FrameWriter* frame) {
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

    bool decodeObjects(FrameReader* reader, AParcel* out) {
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

    bool sendFrame(const std::vector<uint8_t>& frame) {
        std::lock_guard<std::mutex> lock(writeMutex_);
        ++framesSent_;
        return writeFull(fd_, frame.data(), frame.size());
    }

    // After a failed write: a send timeout (SO_SNDTIMEO of accepted sockets) means the peer
    // stopped reading.
    void logStalledPeer() {
        if (errno != EAGAIN && errno != EWOULDBLOCK) return;
        logError("%s: pid %d took nothing we wrote for %lld ms; dropping the connection",
                 label_.c_str(), static_cast<int>(peerPid_),
                 static_cast<long long>(socketLimits().replyTimeout.count()));
    }

    // Server side: a fresh socket's peer takes its HELLO (nothing of ours is left unread) or
    // speaks within the deadline; one that does neither is no client.
    bool helloTaken() {
        const auto deadline = std::chrono::steady_clock::now() + socketLimits().handshakeTimeout;
        for (;;) {
            int unread = 0;
            if (ioctl(fd_, SIOCOUTQ, &unread) != 0 || unread == 0) return true;
            if (std::chrono::steady_clock::now() >= deadline) return false;
            // The kernel tells nobody when the peer reads: look again shortly.
            pollfd pfd{fd_, POLLIN, 0};
            if (poll(&pfd, 1, 10) > 0) return true;
        }
    }

    void readLoop() {
        std::vector<uint8_t> body;
        bool first = true;
        const std::chrono::milliseconds frameTimeout =
                accepted_ ? socketLimits().frameTimeout : std::chrono::milliseconds(0);
        if (accepted_ && !helloTaken()) {
            logError("%s: pid %d did not take its HELLO within %lld ms; dropping the socket",
                     label_.c_str(), static_cast<int>(peerPid_),
                     static_cast<long long>(socketLimits().handshakeTimeout.count()));
            close(!exiting());
            return;
        }
        for (;;) {
            uint32_t length = 0;
            uint32_t type = 0;
            trimBuffer(&body);
            const ReadResult read =
                    readFrame(fd_, &type, &length, &body, nullptr, kMaxFrame, frameTimeout);
            if (read == ReadResult::kTooLarge) {
                logError("%s: frame of %u bytes from pid %d exceeds the limit; closing",
                         label_.c_str(), length, static_cast<int>(peerPid_));
                break;
            }
            if (read == ReadResult::kTimedOut) {
                logError("%s: pid %d left a frame unfinished for %lld ms; closing", label_.c_str(),
                         static_cast<int>(peerPid_), static_cast<long long>(frameTimeout.count()));
                break;
            }
            if (read != ReadResult::kOk) break;
            FrameReader reader(body.data(), body.size());
            if (first && type == kJoin && key_ != 0) {
                if (becomeChannel(&reader)) return;
                logError("%s: refused a channel from pid %d; closing", label_.c_str(),
                         static_cast<int>(peerPid_));
                break;
            }
            first = false;
            if (!handleFrame(type, &reader)) {
                if (!dropped_) {
                    logError("%s: malformed frame (type %u, %u bytes) from pid %d; closing",
                             label_.c_str(), type, length, static_cast<int>(peerPid_));
                }
                break;
            }
            {
                std::lock_guard<std::mutex> lock(mutex_);
                ++framesHandled_;
            }
            framesHandledCv_.notify_all();
        }
        close(!exiting());
    }

    bool handleFrame(uint32_t type, FrameReader* reader) {
        switch (type) {
            case kTransact:
                return handleTransact(reader);
            case kReply:
                return handleReply(reader);
            case kRelease:
                return handleRelease(reader);
            default:
                return false;
        }
    }

    struct Incoming {
        uint64_t transaction = 0;
        uint64_t ref = 0;
        uint32_t code = 0;
        uint32_t flags = 0;
        std::shared_ptr<AParcel> request = std::make_shared<AParcel>();
    };

    // The body of a TRANSACT frame.
    bool readTransact(FrameReader* reader, Incoming* call) {
        return reader->u64(&call->transaction) && reader->u64(&call->ref) &&
               reader->u32(&call->code) && reader->u32(&call->flags) &&
               decodeObjects(reader, call->request.get()) &&
               reader->bytes(&call->request->data) && reader->atEnd();
    }

    // A call of this peer waiting for a binder thread or being served.
    class QueuedCall {
      public:
        QueuedCall(std::shared_ptr<Connection> c, size_t bytes)
            : connection_(std::move(c)), bytes_(bytes) {}
        QueuedCall(QueuedCall&& other) noexcept
            : connection_(std::move(other.connection_)), bytes_(other.bytes_) {}
        QueuedCall(const QueuedCall&) = delete;
        QueuedCall& operator=(const QueuedCall&) = delete;
        QueuedCall& operator=(QueuedCall&&) = delete;
        ~QueuedCall() {
            if (connection_ == nullptr) return;
            connection_->queuedCalls_.fetch_sub(1);
            connection_->queuedBytes_.fetch_sub(bytes_);
        }

      private:
        std::shared_ptr<Connection> connection_;
        size_t bytes_;
    };

    // Server side: a peer that sends calls faster than they are served (or never reads the
    // replies) is dropped rather than queued without end. Null when it is dropped.
    std::optional<QueuedCall> admitCall(size_t bytes) {
        const size_t calls = queuedCalls_.fetch_add(1) + 1;
        const size_t total = queuedBytes_.fetch_add(bytes) + bytes;
        QueuedCall queued(shared_from_this(), bytes);
        const SocketLimits& limits = socketLimits();
        if (!accepted_ || (calls <= limits.maxQueuedCalls && total <= limits.maxQueuedBytes)) {
            return std::optional<QueuedCall>(std::move(queued));
        }
        dropped_ = true;
        logError(
                "%s: pid %d has %zu calls (%zu bytes) waiting (limits %zu calls, %zu bytes); "
                "dropping the connection",
                label_.c_str(), static_cast<int>(peerPid_), calls, total, limits.maxQueuedCalls,
                limits.maxQueuedBytes);
        return std::nullopt;
    }

    bool handleTransact(FrameReader* reader) {
        Incoming call;
        if (!readTransact(reader, &call)) return false;
        std::optional<QueuedCall> queued = admitCall(call.request->data.size());
        if (!queued) return false;
        std::shared_ptr<Export> target = findExport(call.ref);
        if ((call.flags & FLAG_ONEWAY) != 0) {
            if (target == nullptr) return true;  // nothing to deliver to, nobody to tell
            target->oneway->post([self = shared_from_this(), target, code = call.code,
                                  request = std::move(call.request),
                                  queued = std::make_shared<QueuedCall>(std::move(*queued))] {
                if (self->dropped_) return;
                AParcel ignored;
                self->serve(target.get(), code, *request, &ignored);
            });
            return true;
        }
        postToThreadPool([self = shared_from_this(), target, call = std::move(call),
                          queued = std::make_shared<QueuedCall>(std::move(*queued))]() mutable {
            // Calls of a peer dropped for flooding are not served.
            if (self->dropped_) return;
            AParcel reply;
            binder_status_t status = self->serve(target.get(), call.code, *call.request, &reply);
            // Dropping the request first lets its releases reach the peer before the reply.
            call.request.reset();
            self->sendReply(call.transaction, status, reply);
        });
        return true;
    }

    binder_status_t serve(const Export* target, transaction_code_t code, const AParcel& request,
                          AParcel* reply) {
        if (target == nullptr || !target->object->isAlive()) return STATUS_DEAD_OBJECT;
        return serveLocal(target->local.get(), code, request, reply, peerPid_, peerUid_);
    }

    // channelFd < 0: on the shared stream. Returns the status the peer was sent.
    binder_status_t sendReply(uint64_t transaction, binder_status_t status, const AParcel& reply,
                   int channelFd = -1) {
        if (status == STATUS_OK && reply.data.size() > kMaxParcelBytes) {
            status = STATUS_FAILED_TRANSACTION;
        }
        FrameWriter frame(kReply);
        frame.reserve(64 + reply.data.size());
        frame.u64(transaction);
        if (channelFd >= 0) {
            std::lock_guard<std::mutex> lock(writeMutex_);
            frame.u64(framesSent_);
        }
        const size_t statusAt = frame.bodySize();
        frame.i32(STATUS_OK);
        if (status == STATUS_OK) status = encodeObjects(reply, &frame);
        if (status == STATUS_OK) {
            frame.u32(static_cast<uint32_t>(reply.data.size()));
            frame.raw(reply.data.data(), reply.data.size());
        } else {
            frame.truncate(statusAt);
            frame.i32(status);
            frame.u32(0);
            frame.u32(0);
        }
        const std::vector<uint8_t>& bytes = frame.finish();
        const bool sent = channelFd >= 0 ? writeFull(channelFd, bytes.data(), bytes.size())
                                         : sendFrame(bytes);
        if (!sent) {
            logStalledPeer();
            close(!exiting());
        }
        return status;
    }

    // The rest of a REPLY after its transaction id.
    bool readReply(FrameReader* reader, binder_status_t* status, AParcel* reply) {
        int32_t value = 0;
        if (!reader->i32(&value)) return false;
        *status = value;
        return decodeObjects(reader, reply) && reader->bytes(&reply->data) && reader->atEnd() &&
               (value == STATUS_OK || reply->data.empty());
    }

    bool handleReply(FrameReader* reader) {
        uint64_t transaction = 0;
        if (!reader->u64(&transaction)) return false;
        std::shared_ptr<Waiter> waiter;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            auto it = pending_.find(transaction);
            if (it == pending_.end()) return false;
            waiter = std::move(it->second);
            pending_.erase(it);
        }
        AParcel reply;
        binder_status_t status = STATUS_OK;
        const bool ok = readReply(reader, &status, &reply);
        std::lock_guard<std::mutex> lock(mutex_);
        waiter->done = true;
        // A broken reply still ends the call; the connection closes right after.
        waiter->status = ok ? status : STATUS_DEAD_OBJECT;
        if (ok) std::swap(waiter->reply, reply);
        waiter->cv.notify_all();
        return ok;
    }

    bool handleRelease(FrameReader* reader) {
        uint64_t ref = 0;
        uint32_t count = 0;
        if (!reader->u64(&ref) || !reader->u32(&count) || !reader->atEnd()) return false;
        std::shared_ptr<Export> dropped;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            auto it = exports_.find(ref);
            if (it == exports_.end() || count == 0 || count > it->second->count) return false;
            it->second->count -= count;
            if (it->second->count == 0) {
                dropped = std::move(it->second);
                exports_.erase(it);
            }
        }
        return true;
    }

    // Handed over to a channel when this socket turns out to be one.
    std::atomic<int> fd_;
    // Server side (see markAccepted); set before the reader starts.
    bool accepted_ = false;
    std::atomic<size_t> queuedCalls_{0};
    std::atomic<size_t> queuedBytes_{0};
    // Dropped for exceeding a limit: what it queued is not served.
    std::atomic<bool> dropped_{false};
    const std::string label_;
    pid_t peerPid_ = 0;
    uid_t peerUid_ = 0;
    mutable std::mutex mutex_;
    bool closed_ = false;
    bool closeFinished_ = false;
    std::thread::id closer_;
    std::condition_variable closeDone_;
    std::map<uint64_t, std::shared_ptr<Export>> exports_;
    std::unordered_map<uint64_t, std::weak_ptr<SocketObject>> imports_;
    std::unordered_map<uint64_t, std::shared_ptr<Waiter>> pending_;
    uint64_t nextTransaction_ = 1;
    // The service a client connected for; kept for the connection's life.
    std::shared_ptr<SocketObject> root_;
    // Names this connection to its channels (0: none). Set once, before the reader starts.
    uint64_t key_ = 0;
    // Client side: where to open channels, and how many to open at most.
    std::string path_;
    size_t channelLimit_ = kMaxChannels;
    // Every open channel (both sides), so that closing reaches callers blocked on one.
    std::set<std::shared_ptr<Channel>> channels_;
    std::vector<std::shared_ptr<Channel>> idleChannels_;
    // Frames sent on and handled from the shared stream (HELLO included), which orders channel
    // replies after them.
    uint64_t framesHandled_ = 0;
    std::condition_variable framesHandledCv_;
    uint64_t framesSent_ = 0;  // guarded by writeMutex_
    std::mutex writeMutex_;
};

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

namespace {

// Accepts connections for one published instance.
class Listener {
  public:
    Listener(std::string instance, std::string path, std::shared_ptr<RemoteObject> service)
        : instance_(std::move(instance)), path_(std::move(path)), service_(std::move(service)) {}
    ~Listener() { stop(false); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    bool start() {
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
            logError("%s: cannot listen on %s: %s", instance_.c_str(), path_.c_str(),
                     strerror(errno));
            return false;
        }
        device_ = st.st_dev;
        inode_ = st.st_ino;
        thread_ = std::thread([this] { run(); });
        return true;
    }

    void stop(bool closeConnections) {
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
        const bool notify = !exiting();
        for (auto& weak : accepted) {
            if (auto connection = weak.lock()) connection->close(notify);
        }
    }

  private:
    // The pid listening on path_ (-1 when it cannot be told), 0 when nobody answers there.
    pid_t liveOwner() const {
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
    struct Slot {
        explicit Slot(std::shared_ptr<std::atomic<size_t>> open) : open_(std::move(open)) {
            ++*open_;
        }
        ~Slot() { --*open_; }
        Slot(const Slot&) = delete;
        Slot& operator=(const Slot&) = delete;
        const std::shared_ptr<std::atomic<size_t>> open_;
    };

    // Refusals come in bursts: one line a second says how many.
    __attribute__((format(printf, 2, 3))) void logRefusal(const char* format, ...) {
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
    bool pauseOrStop(std::chrono::milliseconds delay) {
        pollfd wake{wake_, POLLIN, 0};
        const int ready = poll(&wake, 1, static_cast<int>(delay.count()));
        return ready > 0 && wake.revents != 0;
    }

    // The accept loop never gives up: out of descriptors or memory it refuses or waits, and
    // accepts again once they are back.
    void run() {
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

    void serveAccepted(int fd) {
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
        const timeval sendTimeout{
                static_cast<time_t>(limits.replyTimeout.count() / 1000),
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

    const std::string instance_;
    const std::string path_;
    const std::shared_ptr<RemoteObject> service_;
    int fd_ = -1;
    int wake_ = -1;
    dev_t device_ = 0;
    ino_t inode_ = 0;
    std::thread thread_;
    std::mutex mutex_;
    std::vector<std::weak_ptr<Connection>> accepted_;
    // Sockets of this listener whose reader still runs (channels included).
    const std::shared_ptr<std::atomic<size_t>> open_ = std::make_shared<std::atomic<size_t>>(0);
    // Accept thread only.
    size_t refusedSinceLog_ = 0;
    std::chrono::steady_clock::time_point lastRefusalLog_;
};

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

void stopEverythingAtExit() {
    SocketState& s = state();
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

bool socketModeEnabled() {
    return !socketDirectory().empty();
}

bool publishService(const std::string& instance, const std::shared_ptr<RemoteObject>& service) {
    const std::string dir = socketDirectory();
    if (dir.empty()) return true;
    const std::string path = socketPath(dir, instance);
    if (path.empty()) return false;
    gInUse = true;
    state();  // registers the exit handler before any thread starts
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
    state();
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
        SocketState& s = state();
        std::lock_guard<std::mutex> lock(s.mutex);
        connections.assign(s.connections.begin(), s.connections.end());
    }
    const bool notify = !exiting();
    for (auto& connection : connections) connection->close(notify);
}

}  // namespace binder_impl
