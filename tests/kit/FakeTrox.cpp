#include "FakeTrox.h"

namespace vexal::testing {

void FakeTrox::setIntResult(const std::string& method, int32_t value) {
    std::lock_guard<std::mutex> lock(mMutex);
    mIntResults[method] = value;
}

void FakeTrox::setStateReply(std::vector<TroxRequestData> reply) {
    std::lock_guard<std::mutex> lock(mMutex);
    mStateReply = std::move(reply);
}

void FakeTrox::setPropertyValue(std::string value) {
    std::lock_guard<std::mutex> lock(mMutex);
    mPropertyValue = std::move(value);
}

void FakeTrox::failNextCalls(int count, StatusMaker make) {
    std::lock_guard<std::mutex> lock(mMutex);
    mFailuresLeft = count;
    mFailure = std::move(make);
}

void FakeTrox::holdCalls() {
    std::lock_guard<std::mutex> lock(mMutex);
    mHeld = true;
}

void FakeTrox::releaseCalls() {
    {
        std::lock_guard<std::mutex> lock(mMutex);
        mHeld = false;
    }
    mChanged.notify_all();
}

std::vector<RecordedCall> FakeTrox::calls() const {
    std::lock_guard<std::mutex> lock(mMutex);
    return mCalls;
}

RecordedCall FakeTrox::lastCall() const {
    std::lock_guard<std::mutex> lock(mMutex);
    return mCalls.empty() ? RecordedCall{} : mCalls.back();
}

size_t FakeTrox::callCount() const {
    std::lock_guard<std::mutex> lock(mMutex);
    return mCalls.size();
}

bool FakeTrox::waitForCalls(size_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock<std::mutex> lock(mMutex);
    return mChanged.wait_for(lock, timeout, [&] { return mCalls.size() >= count; });
}

void FakeTrox::clearCalls() {
    std::lock_guard<std::mutex> lock(mMutex);
    mCalls.clear();
}

ndk::ScopedAStatus FakeTrox::serviceSpecificError() {
    return ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(-1, "scripted failure");
}

std::optional<ndk::ScopedAStatus> FakeTrox::record(RecordedCall call) {
    std::unique_lock<std::mutex> lock(mMutex);
    mCalls.push_back(std::move(call));
    mChanged.notify_all();
    mChanged.wait(lock, [&] { return !mHeld; });
    if (mFailuresLeft > 0) {
        --mFailuresLeft;
        return mFailure();
    }
    return std::nullopt;
}

ndk::ScopedAStatus FakeTrox::answerInt(RecordedCall call, int32_t* out) {
    std::string method = call.method;
    if (auto failure = record(std::move(call))) return std::move(*failure);
    std::lock_guard<std::mutex> lock(mMutex);
    auto it = mIntResults.find(method);
    if (it != mIntResults.end()) *out = it->second;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus FakeTrox::reservedSlot1() {
    if (auto failure = record({"reservedSlot1"})) return std::move(*failure);
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus FakeTrox::trox_init() {
    if (auto failure = record({"trox_init"})) return std::move(*failure);
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus FakeTrox::troxResCtlRequest(const TroxRequestParcel& request, int32_t* out) {
    return answerInt({"troxResCtlRequest", request}, out);
}

ndk::ScopedAStatus FakeTrox::troxResCtlRelease(int32_t handle, int32_t* out) {
    return answerInt({"troxResCtlRelease", std::nullopt, {handle}}, out);
}

ndk::ScopedAStatus FakeTrox::troxResStateRequest(const TroxRequestParcel& request,
                                                 std::vector<TroxRequestData>* out) {
    if (auto failure = record({"troxResStateRequest", request})) return std::move(*failure);
    std::lock_guard<std::mutex> lock(mMutex);
    *out = mStateReply;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus FakeTrox::troxResListeningRegister(const TroxRequestParcel& request,
                                                      const std::shared_ptr<ITroxCallback>& callback,
                                                      int32_t* out) {
    return answerInt({"troxResListeningRegister", request, {}, {}, {}, callback}, out);
}

ndk::ScopedAStatus FakeTrox::troxResListeningUnRegister(int32_t handle, int32_t* out) {
    return answerInt({"troxResListeningUnRegister", std::nullopt, {handle}}, out);
}

ndk::ScopedAStatus FakeTrox::troxPropertyGet(const std::string& key, std::string* out) {
    if (auto failure = record({"troxPropertyGet", std::nullopt, {}, {}, {key}})) {
        return std::move(*failure);
    }
    std::lock_guard<std::mutex> lock(mMutex);
    *out = mPropertyValue;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus FakeTrox::troxPropertySet(const std::string& key, const std::string& value,
                                             int32_t* out) {
    return answerInt({"troxPropertySet", std::nullopt, {}, {}, {key, value}}, out);
}

ndk::ScopedAStatus FakeTrox::troxThermalListeningRegister(
        const std::vector<int32_t>& ids, const std::shared_ptr<ITroxCallback>& callback,
        int32_t* out) {
    return answerInt({"troxThermalListeningRegister", std::nullopt, ids, {}, {}, callback}, out);
}

ndk::ScopedAStatus FakeTrox::troxThermalListeningUnregister(int32_t handle, int32_t* out) {
    return answerInt({"troxThermalListeningUnregister", std::nullopt, {handle}}, out);
}

ndk::ScopedAStatus FakeTrox::reservedSlot12() {
    if (auto failure = record({"reservedSlot12"})) return std::move(*failure);
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus FakeTrox::setRelatedSysInfo(int32_t info, int32_t value, int32_t* out) {
    return answerInt({"setRelatedSysInfo", std::nullopt, {info, value}}, out);
}

ndk::ScopedAStatus FakeTrox::troxRuleCtl(int32_t ruleId, int32_t status,
                                         const std::vector<TroxRequestData>& data, int32_t* out) {
    return answerInt({"troxRuleCtl", std::nullopt, {ruleId, status}, data}, out);
}

ndk::ScopedAStatus FakeTrox::troxResCtlRequestOneWay(const TroxRequestParcel& request) {
    if (auto failure = record({"troxResCtlRequestOneWay", request})) return std::move(*failure);
    return ndk::ScopedAStatus::ok();
}

}  // namespace vexal::testing
