// Connection: calls over the shared stream, both ways, and the reader thread that serves it.
#include <errno.h>
#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>

#include <chrono>
#include <utility>

#include "binder_internal.h"
#include "host_dir.h"
#include "socket_connection.h"
#include "socket_limits.h"
#include "socket_state.h"

namespace binder_impl {

class Connection::QueuedCall {
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

binder_status_t Connection::call(uint64_t ref, transaction_code_t code, const AParcel& request,
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
        close(!socketsExiting());
        return STATUS_DEAD_OBJECT;
    }
    if (oneway) return STATUS_OK;
    std::unique_lock<std::mutex> lock(mutex_);
    waiter->cv.wait(lock, [&waiter] { return waiter->done; });
    if (waiter->status != STATUS_OK) return waiter->status;
    handOver(&waiter->reply, reply);
    return STATUS_OK;
}

binder_status_t Connection::encodeTransact(uint64_t transaction, uint64_t ref,
                                           transaction_code_t code, binder_flags_t flags,
                                           const AParcel& request, FrameWriter* frame) {
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

// The body of a TRANSACT frame.
bool Connection::readTransact(FrameReader* reader, Incoming* call) {
    return reader->u64(&call->transaction) && reader->u64(&call->ref) && reader->u32(&call->code) &&
           reader->u32(&call->flags) && decodeObjects(reader, call->request.get()) &&
           reader->bytes(&call->request->data) && reader->atEnd();
}

// The rest of a REPLY after its transaction id.
bool Connection::readReply(FrameReader* reader, binder_status_t* status, AParcel* reply) {
    int32_t value = 0;
    if (!reader->i32(&value)) return false;
    *status = value;
    return decodeObjects(reader, reply) && reader->bytes(&reply->data) && reader->atEnd() &&
           (value == STATUS_OK || reply->data.empty());
}

// Server side: a fresh socket's peer takes its HELLO (nothing of ours is left unread) or
// speaks within the deadline; one that does neither is no client.
bool Connection::helloTaken() {
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

void Connection::readLoop() {
    std::vector<uint8_t> body;
    bool first = true;
    const std::chrono::milliseconds frameTimeout =
            accepted_ ? socketLimits().frameTimeout : std::chrono::milliseconds(0);
    if (accepted_ && !helloTaken()) {
        logError("%s: pid %d did not take its HELLO within %lld ms; dropping the socket",
                 label_.c_str(), static_cast<int>(peerPid_),
                 static_cast<long long>(socketLimits().handshakeTimeout.count()));
        close(!socketsExiting());
        return;
    }
    for (;;) {
        uint32_t length = 0;
        uint32_t type = 0;
        trimBuffer(&body);
        const ReadResult read =
                readFrame(fd_, &type, &length, &body, nullptr, kMaxFrame, frameTimeout);
        if (read == ReadResult::kTooLarge) {
            logError("%s: frame of %u bytes from pid %d exceeds the limit; closing", label_.c_str(),
                     length, static_cast<int>(peerPid_));
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
    close(!socketsExiting());
}

bool Connection::handleFrame(uint32_t type, FrameReader* reader) {
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

// Server side: a peer that sends calls faster than they are served (or never reads the
// replies) is dropped rather than queued without end. Null when it is dropped.
std::optional<Connection::QueuedCall> Connection::admitCall(size_t bytes) {
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

bool Connection::handleTransact(FrameReader* reader) {
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

binder_status_t Connection::serve(const Export* target, transaction_code_t code,
                                  const AParcel& request, AParcel* reply) {
    if (target == nullptr || !target->object->isAlive()) return STATUS_DEAD_OBJECT;
    return serveLocal(target->local.get(), code, request, reply, peerPid_, peerUid_);
}

// channelFd < 0: on the shared stream. Returns the status the peer was sent.
binder_status_t Connection::sendReply(uint64_t transaction, binder_status_t status,
                                      const AParcel& reply, int channelFd) {
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
    const bool sent =
            channelFd >= 0 ? writeFull(channelFd, bytes.data(), bytes.size()) : sendFrame(bytes);
    if (!sent) {
        logStalledPeer();
        close(!socketsExiting());
    }
    return status;
}

bool Connection::handleReply(FrameReader* reader) {
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

bool Connection::handleRelease(FrameReader* reader) {
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

}  // namespace binder_impl
