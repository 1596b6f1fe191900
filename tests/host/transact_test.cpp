// Calls through in-process proxies, objects in parcels and reference counts.
#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
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

    // Publishes an echo object and returns the client's proxy with the class associated.
    ndk::SpAIBinder serveEcho() {
        EXPECT_EQ(EX_NONE, AServiceManager_addService(newEcho(&state_).get(), kName));
        ndk::SpAIBinder proxy(AServiceManager_checkService(kName));
        EXPECT_TRUE(proxy.get() != nullptr && AIBinder_associateClass(proxy.get(), echoClass()));
        return proxy;
    }

    // Outlive the test body: services are only released by TearDown.
    EchoState state_;
    EchoState other_;
};

TEST_F(TransactTest, ProxyCallsReachTheServiceAndItsAnswer) {
    ndk::SpAIBinder proxy = serveEcho();
    EXPECT_TRUE(AIBinder_isRemote(proxy.get()));
    EXPECT_TRUE(AIBinder_isAlive(proxy.get()));
    EXPECT_EQ(STATUS_OK, AIBinder_ping(proxy.get()));
    EXPECT_EQ(nullptr, AIBinder_getUserData(proxy.get()));
    EXPECT_EQ(proxy.get(), ndk::SpAIBinder(AServiceManager_checkService(kName)).get());
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(proxy.get(), "h\xc3\xa9llo \xf0\x9f\x98\x80", &reply));
    EXPECT_EQ("h\xc3\xa9llo \xf0\x9f\x98\x80", reply.value());
    ndk::ScopedAParcel out;
    EXPECT_EQ(STATUS_PERMISSION_DENIED, call(proxy.get(), kFail, nullptr, &out));
    EXPECT_EQ(nullptr, out.get());
    EXPECT_EQ(2, state_.calls.load());
    std::lock_guard<std::mutex> lock(state_.mutex);
    EXPECT_EQ(getpid(), state_.lastCallingPid);
}

TEST_F(TransactTest, CodesOutsideUserRangeNeverReachTheService) {
    ndk::SpAIBinder proxy = serveEcho();
    for (transaction_code_t code : {0u, 0x01000000u, 0xffffffffu}) {
        AParcel* in = nullptr;
        ASSERT_EQ(STATUS_OK, AIBinder_prepareTransaction(proxy.get(), &in));
        AParcel* out = reinterpret_cast<AParcel*>(0x1);
        EXPECT_EQ(STATUS_UNKNOWN_TRANSACTION, AIBinder_transact(proxy.get(), code, &in, &out, 0))
                << code;
        EXPECT_EQ(nullptr, in);
        EXPECT_EQ(nullptr, out);
    }
    EXPECT_EQ(0, state_.calls.load());
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
    ndk::SpAIBinder proxy = serveEcho();
    const std::vector<std::pair<std::string, std::function<void(AParcel*)>>> tokens = {
            {"prefix", [](AParcel* in) { writeString(in, "test.vexal.IEch"); }},
            {"longer", [](AParcel* in) { writeString(in, "test.vexal.IEcho2"); }},
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
    EXPECT_EQ(0, state_.calls.load());
}

TEST_F(TransactTest, ClassAssociationChecksDescriptor) {
    ndk::SpAIBinder local = newEcho(&state_);
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
    EXPECT_STREQ(kEchoDescriptor, AIBinder_Class_getDescriptor(AIBinder_getClass(proxy.get())));
    EXPECT_FALSE(AIBinder_associateClass(local.get(), other));
}

TEST_F(TransactTest, OneWayCallsReturnAtOnceAndArriveInOrder) {
    ndk::SpAIBinder proxy = serveEcho();
    EchoState& s = state_;
    ndk::ScopedAParcel out;
    ASSERT_EQ(STATUS_OK, call(proxy.get(), kBlock, nullptr, &out, FLAG_ONEWAY));
    EXPECT_TRUE(out.get() == nullptr || AParcel_getDataSize(out.get()) == 0);
    for (int32_t i = 0; i < 200; ++i) {
        ASSERT_EQ(STATUS_OK, sendInt(proxy.get(), kRecord, i, nullptr, FLAG_ONEWAY));
    }
    std::unique_lock<std::mutex> lock(s.mutex);
    // The blocking call reached the service on another thread and is still held there.
    ASSERT_TRUE(s.cv.wait_for(lock, 5s, [&] { return s.blockedCallStarted; }));
    EXPECT_FALSE(s.released);
    s.released = true;
    s.cv.notify_all();
    ASSERT_TRUE(s.cv.wait_for(lock, 5s, [&] { return s.received.size() == 200; }));
    for (int32_t i = 0; i < 200; ++i) EXPECT_EQ(i, s.received[static_cast<size_t>(i)]);
}

TEST_F(TransactTest, ObjectsLiveWhileAStrongReferenceDoes) {
    EchoState& s = state_;
    ndk::SpAIBinder proxy = serveEcho();
    EXPECT_FALSE(s.destroyed.load()) << "the service manager still holds it";
    binder_host::resetServiceManager();
    EXPECT_FALSE(s.destroyed.load()) << "the proxy still holds it";
    std::optional<std::string> reply;
    EXPECT_EQ(STATUS_OK, callEcho(proxy.get(), "still here", &reply));
    proxy.set(nullptr);
    EXPECT_TRUE(s.destroyed.load());

    ndk::SpAIBinder local = newEcho(&other_);
    EXPECT_EQ(1, AIBinder_debugGetRefCount(local.get()));
    ndk::ScopedAIBinder_Weak weak(AIBinder_Weak_new(local.get()));
    EXPECT_EQ(local, weak.promote());
    local.set(nullptr);
    EXPECT_TRUE(other_.destroyed.load());
    EXPECT_EQ(nullptr, weak.promote().get());
}

}  // namespace
