#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <binder/IPCThreadState.h>
#include <binder_host/service_control.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "binder_test_util.h"

namespace {

using namespace binder_test;
using namespace std::chrono_literals;

constexpr const char* kName = "test.vexal.IEcho/default";

class TransactTest : public testing::Test {
  protected:
    void TearDown() override { binder_host::resetServiceManager(); }

    // Outlives the test body: services are only released by TearDown.
    EchoState& makeState() { return *states_.emplace_back(std::make_unique<EchoState>()); }

  private:
    std::vector<std::unique_ptr<EchoState>> states_;

  protected:
    // Registers a fresh echo object and returns the client's proxy with the class associated.
    ndk::SpAIBinder serveEcho(EchoState* state, const char* name = kName) {
        ndk::SpAIBinder local = newEcho(state);
        EXPECT_EQ(EX_NONE, AServiceManager_addService(local.get(), name));
        ndk::SpAIBinder proxy(AServiceManager_checkService(name));
        EXPECT_NE(nullptr, proxy.get());
        if (proxy.get() != nullptr) {
            EXPECT_TRUE(AIBinder_associateClass(proxy.get(), echoClass()));
        }
        return proxy;
    }
};

TEST_F(TransactTest, CodesOutsideUserRangeNeverReachTheService) {
    EchoState& state = makeState();
    ndk::SpAIBinder proxy = serveEcho(&state);
    for (transaction_code_t code : {0u, 0x01000000u, 0xffffffffu}) {
        AParcel* in = nullptr;
        ASSERT_EQ(STATUS_OK, AIBinder_prepareTransaction(proxy.get(), &in));
        AParcel* out = reinterpret_cast<AParcel*>(0x1);
        EXPECT_EQ(STATUS_UNKNOWN_TRANSACTION, AIBinder_transact(proxy.get(), code, &in, &out, 0))
                << code;
        EXPECT_EQ(nullptr, in);
        EXPECT_EQ(nullptr, out);
    }
    EXPECT_EQ(0, state.calls.load());
}

TEST_F(TransactTest, EchoRoundTripThroughProxy) {
    EchoState& state = makeState();
    ndk::SpAIBinder proxy = serveEcho(&state);
    EXPECT_TRUE(AIBinder_isRemote(proxy.get()));
    EXPECT_TRUE(AIBinder_isAlive(proxy.get()));
    EXPECT_EQ(STATUS_OK, AIBinder_ping(proxy.get()));
    EXPECT_EQ(nullptr, AIBinder_getUserData(proxy.get()));
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(proxy.get(), "h\xc3\xa9llo \xf0\x9f\x98\x80", &reply));
    EXPECT_EQ("h\xc3\xa9llo \xf0\x9f\x98\x80", reply.value());
    EXPECT_EQ(1, state.calls.load());
    std::lock_guard<std::mutex> lock(state.mutex);
    EXPECT_EQ(getpid(), state.lastCallingPid);
}

TEST_F(TransactTest, ProxyIdentityIsPointerEquality) {
    EchoState& state = makeState();
    ndk::SpAIBinder first = serveEcho(&state);
    ndk::SpAIBinder second(AServiceManager_checkService(kName));
    EXPECT_EQ(first.get(), second.get());
    EXPECT_FALSE(AIBinder_lt(first.get(), second.get()));
}

// Tokens that are near the echo service's "test.vexal.IEcho" but not it.
void writeUnterminatedToken(AParcel* in) {
    const std::string token = "test.vexal.IEcho";
    AParcel_writeInt32(in, static_cast<int32_t>(token.size()));
    for (size_t i = 0; i < token.size(); i += 2) {
        AParcel_writeInt32(in, static_cast<int32_t>(token[i] | (token[i + 1] << 16)));
    }
    AParcel_writeInt32(in, 'A');  // where the terminating NUL belongs
}

TEST_F(TransactTest, WrongInterfaceTokenIsRejectedBeforeOnTransact) {
    EchoState& state = makeState();
    ndk::SpAIBinder proxy = serveEcho(&state);
    const std::vector<std::pair<std::string, std::function<void(AParcel*)>>> tokens = {
            {"other", [](AParcel* in) { writeString(in, "some.other.IFace"); }},
            {"prefix", [](AParcel* in) { writeString(in, "test.vexal.IEch"); }},
            {"longer", [](AParcel* in) { writeString(in, "test.vexal.IEcho2"); }},
            {"lastUnitDiffers", [](AParcel* in) { writeString(in, "test.vexal.IEchp"); }},
            {"nonAscii", [](AParcel* in) { writeString(in, "test.vexal.IEch\xc3\xb3"); }},
            {"null", [](AParcel* in) { AParcel_writeString(in, nullptr, -1); }},
            {"unterminated", writeUnterminatedToken},
            {"empty parcel", [](AParcel*) {}},
    };
    for (const auto& [name, writeToken] : tokens) {
        AParcel* in = AParcel_create();
        writeToken(in);
        writeString(in, "x");
        ndk::ScopedAParcel out;
        EXPECT_EQ(STATUS_BAD_TYPE, AIBinder_transact(proxy.get(), kEcho, &in, out.getR(), 0))
                << name;
    }
    EXPECT_EQ(0, state.calls.load());
}

