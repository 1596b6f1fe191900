#pragma once

#include <android/binder_parcel.h>
#include <android/binder_parcel_utils.h>
#include <android/log.h>
#include <sys/socket.h>

#include <cstdint>
#include <cstdio>
#include <cerrno>
#include <cstdlib>
#include <vector>

namespace vexal::fuzz {

// A mismatch the sanitizers cannot see is still a finding: stop so libFuzzer keeps the input.
#define FUZZ_CHECK(cond)                                                              \
    do {                                                                              \
        if (!(cond)) {                                                                \
            std::fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond); \
            std::abort();                                                             \
        }                                                                             \
    } while (0)

// Library logging is pure cost at millions of inputs per minute.
inline void quietLogs() {
    __android_log_set_minimum_priority(ANDROID_LOG_FATAL);
}

inline std::vector<uint8_t> parcelBytes(const AParcel* parcel) {
    std::vector<uint8_t> bytes(static_cast<size_t>(AParcel_getDataSize(parcel)));
    FUZZ_CHECK(AParcel_marshal(parcel, bytes.data(), 0, bytes.size()) == STATUS_OK);
    return bytes;
}

// libFuzzer's timeout alarm interrupts blocking calls, so every socket call retries on EINTR.
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

inline void sendAll(int fd, const void* data, size_t size) {
    const auto* p = static_cast<const uint8_t*>(data);
    while (size > 0) {
        const ssize_t n = send(fd, p, size, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;  // the other side already closed on a bad frame
        p += n;
        size -= static_cast<size_t>(n);
    }
}

}  // namespace vexal::fuzz
