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
    *out = it != mIntResults.end() ? it->second : 0;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus FakeTrox::reservedSlot1() {
    if (auto failure = record(RecordedCall{"reservedSlot1"})) return std::move(*failure);
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus FakeTrox::trox_init() {
    if (auto failure = record(RecordedCall{"trox_init"})) return std::move(*failure);
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus FakeTrox::troxResCtlRequest(const TroxRequestParcel& request, int32_t* out) {
    RecordedCall call{"troxResCtlRequest"};
    call.parcel = request;
    return answerInt(std::move(call), out);
}

ndk::ScopedAStatus FakeTrox::troxResCtlRelease(int32_t handle, int32_t* out) {
    RecordedCall call{"troxResCtlRelease"};
    call.ints = {handle};
    return answerInt(std::move(call), out);
}

ndk::ScopedAStatus FakeTrox::troxResStateRequest(const TroxRequestParcel& request,
                                                 std::vector<TroxRequestData>* out) {
    RecordedCall call{"troxResStateRequest"};
    call.parcel = request;
    if (auto failure = record(std::move(call))) return std::move(*failure);
    std::lock_guard<std::mutex> lock(mMutex);
    *out = mStateReply;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus FakeTrox::troxResListeningRegister(
        const TroxRequestParcel& request, const std::shared_ptr<ITroxCallback>& callback,
        int32_t* out) {
    RecordedCall call{"troxResListeningRegister"};
    call.parcel = request;
    call.callback = callback;
    return answerInt(std::move(call), out);
}

ndk::ScopedAStatus FakeTrox::troxResListeningUnRegister(int32_t handle, int32_t* out) {
    RecordedCall call{"troxResListeningUnRegister"};
    call.ints = {handle};
    return answerInt(std::move(call), out);
}

ndk::ScopedAStatus FakeTrox::troxPropertyGet(const std::string& key, std::string* out) {
    RecordedCall call{"troxPropertyGet"};
    call.texts = {key};
    if (auto failure = record(std::move(call))) return std::move(*failure);
    std::lock_guard<std::mutex> lock(mMutex);
    *out = mPropertyValue;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus FakeTrox::troxPropertySet(const std::string& key, const std::string& value,
                                             int32_t* out) {
    RecordedCall call{"troxPropertySet"};
    call.texts = {key, value};
    return answerInt(std::move(call), out);
}

ndk::ScopedAStatus FakeTrox::troxThermalListeningRegister(
        const std::vector<int32_t>& ids, const std::shared_ptr<ITroxCallback>& callback,
        int32_t* out) {
    RecordedCall call{"troxThermalListeningRegister"};
    call.ints = ids;
    call.callback = callback;
    return answerInt(std::move(call), out);
}

ndk::ScopedAStatus FakeTrox::troxThermalListeningUnregister(int32_t handle, int32_t* out) {
    RecordedCall call{"troxThermalListeningUnregister"};
    call.ints = {handle};
    return answerInt(std::move(call), out);
}

ndk::ScopedAStatus FakeTrox::reservedSlot12() {
    if (auto failure = record(RecordedCall{"reservedSlot12"})) return std::move(*failure);
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus FakeTrox::setRelatedSysInfo(int32_t info, int32_t value, int32_t* out) {
    RecordedCall call{"setRelatedSysInfo"};
    call.ints = {info, value};
    return answerInt(std::move(call), out);
}

ndk::ScopedAStatus FakeTrox::troxRuleCtl(int32_t ruleId, int32_t status,
                                         const std::vector<TroxRequestData>& data, int32_t* out) {
    RecordedCall call{"troxRuleCtl"};
    call.ints = {ruleId, status};
    call.data = data;
    return answerInt(std::move(call), out);
}

ndk::ScopedAStatus FakeTrox::troxResCtlRequestOneWay(const TroxRequestParcel& request) {
    RecordedCall call{"troxResCtlRequestOneWay"};
    call.parcel = request;
    if (auto failure = record(std::move(call))) return std::move(*failure);
    return ndk::ScopedAStatus::ok();
}

}  // namespace vexal::testing