TEST_F(TransactTest, ServiceErrorStatusReachesCaller) {
    EchoState& state = makeState();
    ndk::SpAIBinder proxy = serveEcho(&state);
    AParcel* in = nullptr;
    ASSERT_EQ(STATUS_OK, AIBinder_prepareTransaction(proxy.get(), &in));
    ndk::ScopedAParcel out;
    EXPECT_EQ(STATUS_PERMISSION_DENIED, AIBinder_transact(proxy.get(), kFail, &in, out.getR(), 0));
    EXPECT_EQ(nullptr, out.get());
}

TEST_F(TransactTest, ClassAssociationChecksDescriptor) {
    EchoState& state = makeState();
    ndk::SpAIBinder local = newEcho(&state);
    ASSERT_EQ(EX_NONE, AServiceManager_addService(local.get(), kName));
    ndk::SpAIBinder proxy(AServiceManager_checkService(kName));
    AParcel* in = nullptr;
    EXPECT_EQ(STATUS_INVALID_OPERATION, AIBinder_prepareTransaction(proxy.get(), &in));
    static const AIBinder_Class* other =
            AIBinder_Class_define("test.vexal.IOther", nullptr, nullptr,
                                  [](AIBinder*, transaction_code_t, const AParcel*,
                                     AParcel*) -> binder_status_t { return STATUS_OK; });
    EXPECT_FALSE(AIBinder_associateClass(proxy.get(), other));
    EXPECT_TRUE(AIBinder_associateClass(proxy.get(), echoClass()));
    EXPECT_EQ(echoClass(), AIBinder_getClass(proxy.get()));
    EXPECT_STREQ(kEchoDescriptor, AIBinder_Class_getDescriptor(AIBinder_getClass(proxy.get())));
    EXPECT_FALSE(AIBinder_associateClass(local.get(), other));
}

TEST_F(TransactTest, OneWayReturnsBeforeTheServiceFinishes) {
    EchoState& state = makeState();
    ndk::SpAIBinder proxy = serveEcho(&state);
    AParcel* in = nullptr;
    ASSERT_EQ(STATUS_OK, AIBinder_prepareTransaction(proxy.get(), &in));
    ndk::ScopedAParcel out;
    ASSERT_EQ(STATUS_OK, AIBinder_transact(proxy.get(), kBlock, &in, out.getR(), FLAG_ONEWAY));
    EXPECT_TRUE(out.get() == nullptr || AParcel_getDataSize(out.get()) == 0);
    std::unique_lock<std::mutex> lock(state.mutex);
    // The call reached the service on another thread and is still held there.
    ASSERT_TRUE(state.cv.wait_for(lock, 5s, [&] { return state.blockedCallStarted; }));
    EXPECT_FALSE(state.released);
    state.released = true;
    state.cv.notify_all();
}

TEST_F(TransactTest, OneWayCallsArriveInOrder) {
    EchoState& state = makeState();
    ndk::SpAIBinder proxy = serveEcho(&state);
    constexpr int kCount = 200;
    for (int32_t i = 0; i < kCount; ++i) {
        AParcel* in = nullptr;
        ASSERT_EQ(STATUS_OK, AIBinder_prepareTransaction(proxy.get(), &in));
        AParcel_writeInt32(in, i);
        ndk::ScopedAParcel out;
        ASSERT_EQ(STATUS_OK, AIBinder_transact(proxy.get(), kRecord, &in, out.getR(), FLAG_ONEWAY));
    }
    std::unique_lock<std::mutex> lock(state.mutex);
    ASSERT_TRUE(state.cv.wait_for(lock, 5s, [&] { return state.received.size() == kCount; }));
    for (int32_t i = 0; i < kCount; ++i) EXPECT_EQ(i, state.received[static_cast<size_t>(i)]);
}

