// Every ITrox operation through the service manager and a proxy, plus callbacks and the log hooks.
#include <aidl/vendor/vexal/hardware/trox/BpTrox.h>
#include <android/binder_manager.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <fstream>
#include <functional>
#include <future>
#include <mutex>

#include "FakeTroxService.h"
#include "RecordingCallback.h"

using aidl::vendor::vexal::hardware::trox::BnTroxCallback;
using aidl::vendor::vexal::hardware::trox::BpTrox;
using aidl::vendor::vexal::hardware::trox::ITrox;
using aidl::vendor::vexal::hardware::trox::ITroxCallback;
using aidl::vendor::vexal::hardware::trox::TroxRequestData;
using aidl::vendor::vexal::hardware::trox::TroxRequestParcel;
using ndk::ScopedAStatus;
using vexal::testing::FakeTroxService;
using vexal::testing::RecordedCall;
using vexal::testing::RecordingCallback;
using namespace std::chrono_literals;

namespace {

constexpr int64_t kWideId = 0x00000000FFFFFFFBLL;  // a 32-bit id, zero-extended

TroxRequestData data(int64_t id, std::optional<std::string> value = std::nullopt) {
    TroxRequestData d;
    d.res_Id = id;
    d.res_Value = std::move(value);
    return d;
}

TroxRequestParcel sampleRequest() {
    TroxRequestParcel p;
    p.requestType = 3;
    p.requestData = {data(kWideId, "1"), data(7)};
    p.flag = true;
    p.param = -9;
    p.pid = 4321;
    p.duration = 1500;
    p.debugTags = std::vector<std::optional<std::string>>{"tag", std::nullopt};
    p.handle = 12;
    p.pkg = "com.example";
    p.values = std::vector<int32_t>{1, 2, 3};
    return p;
}

RecordedCall recorded(const char* method, std::optional<TroxRequestParcel> parcel = std::nullopt,
                      std::vector<int32_t> ints = {}, std::vector<std::string> texts = {},
                      std::shared_ptr<ITroxCallback> callback = nullptr,
                      std::vector<TroxRequestData> list = {}) {
    RecordedCall call(method);
    call.parcel = std::move(parcel);
    call.ints = std::move(ints);
    call.texts = std::move(texts);
    call.callback = std::move(callback);
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
        ASSERT_NE(dynamic_cast<BpTrox*>(proxy.get()), nullptr);
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
    const std::vector<TroxRequestData> reply = {data(kWideId, "state"), data(-1, "")};
    const std::vector<TroxRequestData> rule = {data(1), data(2, "x")};
    fake.setStateReply(reply);
    fake.setPropertyValue("v\xc3\xa4lue");
    auto cb = ndk::SharedRefBase::make<RecordingCallback>();
    std::vector<TroxRequestData> list;
    std::string text;
    struct Op {
        std::function<ScopedAStatus(ITrox&, int32_t*)> call;
        RecordedCall want;
        bool returnsInt;
    };
    const std::vector<Op> ops = {
            {[](ITrox& t, int32_t*) { return t.reservedSlot1(); }, recorded("reservedSlot1"),
             false},
            {[](ITrox& t, int32_t*) { return t.trox_init(); }, recorded("trox_init"), false},
            {[&](ITrox& t, int32_t* r) { return t.troxResCtlRequest(req, r); },
             recorded("troxResCtlRequest", req), true},
            {[](ITrox& t, int32_t* r) { return t.troxResCtlRelease(77, r); },
             recorded("troxResCtlRelease", std::nullopt, {77}), true},
            {[&](ITrox& t, int32_t*) { return t.troxResStateRequest(req, &list); },
             recorded("troxResStateRequest", req), false},
            {[&](ITrox& t, int32_t* r) { return t.troxResListeningRegister(req, cb, r); },
             recorded("troxResListeningRegister", req, {}, {}, cb), true},
            // A device sends a null interface even where the AIDL does not say @nullable: the
            // service sees nullptr and decides. The host must not refuse it earlier.
            {[&](ITrox& t, int32_t* r) { return t.troxResListeningRegister(req, nullptr, r); },
             recorded("troxResListeningRegister", req), true},
            {[](ITrox& t, int32_t* r) { return t.troxResListeningUnRegister(-8, r); },
             recorded("troxResListeningUnRegister", std::nullopt, {-8}), true},
            {[&](ITrox& t, int32_t*) { return t.troxPropertyGet("vendor.k\xc3\xa9y", &text); },
             recorded("troxPropertyGet", std::nullopt, {}, {"vendor.k\xc3\xa9y"}), false},
            {[](ITrox& t, int32_t* r) { return t.troxPropertySet("k", "", r); },
             recorded("troxPropertySet", std::nullopt, {}, {"k", ""}), true},
            {[&](ITrox& t, int32_t* r) {
                 return t.troxThermalListeningRegister({4, -5, 6}, cb, r);
             },
             recorded("troxThermalListeningRegister", std::nullopt, {4, -5, 6}, {}, cb), true},
            {[](ITrox& t, int32_t* r) { return t.troxThermalListeningUnregister(30, r); },
             recorded("troxThermalListeningUnregister", std::nullopt, {30}), true},
            {[](ITrox& t, int32_t*) { return t.reservedSlot12(); }, recorded("reservedSlot12"),
             false},
            {[](ITrox& t, int32_t* r) { return t.setRelatedSysInfo(3, -4, r); },
             recorded("setRelatedSysInfo", std::nullopt, {3, -4}), true},
            {[&](ITrox& t, int32_t* r) { return t.troxRuleCtl(10, 1, rule, r); },
             recorded("troxRuleCtl", std::nullopt, {10, 1}, {}, nullptr, rule), true},
            {[&](ITrox& t, int32_t*) { return t.troxResCtlRequestOneWay(req); },
             recorded("troxResCtlRequestOneWay", req), false},
    };
    int32_t scripted = 1000;
    for (const Op& op : ops) {
        SCOPED_TRACE(op.want.method);
        fake.clearCalls();
        fake.setIntResult(op.want.method, ++scripted);
        int32_t r = -1;
        ScopedAStatus status = op.call(*proxy, &r);
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

TEST_F(TroxProxyTest, FailingStatusReachesTheCallerAndTheProxyLog) {
    struct Case {
        std::function<ScopedAStatus()> make;
        binder_exception_t exception;
        int32_t serviceError;
        std::string message;
    };
    const std::vector<Case> cases = {
            {[] { return ScopedAStatus::fromServiceSpecificErrorWithMessage(-5, "bad handle"); },
             EX_SERVICE_SPECIFIC, -5, "bad handle"},
            {[] {
                 return ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_ARGUMENT, "nope");
             },
             EX_ILLEGAL_ARGUMENT, 0, "nope"},
            {[] { return ScopedAStatus::fromServiceSpecificError(11); }, EX_SERVICE_SPECIFIC, 11,
             ""},
            {[] { return ScopedAStatus::fromExceptionCode(EX_SECURITY); }, EX_SECURITY, 0, ""},
    };
    std::vector<BpTrox::TransactionLog> logs;
    BpTrox::logFunc = [&](const BpTrox::TransactionLog& log) { logs.push_back(log); };
    fake.setIntResult("troxResCtlRelease", 5);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.exception * 100 + c.serviceError);
        fake.failNextCalls(1, c.make);
        int32_t r = 1234;
        ScopedAStatus status = proxy->troxResCtlRelease(2, &r);
        EXPECT_EQ(status.getExceptionCode(), c.exception);
        EXPECT_EQ(status.getServiceSpecificError(), c.serviceError);
        EXPECT_EQ(std::string(status.getMessage()), c.message);
        EXPECT_EQ(r, 1234);  // no result on failure
        EXPECT_EQ(fake.lastCall().ints, std::vector<int32_t>{2});
        ASSERT_EQ(logs.size(), 1u);
        const BpTrox::TransactionLog& log = logs[0];
        EXPECT_EQ(log.method_name, "troxResCtlRelease");
        EXPECT_EQ(log.proxy_address, static_cast<const void*>(proxy.get()));
        EXPECT_EQ(log.stub_address, nullptr);
        EXPECT_EQ(log.input_args, (decltype(log.input_args){{"in_handle", "2"}}));
        EXPECT_EQ(log.exception_code, c.exception);
        EXPECT_EQ(log.exception_message, c.message);
        EXPECT_EQ(log.service_specific_error_code, c.serviceError);
        EXPECT_EQ(log.result, "1234");  // the caller's variable, read back even on failure
        logs.clear();
    }
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

// The callback inside the request and the one passed beside it are one remote object; what the
// service sends on it reaches the original object, and its stub reports the outcome to logFunc.
TEST_F(TroxProxyTest, CallbackReachesTheOriginalObjectAndItsLog) {
    struct Case {
        std::function<ScopedAStatus()> reply;
        int32_t exception;
        std::string message;
        int32_t transactionError;
        int32_t serviceError;
    };
    const std::vector<Case> cases = {
            {[] { return ScopedAStatus::ok(); }, EX_NONE, "", STATUS_OK, 0},
            {[] { return ScopedAStatus::fromServiceSpecificErrorWithMessage(7, "boom"); },
             EX_SERVICE_SPECIFIC, "boom", STATUS_OK, 7},
            {[] { return ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_STATE, "state"); },
             EX_ILLEGAL_STATE, "state", STATUS_OK, 0},
            {[] { return ScopedAStatus::fromStatus(STATUS_BAD_VALUE); }, EX_TRANSACTION_FAILED, "",
             STATUS_BAD_VALUE, 0},
    };
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<BnTroxCallback::TransactionLog> logs;
    BnTroxCallback::logFunc = [&](const BnTroxCallback::TransactionLog& log) {
        std::lock_guard<std::mutex> lock(mutex);
        logs.push_back(log);
        changed.notify_all();
    };
    const std::vector<TroxRequestData> sent = {data(5, "five"), data(kWideId)};
    for (size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(i);
        auto cb = ndk::SharedRefBase::make<RecordingCallback>();
        cb->setReply(cases[i].reply);
        TroxRequestParcel req = sampleRequest();
        req.callback = cb;
        int32_t r = 0;
        fake.clearCalls();
        ASSERT_TRUE(proxy->troxResListeningRegister(req, cb, &r).isOk());
        const RecordedCall call = fake.lastCall();
        ASSERT_NE(call.parcel->callback, nullptr);
        ASSERT_NE(call.callback, nullptr);
        EXPECT_TRUE(call.callback->isRemote());
        EXPECT_EQ(call.parcel->callback->asBinder().get(), call.callback->asBinder().get());

        ASSERT_TRUE(call.parcel->callback->onCallback(sent).isOk());  // one-way: ok regardless
        EXPECT_EQ(cb->waitForCall(1), sent);
        std::unique_lock<std::mutex> lock(mutex);
        ASSERT_TRUE(changed.wait_for(lock, 5s, [&] { return logs.size() == i + 1; }));
        const BnTroxCallback::TransactionLog& log = logs.back();
        EXPECT_EQ(log.method_name, "onCallback");
        EXPECT_EQ(log.interface_name, "vendor.vexal.hardware.trox.ITroxCallback");
        EXPECT_EQ(log.exception_code, cases[i].exception);
        EXPECT_EQ(log.exception_message, cases[i].message);
        EXPECT_EQ(log.transaction_error, cases[i].transactionError);
        EXPECT_EQ(log.service_specific_error_code, cases[i].serviceError);
        EXPECT_EQ(log.stub_address, static_cast<const void*>(cb.get()));
        ASSERT_EQ(log.input_args.size(), 1u);
        EXPECT_EQ(log.input_args[0].first, "in_data");
        EXPECT_NE(log.input_args[0].second.find("res_Id: 4294967291"), std::string::npos);
    }
}

}  // namespace
