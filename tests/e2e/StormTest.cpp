// troxd failing one call on purpose, and killed and restarted under many callers through every
// door, once or again and again.
#include <binder_host/service_control.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "E2eSupport.h"
#include "TroxCallbackClient.h"
#include "halclient.h"
#include "pym.h"

namespace vexal::e2e {
namespace {

// A client-class call waits for a declared service, so a call may span one outage.
constexpr auto kCallBound = 10s;

// Counts its deliveries: a one-shot answer must come at most once.
class OneShot : public IClientCallback {
  public:
    void onCallback(ResourceList) override { ++calls; }
    std::atomic<int> calls{0};
};

enum class Door { kEventApi, kOneWay, kClientClass, kRegistration, kOneShot };

ResourceList inputBoost() {
    return {{kInputBoost, std::string("3")}};
}

// One thread per door, each taking a hold, reading and letting go until stopped. Rounds that
// get through count per phase; no round may take long.
class Load {
  public:
    struct Caller {
        Door door;
        std::function<int32_t()> take;  // a handle, -1 when it failed
        std::function<bool()> read;
        std::function<bool(int32_t)> letGo;
        std::atomic<int> answered[2] = {};
        std::atomic<int> failed{0};
        std::thread thread;
    };

    explicit Load(const std::vector<Door>& doors) {
        for (Door door : doors) {
            auto& c = *callers_.emplace_back(std::make_unique<Caller>());
            c.door = door;
            c.read = [] { return true; };
            c.letGo = [](int32_t h) { return troxHalclient::troxResCtlRelease(h) == 0; };
            if (door == Door::kEventApi || door == Door::kOneWay) {
                c.letGo = [](int32_t h) { return PymRelease(h), true; };
            }
            switch (door) {
                case Door::kEventApi:
                    c.take = [] { return PymEventAcquire(0, "com.e2e", "load", 0, {}); };
                    c.read = [] { return readPym({kCluster1MinFreq})[0] != "<none>"; };
                    break;
                case Door::kOneWay:
                    // Its release may overtake it, so that the acquisition stays until troxd dies.
                    c.take = [] { return PymEventAcquireOneWay(0, "com.e2e", "oneway", 0, {}); };
                    break;
                case Door::kClientClass:
                    c.take = [set = inputBoost()]() mutable {
                        return troxHalclient::troxResCtlRequest(0, set, getpid());
                    };
                    c.read = [] { return readClient({kInputBoost})[0] != "<none>"; };
                    break;
                case Door::kRegistration:
                    c.take = [set = inputBoost()]() mutable {
                        return troxHalclient::troxResListeningRegister(
                                set, getpid(), std::make_shared<Recorder>());
                    };
                    c.letGo = [](int32_t h) {
                        return troxHalclient::troxResListeningUnRegister(h) == 0;
                    };
                    break;
                case Door::kOneShot:
                    c.take = [this, set = inputBoost()]() mutable {
                        auto answer = std::make_shared<OneShot>();
                        std::lock_guard<std::mutex> lock(mutex);
                        oneShots.push_back(answer);
                        return troxHalclient::troxResCtlRequest(-1, 0, set, -1, -1, getpid(),
                                                                answer);
                    };
            }
            c.thread = std::thread([this, &c] {
                while (!stop_) {
                    const auto start = std::chrono::steady_clock::now();
                    const int32_t h = c.take();
                    bool ok = h > 0 && c.read();
                    if (h > 0) ok = c.letGo(h) && ok;
                    counted(c, ok, std::chrono::steady_clock::now() - start);
                }
            });
        }
    }
    ~Load() { stop(); }
    void stop() {
        stop_ = true;
        for (auto& c : callers_) {
            if (c->thread.joinable()) c->thread.join();
        }
    }
    // Every caller got n answers in phase p; every Event API caller failed n times.
    bool allAnswered(int p, int n) const {
        return std::all_of(callers_.begin(), callers_.end(),
                           [&](const auto& c) { return c->answered[p] >= n; });
    }
    bool eventApiFailed(int n) const {
        return std::all_of(callers_.begin(), callers_.end(), [&](const auto& c) {
            return c->door != Door::kEventApi || c->failed >= n;
        });
    }

    std::atomic<int> phase{0};
    std::atomic<int> rounds{0};
    std::atomic<int64_t> slowestMs{0};
    std::mutex mutex;
    std::vector<std::shared_ptr<OneShot>> oneShots;

  private:
    void counted(Caller& c, bool ok, std::chrono::steady_clock::duration took) {
        const int64_t ms = std::chrono::duration_cast<std::chrono::milliseconds>(took).count();
        for (int64_t seen = slowestMs; ms > seen && !slowestMs.compare_exchange_weak(seen, ms);) {
        }
        ++rounds;
        ok ? ++c.answered[phase] : ++c.failed;
    }

