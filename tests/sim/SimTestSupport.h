#pragma once

#include <aidl/vendor/vexal/hardware/trox/ITrox.h>
#include <android/binder_manager.h>
#include <binder_host/service_control.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RecordingCallback.h"
#include "trox_sim/Embedded.h"

namespace sim::testing {

using vexal::testing::RecordingCallback;

inline TroxRequestData entry(int32_t id, std::optional<std::string> value = std::nullopt) {
    TroxRequestData d;
    d.res_Id = static_cast<int64_t>(static_cast<uint32_t>(id));
    d.res_Value = std::move(value);
    return d;
}

inline TroxRequestData pathEntry(const std::string& path,
                                 std::optional<std::string> value = std::nullopt) {
    TroxRequestData d;
    d.res_Path = path;
    d.res_Value = std::move(value);
    return d;
}

inline TroxRequestParcel parcel(int32_t type, std::vector<TroxRequestData> data,
                                int64_t duration = 0) {
    TroxRequestParcel p;
    p.requestType = type;
    p.requestData = std::move(data);
    p.duration = duration;
    p.handle = -1;
    p.param = -1;
    return p;
}

// A record as the service sends it for a resource by id.
inline TroxRequestData idRecord(int32_t id, int64_t value) {
    return entry(id, std::to_string(value));
}

// Resources of the small test device.
inline constexpr int32_t kBig = 0x100;     // boost, default 100, range [100, 1000]
inline constexpr int32_t kLittle = 0x200;  // boost, default 50, range [50, 500]
inline constexpr int32_t kCap = 0x300;     // limit, default 900, range [300, 900]
inline constexpr char kBigPath[] = "/sys/test/big/min_freq";
inline constexpr char kCapPath[] = "/sys/test/cap/max_freq";

inline const char* testConfigJson() {
    return R"({
      "resources": [
        {"id": 256, "name": "big.min", "path": "/sys/test/big/min_freq", "kind": "boost",
         "default": 100, "min": 100, "max": 1000},
        {"id": "0x200", "name": "little.min", "kind": "boost", "default": 50, "min": 50, "max": 500},
        {"id": "0x300", "name": "cap", "path": "/sys/test/cap/max_freq", "kind": "limit",
         "default": 900, "min": 300, "max": 900}
      ],
      "actions": [
        {"id": 0, "name": "ACTION_LAUNCH", "settings": [
          {"resource": 256, "value": 800}, {"resource": "0x200", "value": 300}]},
        {"id": 6, "name": "ACTION_SWIPE_V", "settings": [{"resource": "/sys/test/big/min_freq", "value": 400}]}
      ],
      "scenarios": [{"id": 1, "name": "video", "settings": [{"resource": "0x300", "value": 500}]}],
      "rules": [{"id": 102, "name": "touch", "statuses": {"1": [{"resource": 256, "value": 600}]}}],
      "properties": {"ro.test.name": "sim"},
      "power_modes": {"0": 1, "2": 0},
      "features": {"7": 1},
      "dataset": [{"id": 1, "value": "soc:test"}, {"id": 2, "value": "clusters:2"}],
      "power_consistency": 87,
      "history": {"size": 4}
    })";
}

// The service published in this process on a clock the test moves, reached through a proxy.
class ServiceTest : public ::testing::Test {
  protected:
    void SetUp() override { start(testConfigJson()); }
    void start(const std::string& json) {
        binder_host::resetServiceManager();
        clock = std::make_shared<ManualClock>();
        embedded = startEmbeddedService(parseConfig(json), clock);
        trox = ITrox::fromBinder(ndk::SpAIBinder(AServiceManager_checkService(kTroxInstance)));
        ASSERT_NE(trox, nullptr);
        ASSERT_TRUE(trox->isRemote()) << "calls must cross the binder encoding";
    }

    void TearDown() override {
        trox.reset();
        embedded.reset();
        binder_host::resetServiceManager();
    }

    TroxService& service() { return *embedded->service(); }

    int32_t request(const TroxRequestParcel& p) {
        int32_t out = -7;
        EXPECT_TRUE(trox->troxResCtlRequest(p, &out).isOk());
        return out;
    }

    int32_t release(int32_t handle) {
        int32_t out = -7;
        EXPECT_TRUE(trox->troxResCtlRelease(handle, &out).isOk());
        return out;
    }

    std::vector<TroxRequestData> state(const TroxRequestParcel& p) {
        std::vector<TroxRequestData> out;
        EXPECT_TRUE(trox->troxResStateRequest(p, &out).isOk());
        return out;
    }

    std::string valueText(int32_t id) {
        auto reply = state(parcel(0, {entry(id)}));
        return reply.size() == 1 ? reply[0].res_Value.value_or("") : "<none>";
    }

    std::shared_ptr<RecordingCallback> listen(std::vector<TroxRequestData> data,
                                              int32_t* handle = nullptr) {
        auto cb = ndk::SharedRefBase::make<RecordingCallback>();
        int32_t out = -7;
        EXPECT_TRUE(trox->troxResListeningRegister(parcel(0, std::move(data)), cb, &out).isOk());
        EXPECT_GT(out, 0);
        if (handle != nullptr) *handle = out;
        return cb;
    }

    std::shared_ptr<ManualClock> clock;
    std::unique_ptr<EmbeddedService> embedded;
    std::shared_ptr<ITrox> trox;
};

}  // namespace sim::testing
