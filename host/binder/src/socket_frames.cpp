#include "socket_frames.h"

#include <errno.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>

namespace binder_impl {

void FrameWriter::str(const std::string& s) {
    u32(static_cast<uint32_t>(s.size()));
    raw(s.data(), s.size());
}

void FrameWriter::raw(const void* data, size_t size) {
    const auto* p = static_cast<const uint8_t*>(data);
    bytes_.insert(bytes_.end(), p, p + size);
}

std::vector<uint8_t>& FrameWriter::finish() {
    const auto length = static_cast<uint32_t>(bodySize());
    memcpy(bytes_.data(), &length, 4);
    return bytes_;
}

bool FrameReader::str(std::string* s, size_t maxSize) {
    uint32_t size = 0;
    if (!u32(&size) || size > maxSize || size > remaining()) return false;
    s->assign(reinterpret_cast<const char*>(data_ + offset_), size);
    offset_ += size;
    return true;
}

bool FrameReader::bytes(std::vector<uint8_t>* out) {
    uint32_t size = 0;
    if (!u32(&size) || size > remaining()) return false;
    out->assign(data_ + offset_, data_ + offset_ + size);
    offset_ += size;
    return true;
}

bool FrameReader::raw(void* out, size_t size) {
    if (remaining() < size) return false;
    memcpy(out, data_ + offset_, size);
    offset_ += size;
    return true;
}

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

namespace {

// A body grows by this much at most ahead of the bytes that arrived: a length alone costs
// nothing.
constexpr size_t kBodyChunk = 64 * 1024;

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

}  // namespace

ReadResult readFrame(int fd, uint32_t* type, uint32_t* length, std::vector<uint8_t>* body,
                     const std::chrono::steady_clock::time_point* deadline, uint32_t maxLength,
                     std::chrono::milliseconds frameTimeout) {
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

void trimBuffer(std::vector<uint8_t>* body) {
    if (body->capacity() > 16 * kBodyChunk) std::vector<uint8_t>().swap(*body);
}

bool readHello(int fd, uint64_t* ref, std::string* descriptor, uint64_t* key) {
    const auto deadline = std::chrono::steady_clock::now() + kHelloTimeout;
    uint32_t type = 0;
    uint32_t length = 0;
    std::vector<uint8_t> body;
    if (readFrame(fd, &type, &length, &body, &deadline, kMaxDescriptor + 20) != ReadResult::kOk ||
        type != kHello) {
        return false;
    }
    FrameReader reader(body.data(), body.size());
    if (!reader.u64(ref) || !reader.str(descriptor, kMaxDescriptor)) return false;
    *key = 0;
    return reader.atEnd() || (reader.u64(key) && reader.atEnd());
}

}  // namespace binder_impl
