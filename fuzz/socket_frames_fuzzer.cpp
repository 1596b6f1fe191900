// The socket transport's frame reader, fed through a real connection to a published service: the
// fuzzer is a hostile client process writing arbitrary frames after the service's HELLO.
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <binder_host/service_control.h>

#include "FuzzSupport.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr char kInstance[] = "fuzz.frames";
std::string gSocketPath;

binder_status_t onTransact(AIBinder*, transaction_code_t code, const AParcel* in, AParcel* reply) {
    // Echo one int so replies carry data back over the connection.
    int32_t value = 0;
    if (AParcel_readInt32(in, &value) != STATUS_OK) value = static_cast<int32_t>(code);
    return AParcel_writeInt32(reply, value);
}

void* onCreate(void* args) {
    return args;
}
void onDestroy(void*) {}

int connectToService() {
    const int fd = vexal::testing::connectUnix(gSocketPath);
    FUZZ_CHECK(fd >= 0);
    return fd;
}

// Reads until the service closes the connection; a connection left open after our end closed
// would be a leak of a reader thread.
void drainUntilClosed(int fd) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    char buffer[4096];
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
        FUZZ_CHECK(left.count() > 0);
        pollfd pfd{fd, POLLIN, 0};
        if (poll(&pfd, 1, static_cast<int>(left.count())) <= 0) continue;
        const ssize_t n = recv(fd, buffer, sizeof(buffer), 0);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vexal::fuzz::quietLogs();
    // Calls from the other side and death notices come in on binder threads only.
    ABinderProcess_startThreadPool();
    char dirTemplate[] = "/tmp/vexal-fuzz-XXXXXX";
    FUZZ_CHECK(mkdtemp(dirTemplate) != nullptr);
    const std::string dir = dirTemplate;
    FUZZ_CHECK(binder_host::setHostDirectory(dir));
    static AIBinder_Class* clazz =
            AIBinder_Class_define("fuzz.IFrames", onCreate, onDestroy, onTransact);
    AIBinder* service = AIBinder_new(clazz, nullptr);
    FUZZ_CHECK(AServiceManager_addService(service, kInstance) == STATUS_OK);
    AIBinder_decStrong(service);
    gSocketPath = dir + "/" + kInstance + ".sock";
    FUZZ_CHECK(access(gSocketPath.c_str(), F_OK) == 0);
    // The socket and directory go when the run ends; the service keeps them until then.
    static const std::string cleanup = dir;
    std::atexit([] {
        unlink(gSocketPath.c_str());
        rmdir(cleanup.c_str());
    });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const int fd = connectToService();
    // The HELLO comes first; the service's ref in it is the same on every connection.
    uint8_t header[8];
    FUZZ_CHECK(vexal::fuzz::recvExact(fd, header, sizeof(header)));
    uint32_t length = 0;
    memcpy(&length, header, 4);
    FUZZ_CHECK(length < 4096);
    std::string body(length, '\0');
    FUZZ_CHECK(vexal::fuzz::recvExact(fd, body.data(), length));

    vexal::fuzz::sendAll(fd, data, size);
    shutdown(fd, SHUT_WR);
    drainUntilClosed(fd);
    close(fd);
    return 0;
}
