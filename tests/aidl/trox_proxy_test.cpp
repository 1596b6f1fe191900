// Every ITrox operation through the service manager and a proxy, plus callbacks and the log hooks.
#include <aidl/vendor/vexal/hardware/trox/BpTrox.h>
#include <android/binder_manager.h>
#include <android/binder_to_string.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <fstream>
#include <functional>
#include <future>
#include <mutex>
#include <tuple>

#include "FakeTroxService.h"
#include "RecordingCallback.h"

using aidl::vendor::vexal::hardware::trox::BnTroxCallback;
using aidl::vendor::vexal::hardware::trox::BpTrox;
using aidl::vendor::vexal::hardware::trox::ITrox;
using aidl::vendor::vexal::hardware::trox::ITroxCallback;
using aidl::vendor::vexal::hardware::trox::TroxRequestData;
using aidl::vendor::vexal::hardware::trox::TroxRequestParcel;
using android::internal::ToString;
using ndk::ScopedAStatus;
using vexal::testing::FakeTroxService;
using vexal::testing::RecordedCall;
using vexal::testing::RecordingCallback;
using namespace std::chrono_literals;

namespace {

constexpr int64_t kWideId = 0x00000000FFFFFFFBLL;  // a 32-bit id, zero-extended

using Data = TroxRequestData;

Data data(int64_t id, std::optional<std::string> value = std::nullopt) {
    return {id, std::move(value), std::nullopt, std::nullopt};
}

TroxRequestParcel sampleRequest() {
    TroxRequestParcel p;
    p.requestType = 3;
    p.requestData = {data(kWideId, "1"), data(7)};
    p.pid = 4321;
    p.debugTags = std::vector<std::optional<std::string>>{"tag", std::nullopt};
    p.handle = 12;
    p.values = std::vector<int32_t>{1, 2, 3};
    return p;
}

RecordedCall recorded(const char* method, std::vector<int32_t> ints = {},
                      std::optional<TroxRequestParcel> parcel = std::nullopt,
                      std::shared_ptr<ITroxCallback> callback = nullptr,
                      std::vector<std::string> texts = {}, std::vector<Data> list = {}) {
    RecordedCall call(method);
    call.ints = std::move(ints);
    call.parcel = std::move(parcel);
    call.callback = std::move(callback);
    call.texts = std::move(texts);
    call.data = std::move(list);
    return call;
}

class TroxProxyTest : public ::testing::Test {
  protected:
    void SetUp() override {
        proxy = ITrox::fromBinder(
                ndk::SpAIBinder(AServiceManager_checkService(vexal::testing::kTroxInstance)));
        ASSERT_NE(proxy, nullptr);
        ASSERT_TRUE(proxy->isRemote());
    }
    void TearDown() override {
        fake.releaseCalls();
        BnTroxCallback::logFunc = nullptr;
        BpTrox::logFunc = nullptr;
    }

