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

class CountingCallback : public IClientCallback {
  public:
    void onCallback(std::list<PymClient::Resource> resources) override {
        count.fetch_add(1);
        records.fetch_add(static_cast<int>(resources.size()));
    }
    std::atomic<int> count{0};
    std::atomic<int> records{0};
};

class CountingPathCallback : public IClientCallbackByPath {
  public:
    void onCallback(Texts, Texts) override { count.fetch_add(1); }
    std::atomic<int> count{0};
};

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
    {
        std::lock_guard<std::mutex> lock(request_callback_mutex);
        request_callbacks.clear();
    }

    auto oneShot = std::make_shared<CountingCallback>();
    auto listener = std::make_shared<CountingCallback>();
    auto pathOneShot = std::make_shared<CountingPathCallback>();
    auto pathListener = std::make_shared<CountingPathCallback>();
    std::atomic<bool> workersDone{false};
    std::atomic<int> oneShotRequests{0};

    auto requester = [&](int seed) {
        for (int i = 0; i < kRounds; ++i) {
            Resources list{{seed + i, "1"}};
            if (i % 3 == 0) {
                troxHalclient::troxSACtlRequest(-1, 10, seed + i, -1, 1, seed, oneShot);
                oneShotRequests.fetch_add(1);
            } else if (i % 3 == 1) {
                troxHalclient::troxResCtlRequest(-1, 10, list, -1, 1, seed, oneShot);
                oneShotRequests.fetch_add(1);
            } else {
                Resources result;
                troxHalclient::troxResStateRequest(list, seed, result);
                troxHalclient::trox_resctl_request_with_callback_by_path(
                        -1, 10L, {"/r" + std::to_string(seed + i)}, {"1"}, -1, 1, seed,
                        pathOneShot);
                oneShotRequests.fetch_add(1);
            }
        }
    };
    auto registrar = [&](int seed) {
        for (int i = 0; i < kRounds; ++i) {
            if (i % 2 == 0) {
                Resources ids{{seed + i, "1"}, {seed, "1"}};
                troxHalclient::troxResListeningRegister(ids, seed, listener);
            } else {
                troxHalclient::trox_res_listening_register_by_path(
                        {"/l" + std::to_string(seed + i)}, seed, pathListener);
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
                std::shared_ptr<ITroxCallback> callback = calls[seen].callback;
                if (!callback && calls[seen].parcel) callback = calls[seen].parcel->callback;
                if (!callback) continue;
                const bool byPath = calls[seen].parcel &&
                                    !calls[seen].parcel->requestData.empty() &&
                                    calls[seen].parcel->requestData[0].res_Path.has_value();
                callback->onCallback({byPath ? pathRecord("/d", "1") : record(7, "7")});
            }
            std::this_thread::sleep_for(1ms);
        }
    };

    std::vector<std::future<void>> workers;
    workers.push_back(std::async(std::launch::async, requester, 1000));
    workers.push_back(std::async(std::launch::async, requester, 2000));
    workers.push_back(std::async(std::launch::async, registrar, 3000));
    workers.push_back(std::async(std::launch::async, registrar, 4000));
    auto delivering = std::async(std::launch::async, deliverer);
    for (auto& work : workers) finishOrDie(work, "a client thread");
    workersDone = true;
    finishOrDie(delivering, "the delivering thread");

    // Every one-shot request got exactly one answer, and no one-shot client is left behind.
    const int expected = oneShotRequests.load();
    EXPECT_EQ(expected, 2 * kRounds);
    EXPECT_TRUE(eventually([&] { return oneShot->count + pathOneShot->count == expected; }, 20s))
            << oneShot->count << " + " << pathOneShot->count << " of " << expected;
    EXPECT_TRUE(eventually([] { return requestCallbackCount() == 0; }, 20s))
            << requestCallbackCount();
    EXPECT_EQ(oneShot->records.load(), oneShot->count.load());
    EXPECT_GT(listener->count.load() + pathListener->count.load(), 0);

    // Nothing stays registered: a fresh registration of a used id list goes through.
    troxHalclient::troxResListeningUnRegister(900);
    Resources ids{{3000, "1"}, {3000, "1"}};
    EXPECT_EQ(troxHalclient::troxResListeningRegister(ids, 1, listener), 900);
    troxHalclient::troxResListeningUnRegister(900);
}

}  // namespace
}  // namespace vexal::testing
