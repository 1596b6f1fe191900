#include "socket_limits.h"

#include <cerrno>
#include <cstdlib>

#include "host_dir.h"

namespace binder_impl {
namespace {

// A positive integer from the environment, else fallback.
unsigned long long fromEnvironment(const char* name, unsigned long long fallback) {
    const char* text = std::getenv(name);
    if (text == nullptr || *text == '\0') return fallback;
    char* end = nullptr;
    errno = 0;
    const unsigned long long value = std::strtoull(text, &end, 10);
    if (errno != 0 || *end != '\0' || value == 0 || text[0] == '-') {
        logError("%s=%s is not a positive integer; using %llu", name, text, fallback);
        return fallback;
    }
    return value;
}

std::chrono::milliseconds millisFromEnvironment(const char* name, long long fallback) {
    return std::chrono::milliseconds(
            fromEnvironment(name, static_cast<unsigned long long>(fallback)));
}

}  // namespace

const SocketLimits& socketLimits() {
    static const SocketLimits limits{
            static_cast<size_t>(fromEnvironment("BINDER_HOST_MAX_CONNECTIONS", 512)),
            millisFromEnvironment("BINDER_HOST_HANDSHAKE_TIMEOUT_MS", 5000),
            millisFromEnvironment("BINDER_HOST_FRAME_TIMEOUT_MS", 10000),
            static_cast<size_t>(fromEnvironment("BINDER_HOST_MAX_QUEUED_CALLS", 1024)),
            static_cast<size_t>(fromEnvironment("BINDER_HOST_MAX_QUEUED_BYTES", 64ull << 20)),
            millisFromEnvironment("BINDER_HOST_REPLY_TIMEOUT_MS", 5000),
    };
    return limits;
}

}  // namespace binder_impl
