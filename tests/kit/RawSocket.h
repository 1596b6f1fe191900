#pragma once

// Plain Unix-socket I/O for test and benchmark programs that talk to a service socket directly:
// a misbehaving peer, a stranger process, a raw baseline. Header-only so that programs outside
// the test build (benchmarks, fuzzers) use it too.
#include <errno.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace vexal::testing {

// Blocks until size bytes arrived; false if the stream ended first.
inline bool recvExact(int fd, void* out, size_t size) {
    auto* p = static_cast<uint8_t*>(out);
    while (size > 0) {
        const ssize_t n = recv(fd, p, size, 0);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        p += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

// False if the peer closed before everything was written.
inline bool sendExact(int fd, const void* data, size_t size) {
    const auto* p = static_cast<const uint8_t*>(data);
    while (size > 0) {
        const ssize_t n = send(fd, p, size, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        p += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

// A connected stream socket to path, or -1.
inline int connectUnix(const std::string& path) {
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    if (path.size() >= sizeof(addr.sun_path)) return -1;
    memcpy(addr.sun_path, path.c_str(), path.size() + 1);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return -1;
    if (connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

// A frame of the socket transport: its length field (the body's size unless told otherwise), its
// type, its body.
inline std::vector<uint8_t> rawFrame(uint32_t type, const std::vector<uint8_t>& body,
                                     uint32_t length) {
    std::vector<uint8_t> bytes(8 + body.size());
    memcpy(bytes.data(), &length, 4);
    memcpy(bytes.data() + 4, &type, 4);
    if (!body.empty()) memcpy(bytes.data() + 8, body.data(), body.size());
    return bytes;
}
inline std::vector<uint8_t> rawFrame(uint32_t type, const std::vector<uint8_t>& body) {
    return rawFrame(type, body, static_cast<uint32_t>(body.size()));
}

// One whole frame; false if the peer closed first or said nothing for `wait`.
inline bool readRawFrame(int fd, uint32_t* type, std::vector<uint8_t>* body,
                         std::chrono::seconds wait = std::chrono::seconds(10)) {
    timeval tick{static_cast<time_t>(wait.count()), 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &tick, sizeof(tick));
    uint8_t header[8];
    if (!recvExact(fd, header, sizeof(header))) return false;
    uint32_t length = 0;
    memcpy(&length, header, 4);
    memcpy(type, header + 4, 4);
    body->resize(length);
    return recvExact(fd, body->data(), length);
}

// A connection to path whose first frame, of type hello, was read (its body into *body when
// given); -1, with the socket closed, when a step failed.
inline int connectGreeted(const std::string& path, uint32_t hello,
                          std::vector<uint8_t>* body = nullptr) {
    const int fd = connectUnix(path);
    uint32_t type = 0;
    std::vector<uint8_t> greeting;
    if (fd >= 0 && readRawFrame(fd, &type, &greeting) && type == hello) {
        if (body != nullptr) *body = std::move(greeting);
        return fd;
    }
    if (fd >= 0) close(fd);
    return -1;
}

// True once the peer closed fd (within 10 s); what it sent before is read and dropped.
inline bool closedByPeer(int fd) {
    timeval tick{0, 100000};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &tick, sizeof(tick));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    char buffer[256];
    while (std::chrono::steady_clock::now() < deadline) {
        const ssize_t n = recv(fd, buffer, sizeof(buffer), 0);
        if (n == 0 || (n < 0 && errno == ECONNRESET)) return true;
    }
    return false;
}

}  // namespace vexal::testing
