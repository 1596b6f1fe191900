// Every ITrox operation through the service manager and a proxy, plus callbacks and logFunc.
#include <aidl/vendor/vexal/hardware/trox/BnTrox.h>
#include <aidl/vendor/vexal/hardware/trox/BnTroxCallback.h>
#include <aidl/vendor/vexal/hardware/trox/BpTrox.h>
#include <aidl/vendor/vexal/hardware/trox/ITrox.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <binder_host/service_control.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

using aidl::vendor::vexal::hardware::trox::BnTrox;
using aidl::vendor::vexal::hardware::trox::BnTroxCallback;
using aidl::vendor::vexal::hardware::trox::BpTrox;
using aidl::vendor::vexal::hardware::trox::ITrox;
using aidl::vendor::vexal::hardware::trox::ITroxCallback;
using aidl::vendor::vexal::hardware::trox::ITroxCallbackDefault;
using aidl::vendor::vexal::hardware::trox::TroxRequestData;
using aidl::vendor::vexal::hardware::trox::TroxRequestParcel;
using ndk::ScopedAStatus;
using namespace std::chrono_literals;

namespace {

// Lets a test wait for something another binder thread does.
class Signal {
  public:
    void notify() {
        std::lock_guard<std::mutex> lock(mMutex);
        mDone = true;
        mCv.notify_all();
    }
    bool wait(std::chrono::milliseconds timeout = 5s) {
        std::unique_lock<std::mutex> lock(mMutex);
        return mCv.wait_for(lock, timeout, [this] { return mDone; });
    }
    bool done() {
        std::lock_guard<std::mutex> lock(mMutex);
        return mDone;
    }

  private:
    std::mutex mMutex;
    std::condition_variable mCv;
    bool mDone = false;
};

TroxRequestData data(int64_t id, std::optional<std::string> value = std::nullopt) {
    TroxRequestData d;
    d.res_Id = id;
    d.res_Value = std::move(value);
    return d;
}

class RecordingCallback : public BnTroxCallback {
  public:
    ScopedAStatus onCallback(const std::vector<TroxRequestData>& in_data) override {
        {
            std::lock_guard<std::mutex> lock(mutex);
            received = in_data;
        }
        called.notify();
        return reply();
    }
    std::function<ScopedAStatus()> reply = [] { return ScopedAStatus::ok(); };
    std::mutex mutex;
    std::vector<TroxRequestData> received;
    Signal called;
};

// Records what arrived and answers with values derived from it.
class FakeTrox : public BnTrox {
  public:
    ScopedAStatus reservedSlot1() override { return note("reservedSlot1"); }
    ScopedAStatus trox_init() override { return note("trox_init"); }
    ScopedAStatus troxResCtlRequest(const TroxRequestParcel& in_request,
                                    int32_t* _aidl_return) override {
        request = in_request;
        *_aidl_return = in_request.handle + 100;
        return note("troxResCtlRequest");
    }
    ScopedAStatus troxResCtlRelease(int32_t in_handle, int32_t* _aidl_return) override {
        handle = in_handle;
        *_aidl_return = -in_handle;
        if (in_handle == 2)
            return ScopedAStatus::fromServiceSpecificErrorWithMessage(-5, "bad handle");
        if (in_handle == 3)
            return ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_ARGUMENT, "nope");
        if (in_handle == 4) return ScopedAStatus::fromServiceSpecificError(11);
        if (in_handle == 5) return ScopedAStatus::fromExceptionCode(EX_SECURITY);
        return note("troxResCtlRelease");
    }
    ScopedAStatus troxResStateRequest(const TroxRequestParcel& in_request,
                                      std::vector<TroxRequestData>* _aidl_return) override {
        request = in_request;
        *_aidl_return = in_request.requestData;
        _aidl_return->push_back(data(0x00000000FFFFFFFBLL, "state"));
        return note("troxResStateRequest");
    }
    ScopedAStatus troxResListeningRegister(const TroxRequestParcel& in_request,
                                           const std::shared_ptr<ITroxCallback>& in_callback,
                                           int32_t* _aidl_return) override {
        request = in_request;
        callback = in_callback;
        *_aidl_return = 41;
        return note("troxResListeningRegister");
    }
    ScopedAStatus troxResListeningUnRegister(int32_t in_handle, int32_t* _aidl_return) override {
        handle = in_handle;
        *_aidl_return = in_handle * 2;
        return note("troxResListeningUnRegister");
    }
    ScopedAStatus troxPropertyGet(const std::string& in_key, std::string* _aidl_return) override {
        key = in_key;
        *_aidl_return = "value-of-" + in_key;
        return note("troxPropertyGet");
    }
    ScopedAStatus troxPropertySet(const std::string& in_key, const std::string& in_value,
                                  int32_t* _aidl_return) override {
        key = in_key;
        value = in_value;
        *_aidl_return = static_cast<int32_t>(in_value.size());
        return note("troxPropertySet");
    }
    ScopedAStatus troxThermalListeningRegister(const std::vector<int32_t>& in_ids,
                                               const std::shared_ptr<ITroxCallback>& in_callback,
                                               int32_t* _aidl_return) override {
        ids = in_ids;
        callback = in_callback;
        *_aidl_return = static_cast<int32_t>(in_ids.size());
        return note("troxThermalListeningRegister");
    }
    ScopedAStatus troxThermalListeningUnregister(int32_t in_handle,
                                                 int32_t* _aidl_return) override {
        handle = in_handle;
        *_aidl_return = in_handle + 1;
        return note("troxThermalListeningUnregister");
    }
    ScopedAStatus reservedSlot12() override { return note("reservedSlot12"); }
    ScopedAStatus setRelatedSysInfo(int32_t in_info, int32_t in_value,
                                    int32_t* _aidl_return) override {
        ints = {in_info, in_value};
        *_aidl_return = in_info * 1000 + in_value;
        return note("setRelatedSysInfo");
    }
    ScopedAStatus troxRuleCtl(int32_t in_ruleId, int32_t in_status,
                              const std::vector<TroxRequestData>& in_data,
                              int32_t* _aidl_return) override {
        ints = {in_ruleId, in_status};
        list = in_data;
        *_aidl_return = static_cast<int32_t>(in_data.size()) + in_ruleId;
        return note("troxRuleCtl");
    }
    ScopedAStatus troxResCtlRequestOneWay(const TroxRequestParcel& in_request) override {
        request = in_request;
        if (blockOneWay) release.wait();
        ScopedAStatus status = note("troxResCtlRequestOneWay");
        oneWayDone.notify();
        return status;
    }

