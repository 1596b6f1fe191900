#include "socket_channel.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <mutex>
#include <random>

#include "host_dir.h"
#include "process.h"
#include "socket_connection.h"
#include "socket_frames.h"
#include "socket_limits.h"
#include "socket_state.h"

namespace binder_impl {
namespace {

// Service side: threads serving channels, over all connections of this process.
std::atomic<uint32_t> gChannelThreads{0};

std::shared_ptr<Channel> openChannel(const std::string& path, uint64_t key) {
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
    if (readFrame(fd, &type, &length, &body, &deadline, 0) != ReadResult::kOk || type != kJoined) {
        return nullptr;
    }
    return channel;
}

bool sendAck(int fd) {
    FrameWriter ack(kAck);
    const std::vector<uint8_t>& bytes = ack.finish();
    return writeFull(fd, bytes.data(), bytes.size());
}

bool readAck(int fd) {
    uint32_t type = 0;
    uint32_t length = 0;
    std::vector<uint8_t> body;
    return readFrame(fd, &type, &length, &body) == ReadResult::kOk && type == kAck && length == 0;
}

}  // namespace

Channel::~Channel() {
    ::close(fd);
}

uint64_t newChannelKey() {
    static std::mutex mutex;
    static std::random_device device;
    std::lock_guard<std::mutex> lock(mutex);
    uint64_t key = 0;
    while (key == 0) key = (uint64_t{device()} << 32) | device();
    return key;
}

// Service side, on the reader of a fresh socket whose first frame is JOIN: the socket joins
// the connection that key belongs to and this thread serves its calls. False if refused.
bool Connection::becomeChannel(FrameReader* reader) {
    uint64_t key = 0;
    if (!reader->u64(&key) || !reader->atEnd() || key == 0) return false;
    std::shared_ptr<Connection> owner;
    {
        SocketState& s = socketState();
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

// Client side: an idle channel, a new one, or null to call over the shared stream.
std::shared_ptr<Channel> Connection::takeChannel() {
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

void Connection::giveBackChannel(std::shared_ptr<Channel> channel, binder_status_t status) {
    std::lock_guard<std::mutex> lock(mutex_);
    const bool keep =
            !closed_ && status != STATUS_DEAD_OBJECT && idleChannels_.size() < kMaxIdleChannels;
    if (keep) {
        idleChannels_.push_back(std::move(channel));
    } else {
        channels_.erase(channel);
    }
}

// The caller writes its TRANSACT and reads the REPLY on its own thread.
binder_status_t Connection::callOnChannel(const Channel& channel, uint64_t ref,
                                          transaction_code_t code, const AParcel& request,
                                          binder_flags_t flags, AParcel* reply) {
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
            framesHandledCv_.wait(lock, [&] { return closed_ || framesHandled_ >= framesBefore; });
            lock.unlock();
            const bool ownObjects = std::any_of(
                    received.peerObjects.begin(), received.peerObjects.end(),
                    [](const auto& entry) { return entry.second->asSocketObject() == nullptr; });
            if (ownObjects && !sendAck(channel.fd)) {
                close(!socketsExiting());
                return STATUS_DEAD_OBJECT;
            }
            if (status == STATUS_OK) handOver(&received, reply);
            return status;
        }
        logError("%s: malformed frame (type %u, %u bytes) on a channel from pid %d; closing",
                 label_.c_str(), type, length, static_cast<int>(peerPid_));
    }
    // The service is gone (or broke the stream): that is a death, as on the shared stream.
    close(!socketsExiting());
    return STATUS_DEAD_OBJECT;
}

// Service side.
// Each admitted channel is dropped exactly once, when its thread stops serving it.
bool Connection::admitChannel(const std::shared_ptr<Channel>& channel) {
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

void Connection::dropChannel(const std::shared_ptr<Channel>& channel) {
    gChannelThreads.fetch_sub(1);
    std::lock_guard<std::mutex> lock(mutex_);
    channels_.erase(channel);
}

// Serves two-way calls from one channel until the client closes it. Anything else on it
// breaks the connection.
void Connection::serveChannel(const std::shared_ptr<Channel>& channel) {
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
            close(!socketsExiting());
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
        close(!socketsExiting());
        return;
    }
}

// The objects of the peer in a reply sent to it, which it resolves through its exports.
bool Connection::handsBackPeerObjects(const AParcel& reply) const {
    auto ours = [this](const std::shared_ptr<RemoteObject>& object) {
        const SocketObject* socket = object->asSocketObject();
        return socket != nullptr && socket->connection() == this;
    };
    for (const auto& entry : reply.peerObjects) {
        if (ours(entry.second)) return true;
    }
    return std::any_of(reply.objects.begin(), reply.objects.end(), ours);
}

// *sent keeps the reply, and the references it holds, for the caller.
bool Connection::serveChannelCall(int fd, FrameReader* reader, AParcel* sent) {
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

}  // namespace binder_impl