    std::atomic<bool> stop_{false};
    std::vector<std::unique_ptr<Caller>> callers_;
};

// The library works through both doors on whatever service runs now.
void expectWorking() {
    const int32_t h = PymEventAcquire(kActionLaunch, "com.example.e2e", "after", 0, {});
    EXPECT_GT(h, 0);
    EXPECT_EQ(readPym({kCluster1MinFreq}), Values{"1804800"});
    PymRelease(h);
    ResourceList set{{kInputBoost, std::string("6")}};
    const int c = troxHalclient::troxResCtlRequest(0, set, getpid());
    EXPECT_GT(c, 0);
    EXPECT_EQ(troxHalclient::troxResCtlRelease(c), 0);
}

// A failed call is no death, and the next call reconnects.
TEST_F(E2eTest, InjectedFailureFailsOneCallOfEitherDoorAndTheNextReconnects) {
    ASSERT_EQ(troxHalclient::troxPropertySet("sim.fault.fail_next", "1"), 0);
    EXPECT_EQ(PymEventAcquire(kActionLaunch, "com.example.e2e", "fault", 0, {}), -1);
    EXPECT_EQ(countLines(*capture_, kPymTag,
                         "PymEventAcquire() failed : trox HAL service not available"),
              1u);
    const int32_t handle = PymEventAcquire(kActionLaunch, "com.example.e2e", "fault", 0, {});
    EXPECT_GT(handle, 0);
    EXPECT_EQ(readPym({kCluster1MinFreq}), Values{"1804800"});
    PymRelease(handle);

    ASSERT_EQ(troxHalclient::troxPropertySet("sim.fault.fail_next", "1"), 0);
    ResourceList set{{kInputBoost, std::string("5")}};
    EXPECT_EQ(troxHalclient::troxResCtlRequest(0, set, getpid()), -1);
    EXPECT_EQ(countLines(*capture_, kClientTag,
                         "troxResCtlRequest() failed: trox HAL service not available"),
              1u);
    const int again = troxHalclient::troxResCtlRequest(0, set, getpid());
    EXPECT_GT(again, 0);
    EXPECT_EQ(readClient({kInputBoost}), Values{"5"});
    EXPECT_EQ(troxHalclient::troxResCtlRelease(again), 0);
    EXPECT_EQ(readPym({kCluster1MinFreq, kInputBoost}), (Values{"710400", "0"}));
    EXPECT_EQ(countLines(*capture_, kPymTag, kDied), 0u) << "a failed call is not a death";
    EXPECT_EQ(countLines(*capture_, kClientTag, kDied), 0u) << "a failed call is not a death";
}

// Event API and client-class threads at work, troxd killed, then started again. With the
// parameter, the client class linked first: its death handler waits for its connection lock while
// a client-class thread holds it inside AServiceManager_waitForService until the restart; the
// Event API's handler must not wait behind it, or its reconnect would drop the pending notice and
// the death go unlogged.
class KillTest : public E2eTest, public ::testing::WithParamInterface<bool> {};

TEST_P(KillTest, EveryCallReturnsTheDeathIsSeenOncePerConnectionAndARestartReconnects) {
    if (GetParam()) {
        // A failed call makes the Event API connect again, which puts its link last.
        ASSERT_EQ(troxHalclient::troxPropertySet("sim.fault.fail_next", "1"), 0);
        ASSERT_EQ(pymInit(), -2);
        ASSERT_EQ(pymInit(), 0);
    }
    Load load({Door::kEventApi, Door::kEventApi, Door::kClientClass, Door::kClientClass});
    EXPECT_TRUE(pollUntil([&] { return load.allAnswered(0, 3); }, 10s));

    capture_->clear();
    killTroxd();
    // The Event API does not wait for a service that is gone: its threads keep failing
    // while client-class calls wait for the declared service to come back.
    EXPECT_TRUE(pollUntil([&] { return load.eventApiFailed(20); }, 5s));
    // Well inside the bound, which the waiting client-class calls count against.
    EXPECT_TRUE(waitForLines(*capture_, kPymTag, kDied, 1, 2s));

    EXPECT_TRUE(startTroxd());
    load.phase = 1;
    EXPECT_TRUE(pollUntil([&] { return load.allAnswered(1, 2); }, 10s))
            << "not every thread got through after the restart";
    load.stop();
    EXPECT_LT(load.slowestMs, 5000);
    EXPECT_TRUE(waitForLines(*capture_, kClientTag, kDied, 1, 5s));
    binder_host::drainNotifications();
    EXPECT_EQ(countLines(*capture_, kPymTag, kDied), 1u);
    EXPECT_EQ(countLines(*capture_, kClientTag, kDied), 1u);
    EXPECT_EQ(readPym({kCluster1MinFreq, kInputBoost}), (Values{"710400", "0"}));
    expectWorking();
}

INSTANTIATE_TEST_SUITE_P(LinkedFirst, KillTest, ::testing::Values(false, true),
                         [](const auto& p) { return p.param ? "ClientClass" : "EventApi"; });

TEST_F(E2eTest, RepeatedKillsLeaveNoHangNoDoubleCallbackAndAWorkingLibrary) {
    constexpr int kRestarts = 12;
    Load storm({Door::kEventApi, Door::kEventApi, Door::kOneWay, Door::kClientClass,
                Door::kRegistration, Door::kOneShot});
    for (int i = 0; i < kRestarts; ++i) {
        const int before = storm.rounds;
        ASSERT_TRUE(pollUntil([&] { return storm.rounds >= before + 70; }, kCallBound))
                << "no traffic before kill " << i;
        killTroxd();
        ASSERT_TRUE(startTroxd()) << "restart " << i;
    }
    storm.stop();
    EXPECT_LT(storm.slowestMs, std::chrono::milliseconds(kCallBound).count());

    size_t answered = 0;
    for (const auto& oneShot : storm.oneShots) {
        EXPECT_LE(oneShot->calls.load(), 1) << "a one-shot answer came twice";
        answered += oneShot->calls.load() == 1;
    }
    {
        // Only requests that never got their answer may remain: they stay until unload.
        std::lock_guard<std::mutex> lock(request_callback_mutex);
        EXPECT_LE(request_callbacks.size(), storm.oneShots.size() - answered);
    }
    // Whatever state the storm left, a fresh acquire works through both doors.
    ASSERT_TRUE(connectBothDoors());
    expectWorking();
}

}  // namespace
}  // namespace vexal::e2e
