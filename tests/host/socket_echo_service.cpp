// A service process for the socket tests: publishes an echo service under argv[1] in
// BINDER_HOST_DIR, serves on the binder thread pool and exits cleanly on SIGTERM.
// With --join SOCKET KEY it is a stranger instead: it asks to join the connection that KEY
// names as a channel and exits 0 if the service refuses, 1 if it accepts, 2 on other errors.
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
#include <fstream>
#include <mutex>
#include <string>
#include <thread>

#include "../../host/binder/src/socket_frames.h"
#include "../kit/RawSocket.h"
#include "binder_test_util.h"
#include "socket_test_codes.h"

namespace {

using namespace binder_test;

std::mutex gMutex;
ndk::SpAIBinder gRemembered;

void notifyLater(ndk::SpAIBinder target, int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
        AParcel* in = nullptr;
        if (AIBinder_prepareTransaction(target.get(), &in) != STATUS_OK) return;
        AParcel_writeInt32(in, i);
        ndk::ScopedAParcel out;
        if (AIBinder_transact(target.get(), kRecord, &in, out.getR(), FLAG_ONEWAY) != STATUS_OK) {
            return;
        }
    }
}

binder_status_t serviceTransact(AIBinder* binder, transaction_code_t code, const AParcel* in,
                                AParcel* out) {
    switch (code) {
        case kCallerIdentity:
            AParcel_writeInt32(out, AIBinder_getCallingPid());
            AParcel_writeInt32(out, static_cast<int32_t>(AIBinder_getCallingUid()));
            return AParcel_writeInt32(out, getpid());
        case kRemember: {
            ndk::SpAIBinder target;
            if (binder_status_t s = AParcel_readStrongBinder(in, target.getR()); s != STATUS_OK) {
                return s;
            }
            if (!AIBinder_associateClass(target.get(), echoClass())) return STATUS_BAD_TYPE;
            std::lock_guard<std::mutex> lock(gMutex);
            gRemembered = target;
            return STATUS_OK;
        }
        case kNotifyLater: {
            int32_t count = 0;
            if (binder_status_t s = AParcel_readInt32(in, &count); s != STATUS_OK) return s;
            std::lock_guard<std::mutex> lock(gMutex);
            if (gRemembered.get() == nullptr) return STATUS_INVALID_OPERATION;
            std::thread(notifyLater, gRemembered, count).detach();
            return STATUS_OK;
        }
        case kForget: {
            ndk::SpAIBinder dropped;
            std::lock_guard<std::mutex> lock(gMutex);
            dropped = std::move(gRemembered);
            gRemembered = ndk::SpAIBinder();
            return STATUS_OK;
        }
        case kWaitRecorded: {
            int32_t count = 0;
            if (binder_status_t s = AParcel_readInt32(in, &count); s != STATUS_OK) return s;
            auto* state = static_cast<EchoState*>(AIBinder_getUserData(binder));
            std::unique_lock<std::mutex> lock(state->mutex);
            state->cv.wait_for(lock, std::chrono::seconds(5), [&] {
                return state->received.size() >= static_cast<size_t>(count);
            });
            return AParcel_writeInt32Array(out, state->received.data(),
                                           static_cast<int32_t>(state->received.size()));
        }
        case kReturnBinder: {
            ndk::SpAIBinder target;
            if (binder_status_t s = AParcel_readStrongBinder(in, target.getR()); s != STATUS_OK) {
                return s;
            }
            return AParcel_writeStrongBinder(out, target.get());
        }
        case kReturnSelf:
            return AParcel_writeStrongBinder(out, binder);
        case kCallBackOneway: {
            ndk::SpAIBinder target;
            int32_t value = 0;
            if (binder_status_t s = AParcel_readStrongBinder(in, target.getR()); s != STATUS_OK) {
                return s;
            }
            if (binder_status_t s = AParcel_readInt32(in, &value); s != STATUS_OK) return s;
            if (!AIBinder_associateClass(target.get(), echoClass())) return STATUS_BAD_TYPE;
            AParcel* request = nullptr;
            if (binder_status_t s = AIBinder_prepareTransaction(target.get(), &request);
                s != STATUS_OK) {
                return s;
            }
            AParcel_writeInt32(request, value);
            ndk::ScopedAParcel ignored;
            return AIBinder_transact(target.get(), kRecord, &request, ignored.getR(), FLAG_ONEWAY);
        }
        default:
            return echoTransact(binder, code, in, out);
    }
}

}  // namespace

int joinAsStranger(const std::string& path, uint64_t key) {
    using namespace vexal::testing;
    const int fd = connectUnix(path);
    if (fd < 0) return 2;
    uint8_t header[8];
    if (!recvExact(fd, header, sizeof(header))) return 2;
    uint32_t length = 0;
    memcpy(&length, header, 4);
    std::string hello(length, '\0');
    if (!recvExact(fd, hello.data(), length)) return 2;
    uint8_t join[16] = {8, 0, 0, 0, binder_impl::kJoin, 0, 0, 0};
    memcpy(join + 8, &key, 8);
    if (!sendExact(fd, join, sizeof(join))) return 2;
    const int result = recvExact(fd, header, sizeof(header)) ? 1 : 0;
    close(fd);
    return result;
}

int main(int argc, char** argv) {
    if (argc == 4 && std::string(argv[1]) == "--join") {
        return joinAsStranger(argv[2], std::stoull(argv[3]));
    }
    // --pool-on-sigusr1: gives binder no thread until SIGUSR1, and creates the file
    // $BINDER_HOST_DIR/queued once a call waits for one.
    const bool lazy = argc == 3 && std::string(argv[2]) == "--pool-on-sigusr1";
    if (argc != 2 && !lazy) {
        fprintf(stderr, "usage: %s INSTANCE [--pool-on-sigusr1] (with BINDER_HOST_DIR set)\n",
                argv[0]);
        return 2;
    }
    // Every thread inherits the mask, so only the waiter below sees the signals.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([signals] {
        for (;;) {
            int signal = 0;
            sigwait(&signals, &signal);
            if (signal == SIGUSR1) {
                ABinderProcess_startThreadPool();
                continue;
            }
            std::lock_guard<std::mutex> lock(gMutex);
            gRemembered = ndk::SpAIBinder();
            std::exit(0);
        }
    }).detach();

    static EchoState state;
    const AIBinder_Class* clazz = AIBinder_Class_define(
            kEchoDescriptor, [](void* args) { return args; }, [](void*) {}, serviceTransact);
    ndk::SpAIBinder service(AIBinder_new(clazz, &state));
    if (AServiceManager_addService(service.get(), argv[1]) != EX_NONE) return 1;
    if (lazy) {
        if (!binder_host::waitForQueuedBinderWork(1, std::chrono::minutes(1))) return 1;
        const char* dir = getenv("BINDER_HOST_DIR");
        std::ofstream(std::string(dir != nullptr ? dir : ".") + "/queued") << "1\n";
        for (;;) pause();
    }
    ABinderProcess_startThreadPool();
    ABinderProcess_joinThreadPool();
    return 0;
}
