// troxd killed under load, restarted, and failing on purpose.
#include <binder_host/service_control.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "E2eSupport.h"
#include "halclient.h"
#include "pym.h"

namespace vexal::e2e {
namespace {

using ResourceList = std::list<PymClient::Resource>;
using Clock = std::chrono::steady_clock;

constexpr auto kCallBound = 5s;

// One thread doing acquire, read and release in a loop through one door.
class Traffic {
  public:
    Traffic(bool eventApi, const std::atomic<int>& phase) : eventApi_(eventApi), phase_(phase) {
        thread_ = std::thread([this] { run(); });
    }
    ~Traffic() { join(); }
    void join() {
        stop_ = true;
        if (thread_.joinable()) thread_.join();
    }
    int succeeded(int phase) const { return ok_[phase]; }
    int failed() const { return failed_; }
    bool eventApi() const { return eventApi_; }
    std::chrono::milliseconds slowest() const { return std::chrono::milliseconds(slowestMs_); }

  private:
    template <typename Call>
    bool timed(Call call) {
        const auto start = Clock::now();
        const bool ok = call();
        const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
        slowestMs_ = std::max<int64_t>(slowestMs_, ms.count());
        ok ? ++ok_[phase_] : ++failed_;
        return ok;
    }

    void run() {
        while (!stop_) {
            if (eventApi_) {
                int32_t h = -1;
                if (!timed([&] { return (h = PymEventAcquire(0, "com.e2e", "load", 0, {})) > 0; }))
                    continue;
                timed([] { return readPym({kCluster1MinFreq})[0] != "<none>"; });
                timed([h] {
                    PymRelease(h);
                    return true;
                });
            } else {
                int h = -1;
                ResourceList set{{kInputBoost, std::string("3")}};
                if (!timed([&] { return (h = troxHalclient::troxResCtlRequest(0, set, 1)) > 0; }))
                    continue;
                timed([] { return readClient({kInputBoost})[0] != "<none>"; });
                timed([h] { return troxHalclient::troxResCtlRelease(h) == 0; });
            }
        }
    }

