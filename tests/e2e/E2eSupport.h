#pragma once

// The library in this process against troxd in another one.

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "IClientCallback.h"
#include "LogCapture.h"
#include "PymClient.h"

namespace vexal::e2e {

using namespace std::chrono_literals;
using ResourceList = std::list<PymClient::Resource>;
using Values = std::vector<std::string>;

// Resource ids and values of sim/config/default.json.
inline constexpr int32_t kCluster1MinFreq = 0x01010020;
inline constexpr int32_t kGpuMinFreq = 0x01020050;
inline constexpr int32_t kInputBoost = 0x01011070;
inline constexpr int32_t kActionLaunch = 0;  // its position in the wrapper's catalogue too

inline constexpr char kPymTag[] = "[PYM_CLIENT]";
inline constexpr char kClientTag[] = "TROXFramework-lib-vendor";
inline constexpr char kDied[] = "Trox HAL Service died";

// Records every call of an id-form callback.
class Recorder : public IClientCallback {
  public:
    void onCallback(ResourceList resources) override {
        std::lock_guard<std::mutex> lock(mutex_);
        calls_.push_back(std::move(resources));
        cv_.notify_all();
    }
    // The n-th call (1-based) once it has come, or nothing after the timeout.
    std::optional<ResourceList> waitForCall(size_t n, std::chrono::milliseconds timeout = 5s) {
        std::unique_lock<std::mutex> lock(mutex_);
        if (!cv_.wait_for(lock, timeout, [&] { return calls_.size() >= n; })) return std::nullopt;
        return calls_[n - 1];
    }

  private:
    std::mutex mutex_;
    std::condition_variable cv_;
    std::vector<ResourceList> calls_;
};

// "id=value " for each resource of a call, or "no call".
std::string describe(const std::optional<ResourceList>& call);

// Values of ids through the Event API, and through the client class; "<none>" for ids not filled.
Values readPym(const std::vector<int32_t>& ids);
Values readClient(const std::vector<int32_t>& ids);

size_t countLines(const testing::LogCapture& capture, const std::string& tag,
                  const std::string& text);
// Polls cond every few milliseconds until it holds or the timeout passes.
bool pollUntil(const std::function<bool()>& cond, std::chrono::milliseconds timeout);
// Polls the capture until tag has at least count lines containing text.
bool waitForLines(const testing::LogCapture& capture, const std::string& tag,
                  const std::string& text, size_t count, std::chrono::milliseconds timeout);

// Each test: a fresh private directory, troxd serving in it, both library connections made.
class E2eTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // Starts troxd (again) in this test's directory and waits until it answers.
    ::testing::AssertionResult startTroxd();
    // SIGKILL and reap; its log goes to standard error once the test has failed.
    void killTroxd();
    // Both doors connected to the running troxd (a stale connection fails once, then reconnects).
    ::testing::AssertionResult connectBothDoors();

    std::string dir_;
    std::unique_ptr<testing::LogCapture> capture_;

  private:
    std::unique_ptr<testing::ChildProcess> troxd_;
};

}  // namespace vexal::e2e