TEST_F(TransactTest, BinderInParcelArrivesAsProxyThatCallsBack) {
    EchoState& serviceState = makeState();
    EchoState& callbackState = makeState();
    ndk::SpAIBinder proxy = serveEcho(&serviceState);
    ndk::SpAIBinder callback = newEcho(&callbackState);

    AParcel* in = nullptr;
    ASSERT_EQ(STATUS_OK, AIBinder_prepareTransaction(proxy.get(), &in));
    ASSERT_EQ(STATUS_OK, AParcel_writeStrongBinder(in, callback.get()));
    writeString(in, "ping");
    ndk::ScopedAParcel out;
    ASSERT_EQ(STATUS_OK, AIBinder_transact(proxy.get(), kCallBack, &in, out.getR(), 0));
    bool sawProxy = false;
    ASSERT_EQ(STATUS_OK, AParcel_readBool(out.get(), &sawProxy));
    EXPECT_TRUE(sawProxy);
    std::optional<std::string> echoed;
    ASSERT_EQ(STATUS_OK, readString(out.get(), &echoed));
    EXPECT_EQ("ping", echoed.value());
    EXPECT_EQ(1, callbackState.calls.load());
}

TEST_F(TransactTest, SameObjectTwiceGivesOneProxy) {
    EchoState& state = makeState();
    ndk::SpAIBinder local = newEcho(&state);
    ndk::ScopedAParcel parcel(AParcel_create());
    AParcel_writeStrongBinder(parcel.get(), local.get());
    AParcel_writeStrongBinder(parcel.get(), local.get());
    AParcel_setDataPosition(parcel.get(), 0);
    ndk::SpAIBinder a;
    ndk::SpAIBinder b;
    ASSERT_EQ(STATUS_OK, AParcel_readStrongBinder(parcel.get(), a.getR()));
    ASSERT_EQ(STATUS_OK, AParcel_readStrongBinder(parcel.get(), b.getR()));
    EXPECT_EQ(a, b);
    EXPECT_NE(a.get(), local.get());
    EXPECT_EQ(2, AIBinder_debugGetRefCount(a.get()));
}

TEST_F(TransactTest, LastReferenceDestroysTheService) {
    EchoState& state = makeState();
    {
        ndk::SpAIBinder local = newEcho(&state);
        EXPECT_EQ(1, AIBinder_debugGetRefCount(local.get()));
        ndk::SpAIBinder copy = local;
        EXPECT_EQ(2, AIBinder_debugGetRefCount(local.get()));
        ASSERT_EQ(EX_NONE, AServiceManager_addService(local.get(), kName));
        ndk::SpAIBinder proxy(AServiceManager_checkService(kName));
        ASSERT_NE(nullptr, proxy.get());
    }
    // The service manager still holds it.
    EXPECT_FALSE(state.destroyed.load());
    binder_host::resetServiceManager();
    EXPECT_TRUE(state.destroyed.load());
}

TEST_F(TransactTest, ProxyKeepsServiceAliveUntilDropped) {
    EchoState& state = makeState();
    ndk::SpAIBinder proxy = serveEcho(&state);
    binder_host::resetServiceManager();
    EXPECT_FALSE(state.destroyed.load());
    std::optional<std::string> reply;
    EXPECT_EQ(STATUS_OK, callEcho(proxy.get(), "still here", &reply));
    proxy.set(nullptr);
    EXPECT_TRUE(state.destroyed.load());
}

TEST_F(TransactTest, WeakReferencesDoNotKeepObjectsAlive) {
    EchoState& state = makeState();
    ndk::SpAIBinder local = newEcho(&state);
    ndk::ScopedAIBinder_Weak weak(AIBinder_Weak_new(local.get()));
    {
        ndk::SpAIBinder promoted = weak.promote();
        EXPECT_EQ(local, promoted);
    }
    local.set(nullptr);
    EXPECT_TRUE(state.destroyed.load());
    EXPECT_EQ(nullptr, weak.promote().get());
}

TEST_F(TransactTest, CallingIdentityInsideAndOutsideTransactions) {
    EXPECT_EQ(getpid(), AIBinder_getCallingPid());
    EXPECT_EQ(getuid(), AIBinder_getCallingUid());
    EXPECT_FALSE(AIBinder_isHandlingTransaction());
    EXPECT_EQ(getpid(), android::IPCThreadState::self()->getCallingPid());
    EXPECT_EQ(getuid(), android::IPCThreadState::self()->getCallingUid());
}

TEST_F(TransactTest, LocalTransactServesOnTheSpot) {
    EchoState& state = makeState();
    ndk::SpAIBinder local = newEcho(&state);
    EXPECT_FALSE(AIBinder_isRemote(local.get()));
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(local.get(), "local", &reply));
    EXPECT_EQ("local", reply.value());
    EXPECT_EQ(&state, AIBinder_getUserData(local.get()));
}

}  // namespace
