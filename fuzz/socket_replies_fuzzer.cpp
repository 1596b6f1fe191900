// The client half of the socket transport's frame reader: the fuzzer plays a service process that
// answers the connection with arbitrary HELLO bytes, then arbitrary frames after the first call.
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <fuzzer/FuzzedDataProvider.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <binder_host/service_control.h>

#include "FuzzSupport.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

namespace {

constexpr char kInstance[] = "fuzz.peer";
constexpr char kDescriptor[] = "fuzz.IPeer";
int gListener = -1;
std::string gSocketPath;
AIBinder_Class* gClass = nullptr;

binder_status_t onTransact(AIBinder*, transaction_code_t, const AParcel*, AParcel*) {
    return STATUS_OK;
}
void* onCreate(void* args) {
    return args;
}
void onDestroy(void*) {}

// Polls through libFuzzer's timeout alarm, which interrupts the call.
int pollRetrying(pollfd* fds, nfds_t count, int ms) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                end - std::chrono::steady_clock::now());
        const int ready = poll(fds, count, static_cast<int>(std::max<int64_t>(left.count(), 0)));
        if (ready >= 0 || errno != EINTR) return ready;
    }
}

// A HELLO with a channel key makes the client open a second socket for its call; those are
// closed at once, so the client falls back to its first socket instead of waiting for a HELLO.
bool waitReadable(int fd, int otherFd, int ms) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                end - std::chrono::steady_clock::now());
        if (left.count() <= 0) return false;
        pollfd p[3] = {{fd, POLLIN, 0}, {otherFd, POLLIN, 0}, {gListener, POLLIN, 0}};
        if (pollRetrying(p, 3, static_cast<int>(left.count())) <= 0) return false;
        if ((p[0].revents & (POLLIN | POLLHUP)) != 0) return true;
        if (p[1].revents != 0) return false;
        const int extra = accept4(gListener, nullptr, nullptr, SOCK_CLOEXEC);
        if (extra >= 0) close(extra);
    }
}

void sendAll(int fd, const std::string& bytes) {
    vexal::fuzz::sendAll(fd, bytes.data(), bytes.size());
}

// A HELLO the client can finish reading; anything short of one ends the stream at once so the
// client is not left waiting for the rest.
bool holdsWholeFrame(const std::string& bytes) {
    if (bytes.size() < 8) return false;
    uint32_t length = 0;
    memcpy(&length, bytes.data(), 4);
    return length <= bytes.size() - 8;
}

// One connection: hello, then the rest once the client's first call arrived (or it gave up).
void serve(const std::string& hello, const std::string& rest, int mainDone) {
    pollfd p{gListener, POLLIN, 0};
    if (pollRetrying(&p, 1, 5000) <= 0) return;  // the client never connected
    int fd = -1;
    do {
        fd = accept4(gListener, nullptr, nullptr, SOCK_CLOEXEC);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) return;
    sendAll(fd, hello);
    if (!holdsWholeFrame(hello)) shutdown(fd, SHUT_WR);
    if (waitReadable(fd, mainDone, 5000)) {
        char frame[65536];
        (void)recv(fd, frame, sizeof(frame), MSG_DONTWAIT);
    }
    sendAll(fd, rest);
    shutdown(fd, SHUT_WR);
    // Until the client closed: its reader has seen everything.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    char sink[4096];
    while (std::chrono::steady_clock::now() < end) {
        pollfd q{fd, POLLIN, 0};
        if (poll(&q, 1, 100) <= 0) continue;
        const ssize_t n = recv(fd, sink, sizeof(sink), 0);
        if (n == 0 || (n < 0 && errno != EINTR)) break;
    }
    close(fd);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vexal::fuzz::quietLogs();
    // Calls from the other side and death notices come in on binder threads only.
    ABinderProcess_startThreadPool();
    char dirTemplate[] = "/tmp/vexal-fuzz-XXXXXX";
    FUZZ_CHECK(mkdtemp(dirTemplate) != nullptr);
    static const std::string dir = dirTemplate;
    FUZZ_CHECK(binder_host::setHostDirectory(dir));
    gSocketPath = dir + "/" + kInstance + ".sock";
    gListener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    FUZZ_CHECK(gListener >= 0);
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    memcpy(addr.sun_path, gSocketPath.c_str(), gSocketPath.size() + 1);
    FUZZ_CHECK(bind(gListener, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) == 0);
    FUZZ_CHECK(listen(gListener, 4) == 0);
    gClass = AIBinder_Class_define(kDescriptor, onCreate, onDestroy, onTransact);
    std::atexit([] {
        unlink(gSocketPath.c_str());
        rmdir(dir.c_str());
    });
    return 0;
}

// A length-prefixed HELLO and whatever follows it, then the frames sent after the first call.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    const std::string hello = input.ConsumeRandomLengthString(8192);
    const std::string rest = input.ConsumeRemainingBytesAsString();
    const int mainDone = eventfd(0, EFD_CLOEXEC);
    FUZZ_CHECK(mainDone >= 0);
    std::thread service(serve, hello, rest, mainDone);

    ndk::SpAIBinder binder(AServiceManager_checkService(kInstance));
    if (binder.get() != nullptr && AIBinder_associateClass(binder.get(), gClass)) {
        AParcel* in = nullptr;
        if (AIBinder_prepareTransaction(binder.get(), &in) == STATUS_OK) {
            AParcel_writeInt32(in, 7);
            AParcel* out = nullptr;
            AIBinder_transact(binder.get(), FIRST_CALL_TRANSACTION, &in, &out, 0);
            AParcel_delete(out);
        }
    }
    const uint64_t one = 1;
    FUZZ_CHECK(write(mainDone, &one, sizeof(one)) == sizeof(one));
    service.join();
    close(mainDone);
    // The next input needs a fresh connection, not this one on its way out.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (binder.get() != nullptr && AIBinder_isAlive(binder.get())) {
        FUZZ_CHECK(std::chrono::steady_clock::now() < end);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return 0;
}