    ScopedAStatus note(const char* name) {
        method = name;
        return ScopedAStatus::ok();
    }

    std::string method;
    TroxRequestParcel request;
    int32_t handle = 0;
    std::string key, value;
    std::vector<int32_t> ids, ints;
    std::vector<TroxRequestData> list;
    std::shared_ptr<ITroxCallback> callback;
    bool blockOneWay = false;
    Signal release, oneWayDone;
};

const std::string kInstance = std::string(ITrox::descriptor) + "/default";

class TroxProxyTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ABinderProcess_startThreadPool();
        binder_host::resetServiceManager();
        service = ndk::SharedRefBase::make<FakeTrox>();
        binder_host::declareService(kInstance);
        ASSERT_EQ(AServiceManager_addService(service->asBinder().get(), kInstance.c_str()),
                  EX_NONE);
        ndk::SpAIBinder binder(AServiceManager_checkService(kInstance.c_str()));
        ASSERT_NE(binder.get(), nullptr);
        proxy = ITrox::fromBinder(binder);
        ASSERT_NE(proxy, nullptr);
    }
    void TearDown() override {
        if (service) service->release.notify();
        BnTroxCallback::logFunc = nullptr;
        proxy.reset();
        binder_host::resetServiceManager();
    }

    std::shared_ptr<FakeTrox> service;
    std::shared_ptr<ITrox> proxy;
};

