// The other process of the socket benchmarks.
//   bench_null_server --dir DIR    publishes the do-nothing service through the kit's sockets
//   bench_null_server --echo PATH  answers framed requests on a plain Unix socket, one client
// Either runs until SIGTERM.
#include "../tests/kit/RawSocket.h"
#include "BenchService.h"

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <binder_host/service_control.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

// Frames as the kit's transport frames them: uint32 body length, uint32 word, body. The word
// of a request is the body length of the reply wanted.
void echo(int fd) {
    std::vector<uint8_t> body;
    std::vector<uint8_t> reply;
    for (;;) {
        uint8_t header[8];
        if (!vexal::testing::recvExact(fd, header, sizeof(header))) return;
        uint32_t length = 0;
        uint32_t wanted = 0;
        std::memcpy(&length, header, 4);
        std::memcpy(&wanted, header + 4, 4);
        body.resize(length);
        if (!vexal::testing::recvExact(fd, body.data(), length)) return;
        reply.assign(8 + wanted, 0);
        std::memcpy(reply.data(), &wanted, 4);
        if (!vexal::testing::sendExact(fd, reply.data(), reply.size())) return;
    }
}

int serveEcho(const std::string& path) {
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    if (listener < 0 || path.size() >= sizeof(addr.sun_path)) return 1;
    std::memcpy(addr.sun_path, path.c_str(), path.size() + 1);
    unlink(path.c_str());
    if (bind(listener, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) != 0 ||
        listen(listener, 4) != 0) {
        std::perror("bench_null_server: echo socket");
        return 1;
    }
    std::thread([listener] {
        for (;;) {
            const int fd = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
            if (fd < 0) return;
            std::thread([fd] {
                echo(fd);
                close(fd);
            }).detach();
        }
    }).detach();
    return 0;
}

int serveBinder(const std::string& dir) {
    if (!binder_host::setHostDirectory(dir)) return 1;
    binder_host::declareService(bench::kTroxInstance);
    static auto service = ndk::SharedRefBase::make<bench::NullTrox>();
    if (AServiceManager_addService(service->asBinder().get(), bench::kTroxInstance) != EX_NONE) {
        std::fprintf(stderr, "bench_null_server: cannot publish\n");
        return 1;
    }
    ABinderProcess_setThreadPoolMaxThreadCount(4);
    ABinderProcess_startThreadPool();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    sigset_t stop;
    sigemptyset(&stop);
    sigaddset(&stop, SIGTERM);
    sigaddset(&stop, SIGINT);
    pthread_sigmask(SIG_BLOCK, &stop, nullptr);
    signal(SIGPIPE, SIG_IGN);
    if (argc != 3) {
        std::fprintf(stderr, "usage: bench_null_server --dir DIR | --echo PATH\n");
        return 2;
    }
    const std::string mode = argv[1];
    const int rc = mode == "--dir"    ? serveBinder(argv[2])
                   : mode == "--echo" ? serveEcho(argv[2])
                                      : 2;
    if (rc != 0) return rc;
    int sig = 0;
    while (sigwait(&stop, &sig) != 0) {
    }
    std::_Exit(0);
}
