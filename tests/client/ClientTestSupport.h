#pragma once

#include "FakeTroxService.h"
#include "LogCapture.h"
#include "halclient.h"

#include <android/log.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace PymClient {

// Found by argument-dependent lookup from std::list's comparison and from GoogleTest's printer.
inline bool operator==(const Resource& a, const Resource& b) {
    return a.id == b.id && a.value == b.value;
}

inline void PrintTo(const Resource& r, std::ostream* os) {
    *os << "{" << r.id << ", " << (r.value ? "\"" + *r.value + "\"" : std::string("nullopt"))
        << "}";
}

}  // namespace PymClient

namespace vexal::testing {

using ::aidl::vendor::vexal::hardware::trox::ITroxCallback;
using Resources = std::list<PymClient::Resource>;
using Texts = std::vector<std::string>;
using Lines = std::vector<LogLine>;

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
inline LogLine cbError(const std::string& text) {
    return {ANDROID_LOG_ERROR, kCallbackTag, text};
}
inline LogLine failed(const std::string& name) {
    return error(name + "() failed: trox HAL service not available");
}
inline LogLine notDeclared() {
    return error("Trox is not declared, AServiceManager_isDeclared:0");
}
inline LogLine linkFailed() {
    return error("Unable to link to g_trox_hal death notifications!");
}

inline TroxRequestData record(int64_t id, std::optional<std::string> value = std::nullopt,
                              std::optional<std::string> path = std::nullopt) {
    TroxRequestData data;
    data.res_Id = id;
    data.res_Value = std::move(value);
    data.res_Path = std::move(path);
    return data;
}

inline TroxRequestData pathRecord(const std::string& path, std::optional<std::string> value) {
    return record(0, std::move(value), path);
}

inline std::optional<std::vector<std::optional<std::string>>> zdbdebug() {
    return std::vector<std::optional<std::string>>{std::string("zdbdebug")};
}

// Waits on a condition that another thread makes true.
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

class RecordingCallback : public IClientCallback {
  public:
    void onCallback(std::list<PymClient::Resource> resources) override {
        std::lock_guard<std::mutex> lock(mMutex);
        mReceived.push_back(std::move(resources));
        mChanged.notify_all();
    }
    bool waitFor(size_t count, std::chrono::milliseconds timeout = std::chrono::seconds(5)) {
        std::unique_lock<std::mutex> lock(mMutex);
        return mChanged.wait_for(lock, timeout, [&] { return mReceived.size() >= count; });
    }
    std::vector<Resources> received() {
        std::lock_guard<std::mutex> lock(mMutex);
        return mReceived;
    }

  private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::vector<Resources> mReceived;
};

class RecordingPathCallback : public IClientCallbackByPath {
  public:
    struct Delivery {
        Texts values;
        Texts paths;
        bool operator==(const Delivery& other) const {
            return values == other.values && paths == other.paths;
        }
    };
    void onCallback(Texts values, Texts paths) override {
        std::lock_guard<std::mutex> lock(mMutex);
        mReceived.push_back({std::move(values), std::move(paths)});
        mChanged.notify_all();
    }
    bool waitFor(size_t count, std::chrono::milliseconds timeout = std::chrono::seconds(5)) {
        std::unique_lock<std::mutex> lock(mMutex);
        return mChanged.wait_for(lock, timeout, [&] { return mReceived.size() >= count; });
    }
    std::vector<Delivery> received() {
        std::lock_guard<std::mutex> lock(mMutex);
        return mReceived;
    }

  private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::vector<Delivery> mReceived;
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
        {
            std::lock_guard<std::mutex> lock(request_callback_mutex);
            dropped.swap(request_callbacks);
        }
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

    // The line that ends a one-shot client's callback, once it was written.
    bool waitForCallbackLine(const LogLine& line, size_t count = 1) {
        return eventually([&] {
            auto lines = callbackLines();
            return static_cast<size_t>(std::count(lines.begin(), lines.end(), line)) >= count;
        });
    }

    LogCapture logs;
    FakeTroxService service;

  private:
    std::vector<int> mRegistered;
};

// A parcel with every field at its default, as the library starts from.
inline TroxRequestParcel parcel(int requestType) {
    TroxRequestParcel p;
    p.requestType = requestType;
    return p;
}

}  // namespace vexal::testing
