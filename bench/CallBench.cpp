// In-process costs: the Event API pair and the client class against raw binder calls to the same
// do-nothing service, the callers' scaling over threads, parcel coding and callback delivery.
#include "BenchService.h"
#include "TroxCallbackClient.h"
#include "halclient.h"
#include "pym.h"

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <android/log.h>
#include <benchmark/benchmark.h>
#include <binder_host/service_control.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <list>

#include <sys/resource.h>

namespace {

using namespace bench;

std::atomic<uint64_t> gLines{0};

// Counts and drops each line; with BENCH_SHOW_LOGS set it also prints them, to see what counts.
void dropLine(const __android_logger_data* data, const char* message) {
    gLines.fetch_add(1, std::memory_order_relaxed);
    static const bool show = std::getenv("BENCH_SHOW_LOGS") != nullptr;
    if (show) std::fprintf(stderr, "%s: %s\n", data->tag ? data->tag : "", message);
}

// As on a production device: info and debug lines never reach formatting.
void quietLogs() {
    __android_log_set_minimum_priority(ANDROID_LOG_WARN);
}

void allLogs() {
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
}

struct Setup {
    std::shared_ptr<NullTrox> service = ndk::SharedRefBase::make<NullTrox>();
    ndk::SpAIBinder proxy;
    std::shared_ptr<ITrox> bp;
    std::shared_ptr<ITroxCallback> clientCallback;
    std::shared_ptr<ITroxCallback> nullCallback;
};

Setup* gSetup = nullptr;

class NoopClientCallback : public IClientCallback {
  public:
    void onCallback(std::list<PymClient::Resource> resources) override {
        benchmark::DoNotOptimize(resources.size());
    }
};

ndk::SpAIBinder publish(AIBinder* binder, const char* instance) {
    binder_host::declareService(instance);
    if (AServiceManager_addService(binder, instance) != EX_NONE) {
        std::fprintf(stderr, "cannot publish %s\n", instance);
        std::exit(1);
    }
    // The service manager hands out a proxy, so every call below goes through parcels.
    return ndk::SpAIBinder(AServiceManager_checkService(instance));
}

void setUp() {
    __android_log_set_logger(dropLine);
    quietLogs();
    gSetup = new Setup();
    gSetup->proxy = publish(gSetup->service->asBinder().get(), kTroxInstance);
    gSetup->bp = ITrox::fromBinder(gSetup->proxy);
    if (!gSetup->bp || !AIBinder_isRemote(gSetup->proxy.get())) {
        std::fprintf(stderr, "no proxy to the bench service\n");
        std::exit(1);
    }
    auto client = ndk::SharedRefBase::make<TroxCallbackClient>(
            std::shared_ptr<IClientCallback>(std::make_shared<NoopClientCallback>()), true);
    gSetup->clientCallback =
            ITroxCallback::fromBinder(publish(client->asBinder().get(), "bench.cb.client"));
    auto null = ndk::SharedRefBase::make<NullCallback>();
    gSetup->nullCallback =
            ITroxCallback::fromBinder(publish(null->asBinder().get(), "bench.cb.null"));
    // The library connects on first use; keep that out of every timed loop.
    PymRelease(PymEventAcquire(kEventId, kPkg, kIdentity, kDuration, kResources));
    troxHalclient::troxResCtlRelease(1);
}

void countLines(benchmark::State& state, uint64_t before) {
    state.counters["log_lines_per_iter"] = benchmark::Counter(
            static_cast<double>(gLines.load() - before) / static_cast<double>(state.iterations()));
}

// 1. The Event API pair against the same two calls made raw.
void BM_RawPair(benchmark::State& state) {
    quietLogs();
    const TroxRequestParcel parcel = eventRequest();
    AIBinder* binder = gSetup->proxy.get();
    for (auto _ : state) {
        int32_t handle = -1;
        if (rawAcquire(binder, parcel, &handle) != STATUS_OK ||
            rawRelease(binder, handle) != STATUS_OK) {
            state.SkipWithError("raw call failed");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_BpTroxPair(benchmark::State& state) {
    quietLogs();
    const TroxRequestParcel parcel = eventRequest();
    ITrox& hal = *gSetup->bp;
    for (auto _ : state) {
        int32_t handle = -1;
        int32_t out = 0;
        if (!hal.troxResCtlRequest(parcel, &handle).isOk() ||
            !hal.troxResCtlRelease(handle, &out).isOk()) {
            state.SkipWithError("proxy call failed");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations());
}

void pymPair(benchmark::State& state) {
    const uint64_t before = gLines.load();
    for (auto _ : state) {
        const int32_t handle = PymEventAcquire(kEventId, kPkg, kIdentity, kDuration, kResources);
        if (handle != 1) {
            state.SkipWithError("acquire failed");
            break;
        }
        PymRelease(handle);
    }
    countLines(state, before);
    state.SetItemsProcessed(state.iterations());
}

void BM_PymPair_Warn(benchmark::State& state) {
    quietLogs();
    pymPair(state);
}

void BM_PymPair_AllLines(benchmark::State& state) {
    allLogs();
    pymPair(state);
    quietLogs();
}

// 1, side by side: raw pair, Event API pair at warn, Event API pair with every line delivered.
void BM_PairInterleaved(benchmark::State& state) {
    const TroxRequestParcel parcel = eventRequest();
    AIBinder* binder = gSetup->proxy.get();
    uint64_t lines = 0;
    uint64_t allPairs = 0;
    Interleaved runs({
            [&] {
                int32_t handle = -1;
                return rawAcquire(binder, parcel, &handle) == STATUS_OK &&
                       rawRelease(binder, handle) == STATUS_OK;
            },
            [&] {
                const int32_t handle =
                        PymEventAcquire(kEventId, kPkg, kIdentity, kDuration, kResources);
                PymRelease(handle);
                return handle == 1;
            },
            [&] {
                allLogs();
                const uint64_t before = gLines.load();
                const int32_t handle =
                        PymEventAcquire(kEventId, kPkg, kIdentity, kDuration, kResources);
                PymRelease(handle);
                lines += gLines.load() - before;
                ++allPairs;
                quietLogs();
                return handle == 1;
            },
    });
    quietLogs();
    for (auto _ : state) {
        if (!runs.runOnce()) {
            state.SkipWithError("call failed");
            break;
        }
    }
    state.counters["raw_ns"] = runs.median(0);
    state.counters["warn_ns"] = runs.median(1);
    state.counters["all_lines_ns"] = runs.median(2);
    state.counters["log_lines_per_pair"] =
            allPairs ? static_cast<double>(lines) / static_cast<double>(allPairs) : 0;
}

// 3. Callers are not serialised: per-thread pairs, real time, throughput read from items/s.
// A caller that waited for another would block: counted as voluntary context switches.
long voluntarySwitches() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_nvcsw;
}

void countSwitches(benchmark::State& state, long before) {
    state.counters["blocking_waits_per_iter"] = benchmark::Counter(
            static_cast<double>(voluntarySwitches() - before), benchmark::Counter::kAvgIterations);
    state.SetItemsProcessed(state.iterations());
}

void BM_PymPairThreads(benchmark::State& state) {
    if (state.thread_index() == 0) quietLogs();
    const long before = voluntarySwitches();
    for (auto _ : state) {
        PymRelease(PymEventAcquire(kEventId, kPkg, kIdentity, kDuration, kResources));
    }
    countSwitches(state, before);
}

void BM_RawPairThreads(benchmark::State& state) {
    const TroxRequestParcel parcel = eventRequest();
    AIBinder* binder = gSetup->proxy.get();
    const long before = voluntarySwitches();
    for (auto _ : state) {
        int32_t handle = -1;
        rawAcquire(binder, parcel, &handle);
        rawRelease(binder, handle);
    }
    countSwitches(state, before);
}

// The same with a service that sleeps in each call: overlapping callers finish together however
// busy the machine is, serialised ones take twice as long.
constexpr std::chrono::microseconds kServicePause{200};

void BM_PymPairThreadsSlowService(benchmark::State& state) {
    if (state.thread_index() == 0) {
        quietLogs();
        gSetup->service->setPause(kServicePause);
    }
    for (auto _ : state) {
        PymRelease(PymEventAcquire(kEventId, kPkg, kIdentity, kDuration, kResources));
    }
    state.SetItemsProcessed(state.iterations());
    if (state.thread_index() == 0) gSetup->service->setPause(std::chrono::microseconds(0));
}

// What two threads can get from this machine at all right now: a loop that shares nothing.
void BM_SpinThreads(benchmark::State& state) {
    for (auto _ : state) {
        uint32_t x = 1;
        for (int i = 0; i < 4000; ++i) {
            x = x * 1664525u + 1013904223u;
            benchmark::DoNotOptimize(x);
        }
    }
    state.SetItemsProcessed(state.iterations());
}

bool codec(const TroxRequestParcel& parcel);

// The same, with the kind of work a call does (a request encoded and decoded, allocations and
// all) but nothing shared between the threads.
void BM_CodecThreads(benchmark::State& state) {
    const TroxRequestParcel parcel = resourceRequest(1);
    for (auto _ : state) {
        if (!codec(parcel)) {
            state.SkipWithError("codec failed");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations());
}

// 4. The client class with N resources against the raw call carrying the same parcel.
std::list<PymClient::Resource> resourceList(int count) {
    std::list<PymClient::Resource> list;
    for (const auto& data : resourceRequest(count).requestData) {
        list.push_back({static_cast<int32_t>(data.res_Id), data.res_Value});
    }
    return list;
}

// Raw call and library call with the same parcel, side by side.
void BM_ClientInterleaved(benchmark::State& state) {
    quietLogs();
    const int count = static_cast<int>(state.range(0));
    auto list = resourceList(count);
    const TroxRequestParcel parcel = resourceRequest(count);
    AIBinder* binder = gSetup->proxy.get();
    Interleaved runs({
            [&] {
                int32_t handle = -1;
                return rawAcquire(binder, parcel, &handle) == STATUS_OK;
            },
            [&] {
                return troxHalclient::troxResCtlRequest(-1, kDuration, list, -1, -1, 1234) == 1;
            },
    });
    for (auto _ : state) {
        if (!runs.runOnce()) {
            state.SkipWithError("request failed");
            break;
        }
    }
    state.counters["raw_ns"] = runs.median(0);
    state.counters["lib_ns"] = runs.median(1);
}

// Encoding and decoding a 1-record and a 32-record request, side by side.
bool codec(const TroxRequestParcel& parcel) {
    ndk::ScopedAParcel p(AParcel_create());
    if (ndk::AParcel_writeData(p.get(), parcel) != STATUS_OK) return false;
    AParcel_setDataPosition(p.get(), 0);
    TroxRequestParcel decoded;
    if (ndk::AParcel_readData(p.get(), &decoded) != STATUS_OK) return false;
    benchmark::DoNotOptimize(decoded.requestData.data());
    return decoded.requestData.size() == parcel.requestData.size();
}

void BM_CodecInterleaved(benchmark::State& state) {
    const TroxRequestParcel one = resourceRequest(1);
    const TroxRequestParcel many = resourceRequest(32);
    Interleaved runs({[&] { return codec(one); }, [&] { return codec(many); }});
    for (auto _ : state) {
        if (!runs.runOnce()) {
            state.SkipWithError("codec failed");
            break;
        }
    }
    state.counters["one_ns"] = runs.median(0);
    state.counters["many_ns"] = runs.median(1);
}

// The service calling back: through the library's callback client to a no-op IClientCallback,
// against the same call to a do-nothing callback object without the library's transaction log.
// The call is one-way, so each task also waits until the kit has delivered it.
std::vector<TroxRequestData> callbackRecords(int count) {
    return resourceRequest(count).requestData;
}

void BM_CallbackInterleaved(benchmark::State& state) {
    quietLogs();
    const auto records = callbackRecords(static_cast<int>(state.range(0)));
    const auto libraryLog = BnTroxCallback::logFunc;
    Interleaved runs({
            [&] {
                BnTroxCallback::logFunc = nullptr;
                const bool ok = gSetup->nullCallback->onCallback(records).isOk();
                binder_host::drainNotifications();
                BnTroxCallback::logFunc = libraryLog;
                return ok;
            },
            [&] {
                const bool ok = gSetup->clientCallback->onCallback(records).isOk();
                binder_host::drainNotifications();
                return ok;
            },
    });
    for (auto _ : state) {
        if (!runs.runOnce()) {
            state.SkipWithError("callback failed");
            break;
        }
    }
    state.counters["raw_ns"] = runs.median(0);
    state.counters["lib_ns"] = runs.median(1);
}

// Only for the instruction profile in bench/run.
void BM_CallbackClient(benchmark::State& state) {
    quietLogs();
    const auto records = callbackRecords(static_cast<int>(state.range(0)));
    ITroxCallback& callback = *gSetup->clientCallback;
    for (auto _ : state) {
        if (!callback.onCallback(records).isOk()) {
            state.SkipWithError("callback failed");
            break;
        }
        binder_host::drainNotifications();
    }
}

}  // namespace

BENCHMARK(BM_PairInterleaved);
BENCHMARK(BM_RawPair);
BENCHMARK(BM_BpTroxPair);
BENCHMARK(BM_PymPair_Warn);
BENCHMARK(BM_PymPair_AllLines);
BENCHMARK(BM_RawPairThreads)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_PymPairThreads)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_PymPairThreadsSlowService)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_SpinThreads)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_CodecThreads)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_ClientInterleaved)->Arg(1)->Arg(8)->Arg(32);
BENCHMARK(BM_CodecInterleaved);
BENCHMARK(BM_CallbackInterleaved)->Arg(1)->Arg(32);
BENCHMARK(BM_CallbackClient)->Arg(32);

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    // One-way calls, callbacks and death notices come in on binder threads only.
    ABinderProcess_startThreadPool();
    setUp();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    // The library's connections and kit threads outlive main; leave without tearing them down.
    std::fflush(nullptr);
    std::_Exit(0);
}
