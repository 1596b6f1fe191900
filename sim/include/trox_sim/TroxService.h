#pragma once

#include <aidl/vendor/vexal/hardware/trox/BnTrox.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "trox_sim/Clock.h"
#include "trox_sim/Config.h"
#include "trox_sim/History.h"
#include "trox_sim/Properties.h"
#include "trox_sim/RequestTable.h"
#include "trox_sim/RequestType.h"
#include "trox_sim/ResourceModel.h"
#include "trox_sim/Timeline.h"
#include "trox_sim/TimelineRecorder.h"
#include "trox_sim/TraceExport.h"

namespace sim {

using aidl::vendor::vexal::hardware::trox::ITrox;
using aidl::vendor::vexal::hardware::trox::ITroxCallback;
using aidl::vendor::vexal::hardware::trox::TroxRequestData;
using aidl::vendor::vexal::hardware::trox::TroxRequestParcel;

inline constexpr char kTroxInstance[] = "vendor.vexal.hardware.trox.ITrox/default";
// Service-specific error of calls failed on purpose by fault injection.
inline constexpr int32_t kInjectedError = 1;

class TroxService : public aidl::vendor::vexal::hardware::trox::BnTrox {
  public:
    // No timeline: one of its own, sized by the configuration.
    explicit TroxService(Config config, std::shared_ptr<Clock> clock = nullptr,
                         std::string logTag = "troxd",
                         std::shared_ptr<Timeline> timeline = nullptr);
    ~TroxService() override;

    // ITrox
    ndk::ScopedAStatus reservedSlot1() override;
    ndk::ScopedAStatus trox_init() override;
    ndk::ScopedAStatus troxResCtlRequest(const TroxRequestParcel& request,
                                         int32_t* _aidl_return) override;
    ndk::ScopedAStatus troxResCtlRelease(int32_t handle, int32_t* _aidl_return) override;
    ndk::ScopedAStatus troxResStateRequest(const TroxRequestParcel& request,
                                           std::vector<TroxRequestData>* _aidl_return) override;
    ndk::ScopedAStatus troxResListeningRegister(const TroxRequestParcel& request,
                                                const std::shared_ptr<ITroxCallback>& callback,
                                                int32_t* _aidl_return) override;
    ndk::ScopedAStatus troxResListeningUnRegister(int32_t handle, int32_t* _aidl_return) override;
    ndk::ScopedAStatus troxPropertyGet(const std::string& key, std::string* _aidl_return) override;
    ndk::ScopedAStatus troxPropertySet(const std::string& key, const std::string& value,
                                       int32_t* _aidl_return) override;
    ndk::ScopedAStatus troxThermalListeningRegister(const std::vector<int32_t>& ids,
                                                    const std::shared_ptr<ITroxCallback>& callback,
                                                    int32_t* _aidl_return) override;
    ndk::ScopedAStatus troxThermalListeningUnregister(int32_t handle,
                                                      int32_t* _aidl_return) override;
    ndk::ScopedAStatus reservedSlot12() override;
    ndk::ScopedAStatus setRelatedSysInfo(int32_t info, int32_t value,
                                         int32_t* _aidl_return) override;
    ndk::ScopedAStatus troxRuleCtl(int32_t ruleId, int32_t status,
                                   const std::vector<TroxRequestData>& data,
                                   int32_t* _aidl_return) override;
    ndk::ScopedAStatus troxResCtlRequestOneWay(const TroxRequestParcel& request) override;

    // Fault injection. The next count calls fail with a service-specific error.
    void failNextCalls(int count, int32_t error = kInjectedError);
    // Every call waits this long before it is served (0: no delay).
    void setCallDelayMs(int64_t ms);
    // What "die" does: troxd exits, an embedded service unpublishes itself.
    void setDieHandler(std::function<void()> handler);
    void die();

    // Read-outs for tests and tools.
    int64_t valueOf(int32_t resourceId);
    size_t activeRequests();
    size_t listenerCount();
    size_t historySize();
    bool historyEnabled();
    std::string property(const std::string& key);
    const Config& config() const { return config_; }
    const std::shared_ptr<Timeline>& timeline() const { return timeline_.timeline(); }

  private:
    struct Listener {
        int32_t handle = 0;
        std::shared_ptr<ITroxCallback> callback;
        std::set<int32_t> ids;  // empty: every resource
        bool byPath = false;
        bool thermal = false;
        int32_t pid = 0;
    };
    struct Delivery {
        std::shared_ptr<ITroxCallback> callback;
        std::vector<TroxRequestData> records;
        int32_t listenerHandle = 0;  // 0 for a one-shot reply
    };
    // Callbacks gathered under the state lock and sent after it, in order.
    using Deliveries = std::vector<Delivery>;

    ndk::ScopedAStatus enter(const char* op);
    int32_t control(const TroxRequestParcel& request, bool oneWay, Deliveries& out);
    int32_t acquire(const TroxRequestParcel& request, bool oneWay, Deliveries& out);
    int32_t diagnostics(const TroxRequestParcel& request);
    int32_t thermalNotify(const TroxRequestParcel& request, Deliveries& out);
    bool resolve(const TroxRequestData& entry, Setting* setting, bool* byPath,
                 std::string* why) const;
    void notifyChanges(const std::vector<Change>& changes, Deliveries& out);
    void rearmLocked();
    void onAlarm();
    void expireLocked(Deliveries& out);
    void dropOrphansLocked(Deliveries& out);
    bool roomLocked(const char* what, int32_t pid);
    bool textFits(const char* what, const std::optional<std::string>& text, int32_t pid) const;
    void record(const std::string& op, int32_t pid, const std::string& line) {
        history_.record(op, pid, line);
    }
    void send(std::unique_lock<std::mutex>& state, Deliveries deliveries);

    const Config config_;
    const std::shared_ptr<Clock> clock_;
    const std::string tag_;

    std::mutex mutex_;      // guards everything below
    std::mutex sendMutex_;  // keeps callbacks in the order of the changes; taken after mutex_
    ResourceModel model_;
    RequestTable requests_;
    std::map<int32_t, Listener> listeners_;
    PropertyStore properties_;
    std::map<int32_t, int32_t> ruleStatus_;
    std::map<int32_t, std::string> thermalLevels_;
    std::map<int32_t, int32_t> sysInfo_;
    RequestHistory history_;

    std::atomic<int> failNext_{0};
    std::atomic<int32_t> failError_{kInjectedError};
    std::atomic<int64_t> delayMs_{0};
    std::mutex dieMutex_;
    std::function<void()> dieHandler_;

    TimelineRecorder timeline_;
    TraceExport traceExport_;
};

}  // namespace sim
