#pragma once

#include <aidl/vendor/vexal/hardware/trox/BnTroxCallback.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace vexal::testing {

// An ITroxCallback that keeps every delivery. Deliveries are one-way, so tests wait for them.
class RecordingCallback : public ::aidl::vendor::vexal::hardware::trox::BnTroxCallback {
  public:
    using Data = std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData>;

    ndk::ScopedAStatus onCallback(const Data& data) override {
        std::function<ndk::ScopedAStatus()> answer;
        {
            std::lock_guard<std::mutex> lock(mMutex);
            mCalls.push_back(data);
            answer = mReply;
        }
        mChanged.notify_all();
        return answer ? answer() : ndk::ScopedAStatus::ok();
    }

    // What every later delivery answers; a one-way caller never sees it, a two-way one does.
    void setReply(std::function<ndk::ScopedAStatus()> reply) {
        std::lock_guard<std::mutex> lock(mMutex);
        mReply = std::move(reply);
    }

    // The n-th delivery (1-based) once it has arrived; nullopt after the timeout.
    std::optional<Data> waitForCall(size_t n,
                                    std::chrono::milliseconds timeout = std::chrono::seconds(5)) {
        std::unique_lock<std::mutex> lock(mMutex);
        if (!mChanged.wait_for(lock, timeout, [&] { return mCalls.size() >= n; }))
            return std::nullopt;
        return mCalls[n - 1];
    }

    size_t count() const {
        std::lock_guard<std::mutex> lock(mMutex);
        return mCalls.size();
    }

  private:
    mutable std::mutex mMutex;
    std::condition_variable mChanged;
    std::vector<Data> mCalls;
    std::function<ndk::ScopedAStatus()> mReply;
};

}  // namespace vexal::testing
