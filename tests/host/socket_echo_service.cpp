// A service process for the socket tests: publishes an echo service under argv[1] in
// BINDER_HOST_DIR, serves on the binder thread pool and exits cleanly on SIGTERM.
// With --pool-on-sigusr1 it gives binder no thread until SIGUSR1 and prints "queued" once a call
// waits for one. With --join SOCKET KEY it is a stranger instead: it asks to join the connection
// that KEY names as a channel and exits 0 if the service refuses, 1 if it accepts, 2 otherwise.
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <binder_host/service_control.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "../../host/binder/src/socket_frames.h"
#include "../kit/RawSocket.h"
#include "binder_test_util.h"

namespace {

using namespace binder_test;

std::mutex gMutex;
ndk::SpAIBinder gRemembered;

binder_status_t serviceTransact(AIBinder* binder, transaction_code_t code, const AParcel* in,
                                AParcel* out) {
    ndk::SpAIBinder target;
    int32_t count = 0;
    if (code == kRemember || code == kReturnBinder) {
        if (binder_status_t s = AParcel_readStrongBinder(in, target.getR()); s != STATUS_OK) {
            return s;
        }
    }
    switch (code) {
        case kCallerIdentity:
            AParcel_writeInt32(out, AIBinder_getCallingPid());
            AParcel_writeInt32(out, static_cast<int32_t>(AIBinder_getCallingUid()));
            return AParcel_writeInt32(out, getpid());
        case kRemember:
            if (!AIBinder_associateClass(target.get(), echoClass())) return STATUS_BAD_TYPE;
            [[fallthrough]];
        case kForget: {
            std::lock_guard<std::mutex> lock(gMutex);
            std::swap(target, gRemembered);  // what was kept before is dropped outside the lock
            return STATUS_OK;
        }
        case kNotifyLater: {
            if (binder_status_t s = AParcel_readInt32(in, &count); s != STATUS_OK) return s;
            std::lock_guard<std::mutex> lock(gMutex);
            if (gRemembered.get() == nullptr) return STATUS_INVALID_OPERATION;
            std::thread([kept = gRemembered, count] {
                for (int32_t i = 0; i < count; ++i) {
                    sendInt(kept.get(), kRecord, i, nullptr, FLAG_ONEWAY);
                }
            }).detach();
            return STATUS_OK;
        }
        case kReturnBinder:
            return AParcel_writeStrongBinder(out, target.get());
        default:
            return echoTransact(binder, code, in, out);
    }
}

int joinAsStranger(const std::string& path, uint64_t key) {
    using namespace vexal::testing;
    const int fd = connectGreeted(path, binder_impl::kHello);
    if (fd < 0) return 2;
    std::vector<uint8_t> body(8);
    memcpy(body.data(), &key, 8);
    const std::vector<uint8_t> join = rawFrame(binder_impl::kJoin, body);
    if (!sendExact(fd, join.data(), join.size())) return 2;
    uint32_t type = 0;
    return readRawFrame(fd, &type, &body) ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 4 && std::string(argv[1]) == "--join") {
        return joinAsStranger(argv[2], std::stoull(argv[3]));
    }
    const bool lazy = argc == 3 && std::string(argv[2]) == "--pool-on-sigusr1";
    if (argc != 2 && !lazy) return 2;
    // Every thread inherits the mask, so only the waiter below sees the signals.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([signals] {
        for (int signal = 0; sigwait(&signals, &signal) == 0 && signal == SIGUSR1;) {
            ABinderProcess_startThreadPool();
        }
        std::lock_guard<std::mutex> lock(gMutex);
        gRemembered = ndk::SpAIBinder();
        std::exit(0);
    }).detach();

    static EchoState state;
    const AIBinder_Class* clazz = AIBinder_Class_define(
            kEchoDescriptor, [](void* args) { return args; }, [](void*) {}, serviceTransact);
    ndk::SpAIBinder service(AIBinder_new(clazz, &state));
    if (AServiceManager_addService(service.get(), argv[1]) != EX_NONE) return 1;
    if (lazy) {
        if (!binder_host::waitForQueuedBinderWork(1, std::chrono::minutes(1))) return 1;
        fprintf(stderr, "queued\n");
        for (;;) pause();
    }
    ABinderProcess_startThreadPool();
    ABinderProcess_joinThreadPool();
    return 0;
}
