#include "ClientTestSupport.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <future>

// Every callback client installs the transaction-log hook when it is made, without a lock, while
// the stub may read it on a binder thread: a race the library keeps by design. Only that one
// global is exempt; anything else stays a failure.
extern "C" const char* __tsan_default_suppressions() {
    return "race:aidl::vendor::vexal::hardware::trox::BnTroxCallback::logFunc\n";
}

namespace vexal::testing {
namespace {

using namespace std::chrono_literals;

constexpr int kRounds = 40;

// A worker that does not finish in time is a deadlock: nothing can join it, so end the run.
void finishOrDie(std::future<void>& work, const char* what) {
    if (work.wait_for(60s) != std::future_status::ready) {
        std::fprintf(stderr, "%s did not finish: deadlock\n", what);
        std::_Exit(1);
    }
    work.get();
}

TEST(ConcurrencyTest, RegistrationsRequestsAndCallbacksAtOnce) {
    LogCapture logs;
    FakeTroxService service;
    FakeTrox& fake = service.fake();
    fake.setIntResult("troxResCtlRequest", 1);
    fake.setIntResult("troxResListeningRegister", 900);
    fake.setIntResult("troxResListeningUnRegister", 0);
    fake.setStateReply({record(1, "1")});
    // Each takes both forms.
    auto oneShot = std::make_shared<ClientRecorder>();
    auto listener = std::make_shared<ClientRecorder>();
    std::atomic<bool> workersDone{false};

    // Every round asks for exactly one one-shot answer.
    auto requester = [&](int seed) {
        for (int i = 0; i < kRounds; ++i) {
            Resources list{{seed + i, "1"}};
            if (i % 3 == 0) {
                troxHalclient::troxSACtlRequest(-1, 10, seed + i, -1, 1, seed, oneShot);
            } else if (i % 3 == 1) {
                troxHalclient::troxResCtlRequest(-1, 10, list, -1, 1, seed, oneShot);
            } else {
                Resources result;
                troxHalclient::troxResStateRequest(list, seed, result);
                troxHalclient::trox_resctl_request_with_callback_by_path(
                        -1, 10L, {"/r" + std::to_string(seed + i)}, {"1"}, -1, 1, seed, oneShot);
            }
        }
    };
    auto registrar = [&](int seed) {
        for (int i = 0; i < kRounds; ++i) {
            Resources ids{{seed + i, "1"}, {seed, "1"}};
            if (i % 2 == 0) {
                troxHalclient::troxResListeningRegister(ids, seed, listener);
            } else {
                troxHalclient::trox_res_listening_register_by_path(
                        {"/l" + std::to_string(seed + i)}, seed, listener);
            }
            // Every registration shares one handle, so this also takes other threads' groups.
            troxHalclient::troxResListeningUnRegister(900);
        }
    };
    // Plays the service: answers every callback it was handed, from a thread of its own.
    auto deliverer = [&] {
        size_t seen = 0;
        for (bool last = false; !last;) {
            last = workersDone.load();
            const auto calls = fake.calls();
            for (; seen < calls.size(); ++seen) {
                const auto& parcel = calls[seen].parcel;
                auto callback = calls[seen].callback;
                if (!callback && parcel) callback = parcel->callback;
                if (!callback) continue;
                const bool byPath = parcel && !parcel->requestData.empty() &&
                                    parcel->requestData[0].res_Path.has_value();
                callback->onCallback({byPath ? pathRecord("/d", "1") : record(7, "7")});
            }
            fake.waitForCalls(seen + 1, 1ms);
        }
    };

    std::vector<std::future<void>> workers;
    for (int seed : {1000, 2000})
        workers.push_back(std::async(std::launch::async, requester, seed));
    for (int seed : {3000, 4000})
        workers.push_back(std::async(std::launch::async, registrar, seed));
    auto delivering = std::async(std::launch::async, deliverer);
    for (auto& work : workers) finishOrDie(work, "a client thread");
    workersDone = true;
    finishOrDie(delivering, "the delivering thread");

    // Every one-shot request got exactly one answer, and no one-shot client is left behind.
    const size_t expected = 2 * kRounds;
    EXPECT_TRUE(oneShot->waitFor(expected, 20s));
    EXPECT_TRUE(eventually([] { return requestCallbackCount() == 0; }, 20s))
            << requestCallbackCount();
    EXPECT_EQ(oneShot->ids().size() + oneShot->paths().size(), expected);
    for (const auto& resources : oneShot->ids()) EXPECT_EQ(resources, (Resources{{7, "7"}}));
    EXPECT_GT(listener->ids().size() + listener->paths().size(), 0u);

    // Nothing stays registered: a fresh registration of a used id list goes through.
    troxHalclient::troxResListeningUnRegister(900);
    Resources ids{{3000, "1"}, {3000, "1"}};
    EXPECT_EQ(troxHalclient::troxResListeningRegister(ids, 1, listener), 900);
    troxHalclient::troxResListeningUnRegister(900);
}

}  // namespace
}  // namespace vexal::testing