    FakeTroxService published;
    vexal::testing::FakeTrox& fake = published.fake();
    std::shared_ptr<ITrox> proxy;
};

TEST_F(TroxProxyTest, EveryOperationCarriesItsArgumentsAndResult) {
    const TroxRequestParcel req = sampleRequest();
    const std::vector<Data> reply = {data(kWideId, "state"), data(-1, "")};
    const std::vector<Data> rule = {data(1), data(2, "x")};
    fake.setStateReply(reply);
    fake.setPropertyValue("v\xc3\xa4lue");
    auto cb = ndk::SharedRefBase::make<RecordingCallback>();
    std::vector<Data> list;
    std::string text;
    int32_t r = -1;
    struct Op {
        std::function<ScopedAStatus()> call;
        RecordedCall want;
        bool returnsInt;
    };
    const std::vector<Op> ops = {
            {[&] { return proxy->reservedSlot1(); }, recorded("reservedSlot1"), false},
            {[&] { return proxy->trox_init(); }, recorded("trox_init"), false},
            {[&] { return proxy->troxResCtlRequest(req, &r); },
             recorded("troxResCtlRequest", {}, req), true},
            {[&] { return proxy->troxResCtlRelease(77, &r); }, recorded("troxResCtlRelease", {77}),
             true},
            {[&] { return proxy->troxResStateRequest(req, &list); },
             recorded("troxResStateRequest", {}, req), false},
            {[&] { return proxy->troxResListeningRegister(req, cb, &r); },
             recorded("troxResListeningRegister", {}, req, cb), true},
            // A device sends a null interface even where the AIDL does not say @nullable: the
            // service sees nullptr and decides. The host must not refuse it earlier.
            {[&] { return proxy->troxResListeningRegister(req, nullptr, &r); },
             recorded("troxResListeningRegister", {}, req), true},
            {[&] { return proxy->troxResListeningUnRegister(-8, &r); },
             recorded("troxResListeningUnRegister", {-8}), true},
            {[&] { return proxy->troxPropertyGet("vendor.k\xc3\xa9y", &text); },
             recorded("troxPropertyGet", {}, {}, nullptr, {"vendor.k\xc3\xa9y"}), false},
            {[&] { return proxy->troxPropertySet("k", "", &r); },
             recorded("troxPropertySet", {}, {}, nullptr, {"k", ""}), true},
            {[&] {
                 return proxy->troxThermalListeningRegister({4, -5, 6}, cb, &r);
             },
             recorded("troxThermalListeningRegister", {4, -5, 6}, {}, cb), true},
            {[&] { return proxy->troxThermalListeningUnregister(30, &r); },
             recorded("troxThermalListeningUnregister", {30}), true},
            {[&] { return proxy->reservedSlot12(); }, recorded("reservedSlot12"), false},
            {[&] { return proxy->setRelatedSysInfo(3, -4, &r); },
             recorded("setRelatedSysInfo", {3, -4}), true},
            {[&] { return proxy->troxRuleCtl(10, 1, rule, &r); },
             recorded("troxRuleCtl", {10, 1}, {}, nullptr, {}, rule), true},
            {[&] { return proxy->troxResCtlRequestOneWay(req); },
             recorded("troxResCtlRequestOneWay", {}, req), false},
    };
    int32_t scripted = 1000;
    for (const Op& op : ops) {
        SCOPED_TRACE(op.want.method);
        fake.clearCalls();
        fake.setIntResult(op.want.method, ++scripted);
        r = -1;
        ScopedAStatus status = op.call();
        ASSERT_TRUE(status.isOk()) << status.getDescription();
        ASSERT_TRUE(fake.waitForCalls(1));  // a one-way call arrives after it returned
        const RecordedCall got = fake.lastCall();
        EXPECT_EQ(got.method, op.want.method);
        EXPECT_EQ(got.parcel, op.want.parcel);
        EXPECT_EQ(got.ints, op.want.ints);
        EXPECT_EQ(got.texts, op.want.texts);
        EXPECT_EQ(got.data, op.want.data);
        ASSERT_EQ(got.callback != nullptr, op.want.callback != nullptr);
        EXPECT_TRUE(!got.callback || got.callback->isRemote());
        EXPECT_EQ(r, op.returnsInt ? scripted : -1);
    }
    EXPECT_EQ(list, reply);
    EXPECT_EQ(text, "v\xc3\xa4lue");
}

TEST_F(TroxProxyTest, IdentityMatchesTheFrozenInterface) {
    std::ifstream in(TROX_HASH_FILE);
    std::string line, frozen;
    while (std::getline(in, line)) {
        if (!line.empty()) frozen = line;
    }
    ASSERT_EQ(frozen.size(), 40u) << TROX_HASH_FILE;
    EXPECT_EQ(ITrox::hash, frozen);
    EXPECT_EQ(ITroxCallback::hash, frozen);
    EXPECT_STREQ(ITrox::descriptor, "vendor.vexal.hardware.trox.ITrox");
    EXPECT_STREQ(ITroxCallback::descriptor, "vendor.vexal.hardware.trox.ITroxCallback");
    EXPECT_EQ(int32_t{ITroxCallback::version}, 1);
    for (int round = 0; round < 2; ++round) {  // the second round is served from the cache
        int32_t version = 0;
        std::string hash;
        ASSERT_TRUE(proxy->getInterfaceVersion(&version).isOk());
        ASSERT_TRUE(proxy->getInterfaceHash(&hash).isOk());
        EXPECT_EQ(version, 1);
        EXPECT_EQ(hash, frozen);
    }
}

TEST_F(TroxProxyTest, OneWayReturnsBeforeTheServiceFinishes) {
    fake.holdCalls();
    auto call = std::async(std::launch::async,
                           [&] { return proxy->troxResCtlRequestOneWay(sampleRequest()); });
    const bool returned = call.wait_for(5s) == std::future_status::ready;
    EXPECT_TRUE(fake.waitForCalls(1));
    fake.releaseCalls();
    EXPECT_TRUE(returned);
    EXPECT_TRUE(call.get().isOk());
}

// A failing status reaches the caller, and the proxy's logFunc, whole. The callback inside the
// request and the one passed beside it are one remote object; what the service sends on it reaches
// the original object, and its answer reaches the stub's logFunc.
TEST_F(TroxProxyTest, StatusesAndCallbacksAcrossBinder) {
    // What a status, or a log of one, says: exception, message, transport status, service error.
    using Outcome = std::tuple<int32_t, std::string, int32_t, int32_t>;
    auto outcome = [](const auto& log) {
        return Outcome{log.exception_code, log.exception_message, log.transaction_error,
                       log.service_specific_error_code};
    };
    const std::vector<std::pair<std::function<ScopedAStatus()>, Outcome>> cases = {
            {[] { return ScopedAStatus::fromServiceSpecificErrorWithMessage(-5, "bad handle"); },
             {EX_SERVICE_SPECIFIC, "bad handle", STATUS_OK, -5}},
            {[] { return ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_STATE, "state"); },
             {EX_ILLEGAL_STATE, "state", STATUS_OK, 0}},
            {[] { return ScopedAStatus::fromServiceSpecificError(11); },
             {EX_SERVICE_SPECIFIC, "", STATUS_OK, 11}},
            {[] { return ScopedAStatus::fromExceptionCode(EX_SECURITY); },
             {EX_SECURITY, "", STATUS_OK, 0}},
            {[] { return ScopedAStatus::fromStatus(STATUS_BAD_VALUE); },
             {EX_TRANSACTION_FAILED, "", STATUS_BAD_VALUE, 0}},
    };
    std::vector<BpTrox::TransactionLog> proxyLogs;
    BpTrox::logFunc = [&](const BpTrox::TransactionLog& log) { proxyLogs.push_back(log); };
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<BnTroxCallback::TransactionLog> stubLogs;
    BnTroxCallback::logFunc = [&](const BnTroxCallback::TransactionLog& log) {
        std::lock_guard<std::mutex> lock(mutex);
        stubLogs.push_back(log);
        changed.notify_all();
    };
    auto cb = ndk::SharedRefBase::make<RecordingCallback>();
    TroxRequestParcel req = sampleRequest();
    req.callback = cb;
    const std::vector<Data> sent = {data(5, "five"), data(kWideId)};
    fake.setIntResult("troxResListeningRegister", 5);
    for (size_t i = 0; i < cases.size(); ++i) {
        const auto& [make, want] = cases[i];
        SCOPED_TRACE(i);
        fake.failNextCalls(1, make);
        int32_t r = 1234;
        ScopedAStatus status = proxy->troxResListeningRegister(req, cb, &r);
        EXPECT_EQ(Outcome(status.getExceptionCode(), status.getMessage(), status.getStatus(),
                          status.getServiceSpecificError()),
                  want);
        EXPECT_EQ(r, 1234);  // no result on failure
        ASSERT_EQ(proxyLogs.size(), i + 1);
        const BpTrox::TransactionLog& sentLog = proxyLogs.back();
        EXPECT_EQ(sentLog.method_name, "troxResListeningRegister");
        EXPECT_EQ(sentLog.proxy_address, static_cast<const void*>(proxy.get()));
        EXPECT_EQ(sentLog.input_args.at(0).second, ToString(req));
        EXPECT_EQ(outcome(sentLog), want);
        EXPECT_EQ(sentLog.result, "1234");  // the caller's variable, read back even on failure

        const RecordedCall call = fake.lastCall();
        ASSERT_TRUE(call.parcel && call.parcel->callback && call.callback);
        EXPECT_TRUE(call.callback->isRemote());
        EXPECT_EQ(call.parcel->callback->asBinder().get(), call.callback->asBinder().get());
        cb->setReply(make);
        ASSERT_TRUE(call.parcel->callback->onCallback(sent).isOk());  // one-way: ok regardless
        EXPECT_EQ(cb->waitForCall(i + 1), sent);
        std::unique_lock<std::mutex> lock(mutex);
        ASSERT_TRUE(changed.wait_for(lock, 5s, [&] { return stubLogs.size() == i + 1; }));
        const BnTroxCallback::TransactionLog& log = stubLogs.back();
        EXPECT_EQ(log.method_name, "onCallback");
        EXPECT_EQ(log.interface_name, "vendor.vexal.hardware.trox.ITroxCallback");
        EXPECT_EQ(log.stub_address, static_cast<const void*>(cb.get()));
        EXPECT_EQ(log.input_args, (decltype(log.input_args){{"in_data", ToString(sent)}}));
        EXPECT_EQ(outcome(log), want);
    }
}

}  // namespace
