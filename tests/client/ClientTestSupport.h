#pragma once

#include "FakeTroxService.h"
#include "LogCapture.h"
#include "halclient.h"

#include <android/log.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <future>
#include <mutex>
#include <thread>

namespace PymClient {

// Found by argument-dependent lookup from std::list's comparison.
inline bool operator==(const Resource& a, const Resource& b) {
    return a.id == b.id && a.value == b.value;
}

}  // namespace PymClient

namespace vexal::testing {

using ::aidl::vendor::vexal::hardware::trox::ITroxCallback;
using Resources = std::list<PymClient::Resource>;
using Texts = std::vector<std::string>;
using Lines = std::vector<LogLine>;
using PathDelivery = std::pair<Texts, Texts>;  // values, paths

inline constexpr char kTroxTag[] = "TROXFramework-lib-vendor";
inline constexpr char kCallbackTag[] = "TroxFramework-lib-vendor";

inline LogLine info(const std::string& text) {
    return {ANDROID_LOG_INFO, kTroxTag, text};
}
inline LogLine error(const std::string& text) {
    return {ANDROID_LOG_ERROR, kTroxTag, text};
}
inline LogLine cbInfo(const std::string& text) {
    return {ANDROID_LOG_INFO, kCallbackTag, text};
}
inline LogLine failed(const std::string& name) {
    return error(name + "() failed: trox HAL service not available");
}

inline TroxRequestData record(int64_t id, std::optional<std::string> value = std::nullopt,
                              std::optional<std::string> path = std::nullopt) {
    return {id, std::move(value), std::move(path), std::nullopt};
}

inline TroxRequestData pathRecord(const std::string& path, std::optional<std::string> value) {
    return record(0, std::move(value), path);
}

// A parcel as the library fills it; the path members also tag it for the service's debugging.
inline TroxRequestParcel parcel(int requestType, std::vector<TroxRequestData> data = {},
                                int pid = 0, int handle = 0, int64_t duration = 0, int param = 0,
                                bool flag = false, bool tagged = false) {
    TroxRequestParcel p;
    p.requestType = requestType;
    p.requestData = std::move(data);
    p.pid = pid;
    p.handle = handle;
    p.duration = duration;
    p.param = param;
    p.flag = flag;
    if (tagged) p.debugTags = std::vector<std::optional<std::string>>{std::string("zdbdebug")};
    return p;
}

// Polls with a deadline, for what no one signals (log lines, the one-shot registry).
template <typename Predicate>
bool eventually(Predicate&& predicate,
                std::chrono::milliseconds timeout = std::chrono::seconds(5)) {
    const auto end = std::chrono::steady_clock::now() + timeout;
    while (!predicate()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

// Keeps what either client callback form was handed, in arrival order.
class ClientRecorder : public IClientCallback, public IClientCallbackByPath {
  public:
    void onCallback(std::list<PymClient::Resource> resources) override {
        add([&] { mIds.push_back(std::move(resources)); });
    }
    void onCallback(Texts values, Texts paths) override {
        add([&] { mPaths.emplace_back(std::move(values), std::move(paths)); });
    }
    // Waits until `count` deliveries of either form arrived.
    bool waitFor(size_t count, std::chrono::milliseconds timeout = std::chrono::seconds(5)) {
        std::unique_lock<std::mutex> lock(mMutex);
        return mChanged.wait_for(lock, timeout,
                                 [&] { return mIds.size() + mPaths.size() >= count; });
    }
    std::vector<Resources> ids() { return copy(mIds); }
    std::vector<PathDelivery> paths() { return copy(mPaths); }
    // Whether request_callback_mutex was held by anyone while a delivery ran. Only meaningful
    // where no other thread uses the library.
    bool lockHeldDuringDelivery() const { return mLockHeld; }

  private:
    template <typename T>
    T copy(const T& kept) {
        std::lock_guard<std::mutex> lock(mMutex);
        return kept;
    }
    template <typename Store>
    void add(Store&& store) {
        // Asked from another thread: a second try_lock by the holder itself is undefined.
        const bool held = !std::async(std::launch::async, [] {
                               if (!request_callback_mutex.try_lock()) return false;
                               request_callback_mutex.unlock();
                               return true;
                           }).get();
        std::lock_guard<std::mutex> lock(mMutex);
        mLockHeld = mLockHeld || held;
        store();
        mChanged.notify_all();
    }

    std::mutex mMutex;
    std::condition_variable mChanged;
    std::vector<Resources> mIds;
    std::vector<PathDelivery> mPaths;
    bool mLockHeld = false;
};

inline size_t requestCallbackCount() {
    std::lock_guard<std::mutex> lock(request_callback_mutex);
    return request_callbacks.size();
}

// Every test starts disconnected (the previous service's death emptied the connection), with no
// one-shot clients left over, and ends with its listening registrations undone.
class ClientTest : public ::testing::Test {
  protected:
    void SetUp() override {
        dropRequestCallbacks();
        logs.clear();
    }

    void TearDown() override {
        for (int handle : mRegistered) troxHalclient::troxResListeningUnRegister(handle);
        dropRequestCallbacks();
    }

    static void dropRequestCallbacks() {
        std::vector<std::shared_ptr<TroxCallbackClient>> dropped;
        std::lock_guard<std::mutex> lock(request_callback_mutex);
        dropped.swap(request_callbacks);
    }

    // Undone in TearDown, while the service still runs.
    void registered(int handle) { mRegistered.push_back(handle); }

    Lines troxLines() const { return logs.linesWithTag(kTroxTag); }
    Lines callbackLines() const { return logs.linesWithTag(kCallbackTag); }

    FakeTrox& fake() { return service.fake(); }
    TroxRequestParcel lastParcel() {
        auto call = fake().lastCall();
        EXPECT_TRUE(call.parcel.has_value()) << call.method;
        return call.parcel.value_or(TroxRequestParcel{});
    }

    // As a device service would: from a thread of its own.
    static void sendFromService(const std::shared_ptr<ITroxCallback>& callback,
                                const std::vector<TroxRequestData>& data) {
        ASSERT_NE(callback, nullptr);
        std::thread sender([&] { EXPECT_TRUE(callback->onCallback(data).isOk()); });
        sender.join();
    }

    // The callback lines, once `count` of them were written.
    Lines callbackLinesOnce(size_t count) {
        EXPECT_TRUE(eventually([&] { return callbackLines().size() >= count; }));
        return callbackLines();
    }

    LogCapture logs;
    FakeTroxService service;

  private:
    std::vector<int> mRegistered;
};

}  // namespace vexal::testing
