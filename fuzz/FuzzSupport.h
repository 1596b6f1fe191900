#pragma once

#include <android/binder_parcel.h>
#include <android/binder_parcel_utils.h>
#include <android/log.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "../tests/kit/RawSocket.h"

namespace vexal::fuzz {

// A mismatch the sanitizers cannot see is still a finding: stop so libFuzzer keeps the input.
#define FUZZ_CHECK(cond)                                                                  \
    do {                                                                                  \
        if (!(cond)) {                                                                    \
            std::fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond); \
            std::abort();                                                                 \
        }                                                                                 \
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

// libFuzzer's timeout alarm interrupts blocking calls; these retry on EINTR.
using vexal::testing::recvExact;

inline void sendAll(int fd, const void* data, size_t size) {
    // The other side may already have closed on a bad frame.
    (void)vexal::testing::sendExact(fd, data, size);
}

}  // namespace vexal::fuzz