    const bool eventApi_;
    const std::atomic<int>& phase_;
    std::atomic<bool> stop_{false};
    std::atomic<int> ok_[2] = {};
    std::atomic<int> failed_{0};
    std::atomic<int64_t> slowestMs_{0};
    std::thread thread_;
};

class KillTest : public E2eTest {
  protected:
    // Event API and client-class threads at work, troxd killed, then started again.
    void killDuringTrafficAndRestart() {
        std::atomic<int> phase{0};
        std::vector<std::unique_ptr<Traffic>> traffic;
        for (bool eventApi : {true, true, false, false}) {
            traffic.push_back(std::make_unique<Traffic>(eventApi, phase));
        }
        auto all = [&](auto pred) {
            return std::all_of(traffic.begin(), traffic.end(),
                               [&](const auto& t) { return pred(*t); });
        };
        EXPECT_TRUE(pollUntil(
                [&] { return all([](const Traffic& t) { return t.succeeded(0) >= 3; }); }, 10s));

        capture_->clear();
        troxd_->kill9();
        // The Event API does not wait for a service that is gone: its threads keep failing
        // while client-class calls wait for the declared service to come back.
        EXPECT_TRUE(pollUntil(
                [&] {
                    return all([](const Traffic& t) { return !t.eventApi() || t.failed() >= 20; });
                },
                kCallBound));
        // Well inside the bound, which the waiting client-class calls count against.
        EXPECT_TRUE(waitForLines(*capture_, kPymTag, kDied, 1, 2s));

        EXPECT_TRUE(startTroxd());
        phase = 1;
        EXPECT_TRUE(pollUntil(
                [&] { return all([](const Traffic& t) { return t.succeeded(1) >= 2; }); }, 10s))
                << "not every thread got through after the restart";
        for (auto& t : traffic) t->join();

        for (size_t i = 0; i < traffic.size(); ++i) {
            EXPECT_LT(traffic[i]->slowest(), kCallBound) << "thread " << i;
        }
        EXPECT_TRUE(waitForLines(*capture_, kClientTag, kDied, 1, kCallBound));
        binder_host::drainNotifications();
        EXPECT_EQ(countLines(*capture_, kPymTag, kDied), 1u);
        EXPECT_EQ(countLines(*capture_, kClientTag, kDied), 1u);

        // A fresh service: nothing the dead one held survives.
        EXPECT_EQ(readPym({kCluster1MinFreq, kInputBoost}),
                  (std::vector<std::string>{"710400", "0"}));
        const int32_t h = PymEventAcquire(kActionLaunch, "com.example.e2e", "after", 0, {});
        EXPECT_GT(h, 0);
        PymRelease(h);
        ResourceList set{{kInputBoost, std::string("6")}};
        const int c = troxHalclient::troxResCtlRequest(0, set, getpid());
        EXPECT_GT(c, 0);
        EXPECT_EQ(troxHalclient::troxResCtlRelease(c), 0);
    }
};

TEST_F(KillTest, EveryCallReturnsTheDeathIsSeenOncePerConnectionAndARestartReconnects) {
    killDuringTrafficAndRestart();
}

// The client class's death handler waits for its connection lock while a client-class thread
// holds it inside AServiceManager_waitForService until the restart; the Event API's handler must
// not wait behind it, or its reconnect would drop the pending notice and the death go unlogged.
TEST_F(KillTest, DeathIsSeenByBothDoorsWhenTheClientClassLinkedFirst) {
    // A failed call makes the Event API connect again, which puts its link last.
    ASSERT_EQ(troxHalclient::troxPropertySet("sim.fault.fail_next", "1"), 0);
    ASSERT_EQ(pymInit(), -2);
    ASSERT_EQ(pymInit(), 0);
    killDuringTrafficAndRestart();
}

TEST_F(E2eTest, InjectedFailureFailsOneClientCallAndTheNextReconnects) {
    ASSERT_EQ(troxHalclient::troxPropertySet("sim.fault.fail_next", "1"), 0);
    ResourceList set{{kInputBoost, std::string("5")}};
    EXPECT_EQ(troxHalclient::troxResCtlRequest(0, set, getpid()), -1);
    EXPECT_EQ(countLines(*capture_, kClientTag,
                         "troxResCtlRequest() failed: trox HAL service not available"),
              1u);
    const int handle = troxHalclient::troxResCtlRequest(0, set, getpid());
    EXPECT_GT(handle, 0);
    EXPECT_EQ(readClient({kInputBoost}), std::vector<std::string>{"5"});
    EXPECT_EQ(troxHalclient::troxResCtlRelease(handle), 0);
    EXPECT_EQ(countLines(*capture_, kClientTag, kDied), 0u) << "a failed call is not a death";
}

TEST_F(E2eTest, InjectedFailureFailsOneEventApiCallAndTheNextReconnects) {
    ASSERT_EQ(troxHalclient::troxPropertySet("sim.fault.fail_next", "1"), 0);
    EXPECT_EQ(PymEventAcquire(kActionLaunch, "com.example.e2e", "fault", 0, {}), -1);
    EXPECT_EQ(countLines(*capture_, kPymTag,
                         "PymEventAcquire() failed : trox HAL service not available"),
              1u);
    const int32_t handle = PymEventAcquire(kActionLaunch, "com.example.e2e", "fault", 0, {});
    EXPECT_GT(handle, 0);
    EXPECT_EQ(readPym({kCluster1MinFreq}), std::vector<std::string>{"1804800"});
    PymRelease(handle);
    EXPECT_EQ(readPym({kCluster1MinFreq}), std::vector<std::string>{"710400"});
    EXPECT_EQ(countLines(*capture_, kPymTag, kDied), 0u) << "a failed call is not a death";
}

}  // namespace
}  // namespace vexal::e2e
