#pragma once

#include <aidl/vendor/vexal/hardware/trox/BnTrox.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace vexal::testing {

using ::aidl::vendor::vexal::hardware::trox::BnTrox;
using ::aidl::vendor::vexal::hardware::trox::ITroxCallback;
using ::aidl::vendor::vexal::hardware::trox::TroxRequestData;
using ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel;

// Everything one call to the fake service carried, as the service side decoded it.
struct RecordedCall {
    explicit RecordedCall(std::string name = {}) : method(std::move(name)) {}

    std::string method;
    std::optional<TroxRequestParcel> parcel;
    std::vector<int32_t> ints;                // handles, ids, rule id and status, info pair
    std::vector<TroxRequestData> data;        // the data list of troxRuleCtl
    std::vector<std::string> texts;           // property key and value
    std::shared_ptr<ITroxCallback> callback;  // the explicit callback argument
};

// An ITrox service for tests: records every call and answers what the test scripted. An integer
// result that was not scripted is 0: the stub would otherwise send back whatever its slot held.
class FakeTrox : public BnTrox {
  public:
    using StatusMaker = std::function<ndk::ScopedAStatus()>;

    // Scripting.
    void setIntResult(const std::string& method, int32_t value);
    void setStateReply(std::vector<TroxRequestData> reply);
    void setPropertyValue(std::string value);
    // The next `count` calls of any method answer with `make()` instead of running.
    void failNextCalls(int count, StatusMaker make = serviceSpecificError);
    // While held, calls block (after being recorded) until released.
    void holdCalls();
    void releaseCalls();

    // Inspection.
    std::vector<RecordedCall> calls() const;
    RecordedCall lastCall() const;
    size_t callCount() const;
    // Waits until at least `count` calls were recorded.
    bool waitForCalls(size_t count,
                      std::chrono::milliseconds timeout = std::chrono::seconds(5)) const;
    void clearCalls();

    static ndk::ScopedAStatus serviceSpecificError();

    ndk::ScopedAStatus reservedSlot1() override;
    ndk::ScopedAStatus trox_init() override;
    ndk::ScopedAStatus troxResCtlRequest(const TroxRequestParcel& request, int32_t* out) override;
    ndk::ScopedAStatus troxResCtlRelease(int32_t handle, int32_t* out) override;
    ndk::ScopedAStatus troxResStateRequest(const TroxRequestParcel& request,
                                           std::vector<TroxRequestData>* out) override;
    ndk::ScopedAStatus troxResListeningRegister(const TroxRequestParcel& request,
                                                const std::shared_ptr<ITroxCallback>& callback,
                                                int32_t* out) override;
    ndk::ScopedAStatus troxResListeningUnRegister(int32_t handle, int32_t* out) override;
    ndk::ScopedAStatus troxPropertyGet(const std::string& key, std::string* out) override;
    ndk::ScopedAStatus troxPropertySet(const std::string& key, const std::string& value,
                                       int32_t* out) override;
    ndk::ScopedAStatus troxThermalListeningRegister(const std::vector<int32_t>& ids,
                                                    const std::shared_ptr<ITroxCallback>& callback,
                                                    int32_t* out) override;
    ndk::ScopedAStatus troxThermalListeningUnregister(int32_t handle, int32_t* out) override;
    ndk::ScopedAStatus reservedSlot12() override;
    ndk::ScopedAStatus setRelatedSysInfo(int32_t info, int32_t value, int32_t* out) override;
    ndk::ScopedAStatus troxRuleCtl(int32_t ruleId, int32_t status,
                                   const std::vector<TroxRequestData>& data, int32_t* out) override;
    ndk::ScopedAStatus troxResCtlRequestOneWay(const TroxRequestParcel& request) override;

  private:
    // Records the call, waits while calls are held, and says how to answer.
    std::optional<ndk::ScopedAStatus> record(RecordedCall call);
    ndk::ScopedAStatus answerInt(RecordedCall call, int32_t* out);

    mutable std::mutex mMutex;
    mutable std::condition_variable mChanged;
    std::vector<RecordedCall> mCalls;
    std::map<std::string, int32_t> mIntResults;
    std::vector<TroxRequestData> mStateReply;
    std::string mPropertyValue;
    int mFailuresLeft = 0;
    StatusMaker mFailure;
    bool mHeld = false;
};

}  // namespace vexal::testing
