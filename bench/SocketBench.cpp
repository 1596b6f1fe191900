// Across processes: the Event API pair through the kit's Unix-socket transport against plain
// Unix-socket round trips of the same sizes, both served by a child process.
#include "../tests/kit/RawSocket.h"
#include "BenchService.h"
#include "pym.h"

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <android/log.h>
#include <benchmark/benchmark.h>
#include <binder_host/service_control.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

extern char** environ;

namespace {

using namespace bench;

// Header, transaction id, target ref, code, flags, empty object table, parcel size.
constexpr size_t kTransactOverhead = 8 + 8 + 8 + 4 + 4 + 4 + 4;
// Header, transaction id, frames sent before it on the shared socket (a reply on a channel),
// status, empty object table, parcel size.
constexpr size_t kReplyOverhead = 8 + 8 + 8 + 4 + 4 + 4;

struct RoundTrip {
    size_t request = 0;  // whole frame, header included
    size_t reply = 0;
};

std::string gTempDir;
std::vector<pid_t> gChildren;
ndk::SpAIBinder gProxy;
std::shared_ptr<ITrox> gBp;
int gEchoFd = -1;
RoundTrip gAcquireTrip;
RoundTrip gReleaseTrip;

[[noreturn]] void die(const std::string& why) {
    std::fprintf(stderr, "socket_bench: %s\n", why.c_str());
    for (pid_t child : gChildren) kill(child, SIGTERM);
    std::_Exit(1);
}

pid_t spawn(const std::vector<std::string>& argv) {
    std::vector<char*> args;
    for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    pid_t pid = 0;
    if (posix_spawn(&pid, args[0], nullptr, nullptr, args.data(), environ) != 0) {
        die("cannot start " + argv[0]);
    }
    gChildren.push_back(pid);
    return pid;
}

void stopChildren() {
    for (pid_t child : gChildren) kill(child, SIGTERM);
    for (pid_t child : gChildren) waitpid(child, nullptr, 0);
    gChildren.clear();
    std::error_code ignored;
    std::filesystem::remove_all(gTempDir, ignored);
}

int connectEcho(const std::string& path) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < deadline) {
        const int fd = vexal::testing::connectUnix(path);
        if (fd >= 0) return fd;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    die("echo server did not answer");
}

// One frame out, one frame back, read the way the transport reads: header, then body.
bool roundTrip(int fd, const RoundTrip& trip, std::vector<uint8_t>& buffer) {
    buffer.resize(std::max(trip.request, trip.reply));
    const auto length = static_cast<uint32_t>(trip.request - 8);
    const auto wanted = static_cast<uint32_t>(trip.reply - 8);
    std::memcpy(buffer.data(), &length, 4);
    std::memcpy(buffer.data() + 4, &wanted, 4);
    if (send(fd, buffer.data(), trip.request, MSG_NOSIGNAL) != static_cast<ssize_t>(trip.request)) {
        return false;
    }
    return vexal::testing::recvExact(fd, buffer.data(), 8) &&
           vexal::testing::recvExact(fd, buffer.data() + 8, trip.reply - 8);
}

// Frame sizes of one call, from the parcels the call really carries.
template <typename Arg>
RoundTrip measureTrip(transaction_code_t code, const Arg& arg) {
    AParcel* in = nullptr;
    if (AIBinder_prepareTransaction(gProxy.get(), &in) != STATUS_OK) die("prepare failed");
    ndk::ScopedAParcel request(in);
    ndk::AParcel_writeData(request.get(), arg);
    RoundTrip trip;
    trip.request = kTransactOverhead + static_cast<size_t>(AParcel_getDataSize(request.get()));
    AParcel* out = nullptr;
    if (AIBinder_transact(gProxy.get(), code, request.getR(), &out, 0) != STATUS_OK) {
        die("transact failed");
    }
    ndk::ScopedAParcel reply(out);
    trip.reply = kReplyOverhead + static_cast<size_t>(AParcel_getDataSize(reply.get()));
    return trip;
}

void setUp() {
    __android_log_set_minimum_priority(ANDROID_LOG_WARN);
    char pattern[] = "/tmp/vexal-bench-XXXXXX";
    if (mkdtemp(pattern) == nullptr) die("cannot make a temp dir");
    gTempDir = pattern;
    const std::string server =
            std::filesystem::read_symlink("/proc/self/exe").parent_path() / "bench_null_server";
    const std::string binderDir = gTempDir + "/binder";
    const std::string echoPath = gTempDir + "/echo.sock";
    spawn({server, "--dir", binderDir});
    spawn({server, "--echo", echoPath});
    if (!binder_host::setHostDirectory(binderDir)) die("host directory refused");
    binder_host::declareService(kTroxInstance);
    alarm(60);  // a server that never comes up must not hang the run
    gProxy = ndk::SpAIBinder(AServiceManager_waitForService(kTroxInstance));
    alarm(0);
    gBp = ITrox::fromBinder(gProxy);
    if (!gBp || !AIBinder_isRemote(gProxy.get())) die("no proxy to the service process");
    gEchoFd = connectEcho(echoPath);
    gAcquireTrip = measureTrip(ITrox::TRANSACTION_troxResCtlRequest, eventRequest());
    gReleaseTrip = measureTrip(ITrox::TRANSACTION_troxResCtlRelease, int32_t{1});
    // Connects the Event API's own link.
    PymRelease(PymEventAcquire(kEventId, kPkg, kIdentity, kDuration, kResources));
}

