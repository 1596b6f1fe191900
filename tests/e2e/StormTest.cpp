// Many callers through every door while troxd is killed and restarted again and again.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <thread>

#include "E2eSupport.h"
#include "TroxCallbackClient.h"
#include "halclient.h"
#include "pym.h"

namespace vexal::e2e {
namespace {

using ResourceList = std::list<PymClient::Resource>;
using Clock = std::chrono::steady_clock;

constexpr int kRestarts = 12;
// A client-class call waits for a declared service, so a call may span one outage.
constexpr auto kCallBound = 10s;

// Counts its deliveries: a one-shot answer must come at most once.
class OneShot : public IClientCallback {
  public:
    void onCallback(std::list<PymClient::Resource>) override { ++calls; }
    std::atomic<int> calls{0};
};

class Storm {
  public:
    ~Storm() { stop(); }

    void start() {
        workers_.emplace_back([this] { loop([this] { eventApiRound(); }); });
        workers_.emplace_back([this] { loop([this] { eventApiRound(); }); });
        workers_.emplace_back([this] { loop([this] { classRound(); }); });
        workers_.emplace_back([this] { loop([this] { registrationRound(); }); });
        workers_.emplace_back([this] { loop([this] { oneShotRound(); }); });
    }
    void stop() {
        stop_ = true;
        for (auto& worker : workers_) {
            if (worker.joinable()) worker.join();
        }
    }

    std::chrono::milliseconds slowest() const { return std::chrono::milliseconds(slowestMs_); }
    int calls() const { return calls_; }
    const std::vector<std::shared_ptr<OneShot>>& oneShots() const { return oneShots_; }

  private:
    void loop(const std::function<void()>& round) {
        while (!stop_) round();
    }

    template <typename Call>
    auto timed(Call call) {
        const auto start = Clock::now();
        auto result = call();
        const auto ms =
                std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
        int64_t seen = slowestMs_;
        while (ms > seen && !slowestMs_.compare_exchange_weak(seen, ms)) {
        }
        ++calls_;
        return result;
    }

    void eventApiRound() {
        const int32_t h = timed([] { return PymEventAcquire(0, "com.storm", "pym", 0, {}); });
        timed([] { return readPym({kCluster1MinFreq}).size(); });
        const int32_t oneWay =
                timed([] { return PymEventAcquireOneWay(0, "com.storm", "oneway", 0, {}); });
        if (h > 0)
            timed([h] {
                PymRelease(h);
                return 0;
            });
        if (oneWay >= 0)
            timed([oneWay] {
                PymRelease(oneWay);
                return 0;
            });
    }

    void classRound() {
        ResourceList set{{kInputBoost, std::string("3")}};
        const int h = timed([&] { return troxHalclient::troxResCtlRequest(0, set, getpid()); });
        timed([] { return readClient({kInputBoost}).size(); });
        if (h > 0) timed([h] { return troxHalclient::troxResCtlRelease(h); });
    }

    void registrationRound() {
        ResourceList ids{{kCluster1MinFreq, std::string("0")}};
        auto listener = std::make_shared<Recorder>();
        const int h = timed(
                [&] { return troxHalclient::troxResListeningRegister(ids, getpid(), listener); });
        if (h > 0) timed([h] { return troxHalclient::troxResListeningUnRegister(h); });
    }

    void oneShotRound() {
        auto answer = std::make_shared<OneShot>();
        std::shared_ptr<IClientCallback> callback = answer;
        ResourceList set{{kInputBoost, std::string("4")}};
        const int h = timed([&] {
            return troxHalclient::troxResCtlRequest(-1, 0, set, -1, -1, getpid(), callback);
        });
        {
            std::lock_guard<std::mutex> lock(mutex_);
            oneShots_.push_back(answer);
        }
        if (h > 0) timed([h] { return troxHalclient::troxResCtlRelease(h); });
    }

    std::atomic<bool> stop_{false};
    std::atomic<int64_t> slowestMs_{0};
    std::atomic<int> calls_{0};
    std::mutex mutex_;
    std::vector<std::shared_ptr<OneShot>> oneShots_;
    std::vector<std::thread> workers_;
};

class StormTest : public E2eTest {};

TEST_F(StormTest, RepeatedKillsLeaveNoHangNoDoubleCallbackAndAWorkingLibrary) {
    Storm storm;
    storm.start();
    for (int i = 0; i < kRestarts; ++i) {
        const int before = storm.calls();
        ASSERT_TRUE(pollUntil([&] { return storm.calls() >= before + 200; }, kCallBound))
                << "no traffic before kill " << i;
        troxd_->kill9();
        ASSERT_TRUE(startTroxd()) << "restart " << i;
    }
    storm.stop();
    EXPECT_LT(storm.slowest(), kCallBound);

    size_t answered = 0;
    for (const auto& oneShot : storm.oneShots()) {
        EXPECT_LE(oneShot->calls.load(), 1) << "a one-shot answer came twice";
        answered += oneShot->calls.load() == 1;
    }
    {
        // Only requests that never got their answer may remain: they stay until unload.
        std::lock_guard<std::mutex> lock(request_callback_mutex);
        EXPECT_LE(request_callbacks.size(), storm.oneShots().size() - answered);
    }
    std::printf(
            "storm: %d restarts, %d calls, slowest %lld ms, %zu one-shot requests, %zu answered\n",
            kRestarts, storm.calls(), static_cast<long long>(storm.slowest().count()),
            storm.oneShots().size(), answered);

    // Whatever state the storm left, a fresh acquire works through both doors.
    ASSERT_TRUE(connectBothDoors());
    const int32_t h = PymEventAcquire(kActionLaunch, "com.storm", "after", 0, {});
    EXPECT_GT(h, 0);
    EXPECT_EQ(readPym({kCluster1MinFreq}), (std::vector<std::string>{"1804800"}));
    PymRelease(h);
    ResourceList set{{kInputBoost, std::string("6")}};
    const int c = troxHalclient::troxResCtlRequest(0, set, getpid());
    EXPECT_GT(c, 0);
    EXPECT_EQ(troxHalclient::troxResCtlRelease(c), 0);
}

}  // namespace
}  // namespace vexal::e2e