TroxRequestParcel sampleRequest() {
    TroxRequestParcel p;
    p.requestType = 3;
    p.requestData = {data(0x00000000FFFFFFFBLL, "1"), data(7)};
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

TEST_F(TroxProxyTest, FetchedServiceIsARemoteProxy) {
    EXPECT_TRUE(proxy->isRemote());
    EXPECT_NE(dynamic_cast<BpTrox*>(proxy.get()), nullptr);
    EXPECT_NE(proxy.get(), static_cast<ITrox*>(service.get()));
}

TEST_F(TroxProxyTest, EveryOperationCarriesItsArgumentsAndResult) {
    const TroxRequestParcel req = sampleRequest();
    auto cb = ndk::SharedRefBase::make<RecordingCallback>();
    struct Op {
        const char* method;
        std::function<ScopedAStatus(ITrox&)> call;
        std::function<void(FakeTrox&)> check;
    };
    int32_t r = 0;
    std::string s;
    std::vector<TroxRequestData> list;
    const std::vector<Op> ops = {
            {"reservedSlot1", [](ITrox& t) { return t.reservedSlot1(); }, [](FakeTrox&) {}},
            {"trox_init", [](ITrox& t) { return t.trox_init(); }, [](FakeTrox&) {}},
            {"troxResCtlRequest", [&](ITrox& t) { return t.troxResCtlRequest(req, &r); },
             [&](FakeTrox& f) {
                 EXPECT_EQ(f.request, req);
                 EXPECT_EQ(r, 112);
             }},
            {"troxResCtlRelease", [&](ITrox& t) { return t.troxResCtlRelease(77, &r); },
             [&](FakeTrox& f) {
                 EXPECT_EQ(f.handle, 77);
                 EXPECT_EQ(r, -77);
             }},
            {"troxResStateRequest", [&](ITrox& t) { return t.troxResStateRequest(req, &list); },
             [&](FakeTrox& f) {
                 EXPECT_EQ(f.request, req);
                 ASSERT_EQ(list.size(), 3u);
                 EXPECT_EQ(list[0], req.requestData[0]);
                 EXPECT_EQ(list[2], data(0x00000000FFFFFFFBLL, "state"));
             }},
            {"troxResListeningRegister",
             [&](ITrox& t) { return t.troxResListeningRegister(req, cb, &r); },
             [&](FakeTrox& f) {
                 EXPECT_EQ(f.request, req);
                 ASSERT_NE(f.callback, nullptr);
                 EXPECT_TRUE(f.callback->isRemote());
                 EXPECT_EQ(r, 41);
             }},
            {"troxResListeningUnRegister",
             [&](ITrox& t) { return t.troxResListeningUnRegister(-8, &r); },
             [&](FakeTrox& f) {
                 EXPECT_EQ(f.handle, -8);
                 EXPECT_EQ(r, -16);
             }},
            {"troxPropertyGet",
             [&](ITrox& t) { return t.troxPropertyGet("vendor.k\xc3\xa9y", &s); },
             [&](FakeTrox& f) {
                 EXPECT_EQ(f.key, "vendor.k\xc3\xa9y");
                 EXPECT_EQ(s, "value-of-vendor.k\xc3\xa9y");
             }},
            {"troxPropertySet", [&](ITrox& t) { return t.troxPropertySet("k", "", &r); },
             [&](FakeTrox& f) {
                 EXPECT_EQ(f.key, "k");
                 EXPECT_EQ(f.value, "");
                 EXPECT_EQ(r, 0);
             }},
            {"troxThermalListeningRegister",
             [&](ITrox& t) {
                 return t.troxThermalListeningRegister({4, -5, 6, 7}, cb, &r);
             },
             [&](FakeTrox& f) {
                 EXPECT_EQ(f.ids, (std::vector<int32_t>{4, -5, 6, 7}));
                 EXPECT_TRUE(f.callback->isRemote());
                 EXPECT_EQ(r, 4);
             }},
            {"troxThermalListeningUnregister",
             [&](ITrox& t) { return t.troxThermalListeningUnregister(30, &r); },
             [&](FakeTrox& f) {
                 EXPECT_EQ(f.handle, 30);
                 EXPECT_EQ(r, 31);
             }},
            {"reservedSlot12", [](ITrox& t) { return t.reservedSlot12(); }, [](FakeTrox&) {}},
            {"setRelatedSysInfo", [&](ITrox& t) { return t.setRelatedSysInfo(3, -4, &r); },
             [&](FakeTrox& f) {
                 EXPECT_EQ(f.ints, (std::vector<int32_t>{3, -4}));
                 EXPECT_EQ(r, 2996);
             }},
            {"troxRuleCtl",
             [&](ITrox& t) {
                 return t.troxRuleCtl(10, 1, {data(1), data(2, "x")}, &r);
             },
             [&](FakeTrox& f) {
                 EXPECT_EQ(f.ints, (std::vector<int32_t>{10, 1}));
                 EXPECT_EQ(f.list, (std::vector<TroxRequestData>{data(1), data(2, "x")}));
                 EXPECT_EQ(r, 12);
             }},
            {"troxResCtlRequestOneWay", [&](ITrox& t) { return t.troxResCtlRequestOneWay(req); },
             [&](FakeTrox& f) {
                 ASSERT_TRUE(f.oneWayDone.wait());
                 EXPECT_EQ(f.request, req);
             }},
    };
    ASSERT_EQ(ops.size(), 15u);
    for (const auto& op : ops) {
        SCOPED_TRACE(op.method);
        service->method.clear();
        ScopedAStatus status = op.call(*proxy);
        ASSERT_TRUE(status.isOk()) << status.getDescription();
        op.check(*service);
        EXPECT_EQ(service->method, op.method);
    }
}

TEST_F(TroxProxyTest, FailingStatusReachesTheCaller) {
    struct Case {
        int32_t handle;
        binder_exception_t exception;
        int32_t serviceError;
        std::string message;
    };
    const std::vector<Case> cases = {
            {1, EX_NONE, 0, ""},
            {2, EX_SERVICE_SPECIFIC, -5, "bad handle"},
            {3, EX_ILLEGAL_ARGUMENT, 0, "nope"},
            {4, EX_SERVICE_SPECIFIC, 11, ""},
            {5, EX_SECURITY, 0, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.handle);
        int32_t r = 1234;
        ScopedAStatus status = proxy->troxResCtlRelease(c.handle, &r);
        EXPECT_EQ(status.getExceptionCode(), c.exception);
        EXPECT_EQ(status.getServiceSpecificError(), c.serviceError);
        EXPECT_EQ(std::string(status.getMessage()), c.message);
        EXPECT_EQ(service->handle, c.handle);
        EXPECT_EQ(r, c.exception == EX_NONE ? -c.handle : 1234);  // no result on failure
    }
}

// A device sends a null interface even where the AIDL does not say @nullable: the service sees
// nullptr and decides. The host must not refuse it earlier.
TEST_F(TroxProxyTest, NullCallbackReachesTheServiceAsNull) {
    service->callback = ndk::SharedRefBase::make<ITroxCallbackDefault>();
    int32_t r = 0;
    ScopedAStatus status = proxy->troxResListeningRegister(sampleRequest(), nullptr, &r);
    ASSERT_TRUE(status.isOk()) << status.getDescription();
    EXPECT_EQ(r, 41);
    EXPECT_EQ(service->method, "troxResListeningRegister");
    EXPECT_EQ(service->callback, nullptr);
}

TEST_F(TroxProxyTest, VersionAndHashThroughProxy) {
    for (int round = 0; round < 2; ++round) {  // second round is served from the cache
        int32_t version = 0;
        std::string hash;
        ASSERT_TRUE(proxy->getInterfaceVersion(&version).isOk());
        ASSERT_TRUE(proxy->getInterfaceHash(&hash).isOk());
        EXPECT_EQ(version, 1);
        EXPECT_EQ(hash, "d3f096dba0346c89ec4bd5ba6d3668a13f845826");
    }
}

TEST_F(TroxProxyTest, OneWayReturnsBeforeTheServiceFinishes) {
    service->blockOneWay = true;
    const auto start = std::chrono::steady_clock::now();
    ScopedAStatus status = proxy->troxResCtlRequestOneWay(sampleRequest());
    EXPECT_TRUE(status.isOk());
    EXPECT_FALSE(service->oneWayDone.done());
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
    service->release.notify();
    ASSERT_TRUE(service->oneWayDone.wait());
    EXPECT_EQ(service->request, sampleRequest());
}

TEST_F(TroxProxyTest, CallbackInsideRequestAndAsArgumentReachesOriginalObject) {
    auto cb = ndk::SharedRefBase::make<RecordingCallback>();
    TroxRequestParcel req = sampleRequest();
    req.callback = cb;
    int32_t r = 0;
    ASSERT_TRUE(proxy->troxResListeningRegister(req, cb, &r).isOk());
    ASSERT_NE(service->request.callback, nullptr);
    ASSERT_NE(service->callback, nullptr);
    EXPECT_TRUE(service->request.callback->isRemote());
    EXPECT_TRUE(service->callback->isRemote());
    // One remote object, one proxy binder in this process.
    EXPECT_EQ(service->request.callback->asBinder().get(), service->callback->asBinder().get());

    const std::vector<TroxRequestData> sent = {data(5, "five"), data(0x00000000FFFFFFFBLL)};
    ASSERT_TRUE(service->request.callback->onCallback(sent).isOk());
    ASSERT_TRUE(cb->called.wait());
    std::lock_guard<std::mutex> lock(cb->mutex);
    EXPECT_EQ(cb->received, sent);
}

TEST_F(TroxProxyTest, CallbackLogFuncSeesMethodAndStatus) {
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
    std::vector<BnTroxCallback::TransactionLog> logs;
    Signal logged;
    BnTroxCallback::logFunc = [&](const BnTroxCallback::TransactionLog& log) {
        std::lock_guard<std::mutex> lock(mutex);
        logs.push_back(log);
        logged.notify();
    };
    for (const auto& c : cases) {
        auto cb = ndk::SharedRefBase::make<RecordingCallback>();
        cb->reply = c.reply;
        int32_t r = 0;
        ASSERT_TRUE(proxy->troxThermalListeningRegister({1}, cb, &r).isOk());
        ASSERT_TRUE(service->callback->onCallback({data(9)}).isOk());  // one-way: always ok here
        ASSERT_TRUE(cb->called.wait());
        for (int i = 0; i < 500; ++i) {
            {
                std::lock_guard<std::mutex> lock(mutex);
                if (!logs.empty()) break;
            }
            std::this_thread::sleep_for(10ms);
        }
        std::lock_guard<std::mutex> lock(mutex);
        ASSERT_EQ(logs.size(), 1u);
        const auto& log = logs[0];
        EXPECT_EQ(log.method_name, "onCallback");
        EXPECT_EQ(log.interface_name, "vendor.vexal.hardware.trox.ITroxCallback");
        EXPECT_EQ(log.exception_code, c.exception);
        EXPECT_EQ(log.exception_message, c.message);
        EXPECT_EQ(log.transaction_error, c.transactionError);
        EXPECT_EQ(log.service_specific_error_code, c.serviceError);
        EXPECT_EQ(log.stub_address, static_cast<const void*>(cb.get()));
        ASSERT_EQ(log.input_args.size(), 1u);
        EXPECT_EQ(log.input_args[0].first, "in_data");
        EXPECT_NE(log.input_args[0].second.find("res_Id: 9"), std::string::npos);
        logs.clear();
    }
}

TEST_F(TroxProxyTest, ProxyLogFuncSeesEveryCall) {
    std::vector<std::string> methods, results;
    std::vector<int32_t> errors;
    BpTrox::logFunc = [&](const BpTrox::TransactionLog& log) {
        methods.push_back(log.method_name);
        errors.push_back(log.service_specific_error_code);
        results.push_back(log.result);
        EXPECT_NE(log.proxy_address, nullptr);
        EXPECT_EQ(log.stub_address, nullptr);
        EXPECT_TRUE(log.output_args.empty());
    };
    int32_t r = 0;
    EXPECT_TRUE(proxy->troxResCtlRelease(1, &r).isOk());
    EXPECT_FALSE(proxy->troxResCtlRelease(2, &r).isOk());
    BpTrox::logFunc = nullptr;
    EXPECT_EQ(methods, (std::vector<std::string>{"troxResCtlRelease", "troxResCtlRelease"}));
    EXPECT_EQ(errors, (std::vector<int32_t>{0, -5}));
    // The return value goes to `result`, read back whether or not the call succeeded.
    EXPECT_EQ(results, (std::vector<std::string>{"-1", "-1"}));
}

}  // namespace