// Every time a thread of this process went to sleep waiting: the hand-offs a call costs.
long processWaits() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_nvcsw;
}

void countWaits(benchmark::State& state, long before) {
    state.counters["client_waits_per_iter"] = benchmark::Counter(
            static_cast<double>(processWaits() - before), benchmark::Counter::kAvgIterations);
}

void bytesCounters(benchmark::State& state) {
    state.counters["request_bytes"] =
            static_cast<double>(gAcquireTrip.request + gReleaseTrip.request);
    state.counters["reply_bytes"] = static_cast<double>(gAcquireTrip.reply + gReleaseTrip.reply);
}

void BM_SocketRawRoundTrips(benchmark::State& state) {
    std::vector<uint8_t> buffer;
    const long waits = processWaits();
    for (auto _ : state) {
        if (!roundTrip(gEchoFd, gAcquireTrip, buffer) ||
            !roundTrip(gEchoFd, gReleaseTrip, buffer)) {
            state.SkipWithError("echo failed");
            break;
        }
    }
    countWaits(state, waits);
    bytesCounters(state);
}

void BM_SocketRawPair(benchmark::State& state) {
    const TroxRequestParcel parcel = eventRequest();
    const long waits = processWaits();
    for (auto _ : state) {
        int32_t handle = -1;
        if (rawAcquire(gProxy.get(), parcel, &handle) != STATUS_OK ||
            rawRelease(gProxy.get(), handle) != STATUS_OK) {
            state.SkipWithError("raw call failed");
            break;
        }
    }
    countWaits(state, waits);
}

void BM_SocketBpTroxPair(benchmark::State& state) {
    const TroxRequestParcel parcel = eventRequest();
    const long waits = processWaits();
    for (auto _ : state) {
        int32_t handle = -1;
        int32_t out = 0;
        if (!gBp->troxResCtlRequest(parcel, &handle).isOk() ||
            !gBp->troxResCtlRelease(handle, &out).isOk()) {
            state.SkipWithError("proxy call failed");
            break;
        }
    }
    countWaits(state, waits);
}

void BM_SocketPymPair_Warn(benchmark::State& state) {
    const long waits = processWaits();
    for (auto _ : state) {
        const int32_t handle = PymEventAcquire(kEventId, kPkg, kIdentity, kDuration, kResources);
        if (handle != 1) {
            state.SkipWithError("acquire failed");
            break;
        }
        PymRelease(handle);
    }
    countWaits(state, waits);
}

// The same three side by side, for figures that a drifting load cannot tilt.
void BM_SocketInterleaved(benchmark::State& state) {
    const TroxRequestParcel parcel = eventRequest();
    std::vector<uint8_t> buffer;
    Interleaved runs({
            [&] {
                return roundTrip(gEchoFd, gAcquireTrip, buffer) &&
                       roundTrip(gEchoFd, gReleaseTrip, buffer);
            },
            [&] {
                int32_t handle = -1;
                return rawAcquire(gProxy.get(), parcel, &handle) == STATUS_OK &&
                       rawRelease(gProxy.get(), handle) == STATUS_OK;
            },
            [&] {
                const int32_t handle =
                        PymEventAcquire(kEventId, kPkg, kIdentity, kDuration, kResources);
                PymRelease(handle);
                return handle == 1;
            },
    });
    for (auto _ : state) {
        if (!runs.runOnce()) {
            state.SkipWithError("call failed");
            break;
        }
    }
    state.counters["socket_ns"] = runs.median(0);
    state.counters["kit_ns"] = runs.median(1);
    state.counters["pym_ns"] = runs.median(2);
    bytesCounters(state);
}

}  // namespace

// Wall time: the caller waits on the other process, which CPU time would not show.
BENCHMARK(BM_SocketInterleaved)->UseRealTime();
BENCHMARK(BM_SocketRawRoundTrips)->UseRealTime();
BENCHMARK(BM_SocketRawPair)->UseRealTime();
BENCHMARK(BM_SocketBpTroxPair)->UseRealTime();
BENCHMARK(BM_SocketPymPair_Warn)->UseRealTime();

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    // One-way calls, callbacks and death notices come in on binder threads only.
    ABinderProcess_startThreadPool();
    setUp();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    close(gEchoFd);
    // The link sees the service go; that line is expected here.
    __android_log_set_minimum_priority(ANDROID_LOG_FATAL);
    stopChildren();
    std::fflush(nullptr);
    // Kit threads still hold the dead connection; leave without tearing them down.
    std::_Exit(0);
}
