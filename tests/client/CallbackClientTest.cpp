#include "ClientTestSupport.h"

#include <errno.h>

namespace vexal::testing {
namespace {

using ::aidl::vendor::vexal::hardware::trox::BnTroxCallback;

const char kRemovalFormat[] =
        "TroxCallback::onCallback request callback called , remove from request_callbacks , "
        "request_callbacks size before %d after %d";

LogLine removal(int before, int after) {
    char text[256];
    snprintf(text, sizeof(text), kRemovalFormat, before, after);
    return cbInfo(text);
}

LogLine callingCaller(int isRegister) {
    return cbInfo("TroxCallback::onCallback call IClientCallback onCallback is_register " +
                  std::to_string(isRegister));
}

const LogLine kFound = cbInfo("callback is found in request_callbacks");
const LogLine kNotFound = cbError("callback not found in request_callbacks");
const LogLine kDestroyed = cbInfo("ndk backend ~TroxCallbackClient");

// The hook logs with a null tag, which liblog replaces with the program's name.
LogLine untagged(const std::string& text) {
    return {ANDROID_LOG_INFO, program_invocation_short_name, text};
}

class CallbackClientTest : public ClientTest {
  protected:
    // A one-shot request whose client the fake service now holds.
    std::shared_ptr<ITroxCallback> oneShot(const std::shared_ptr<IClientCallback>& callback) {
        Resources list{{1, "1"}};
        troxHalclient::troxResCtlRequest(-1, 10, list, -1, -1, 1, callback);
        auto sent = lastParcel().callback;
        logs.clear();
        return sent;
    }
};

TEST_F(CallbackClientTest, OneShotDeliversIdFormThenLeavesTheRegistry) {
    auto callback = std::make_shared<RecordingCallback>();
    auto remote = oneShot(callback);
    ASSERT_EQ(requestCallbackCount(), 1u);

    sendFromService(remote, {record(0x10, "800"), record(0xFFFFFFFBLL), record(0x700000002LL, "")});
    ASSERT_TRUE(callback->waitFor(1));
    ASSERT_TRUE(waitForCallbackLine(removal(1, 0)));

    EXPECT_EQ(callback->received(), (std::vector<Resources>{{{0x10, "800"}, {-5, ""}, {2, ""}}}));
    EXPECT_EQ(requestCallbackCount(), 0u);
    EXPECT_EQ(
            callbackLines(),
            (Lines{cbInfo("TroxCallbackClient::onCallback res_Id 0x10 res_Value 800 is_register 0"),
                   cbInfo("TroxCallbackClient::onCallback res_Id 0xfffffffb is_register 0"),
                   cbInfo("TroxCallbackClient::onCallback res_Id 0x2 res_Value  is_register 0"),
                   callingCaller(0), kFound, removal(1, 0)}));
}

TEST_F(CallbackClientTest, SecondCallbackStillDeliversButFindsNothingToRemove) {
    auto callback = std::make_shared<RecordingCallback>();
    auto remote = oneShot(callback);
    sendFromService(remote, {record(1, "a")});
    ASSERT_TRUE(waitForCallbackLine(removal(1, 0)));
    logs.clear();

    sendFromService(remote, {record(2, "b")});
    ASSERT_TRUE(callback->waitFor(2));
    ASSERT_TRUE(waitForCallbackLine(removal(0, 0)));

    EXPECT_EQ(callback->received()[1], (Resources{{2, "b"}}));
    EXPECT_EQ(callbackLines(),
              (Lines{cbInfo("TroxCallbackClient::onCallback res_Id 0x2 res_Value b is_register 0"),
                     callingCaller(0), kNotFound, removal(0, 0)}));
}

TEST_F(CallbackClientTest, EmptyRecordListCallsNobodyButStillRemoves) {
    auto callback = std::make_shared<RecordingCallback>();
    auto remote = oneShot(callback);
    sendFromService(remote, {});
    ASSERT_TRUE(waitForCallbackLine(removal(1, 0)));
    EXPECT_TRUE(callback->received().empty());
    EXPECT_EQ(callbackLines(), (Lines{kFound, removal(1, 0)}));
}

TEST_F(CallbackClientTest, RemovalKeepsTheOtherClientsInOrder) {
    auto first = std::make_shared<RecordingCallback>();
    auto second = std::make_shared<RecordingCallback>();
    auto third = std::make_shared<RecordingCallback>();
    oneShot(first);
    auto remote = oneShot(second);
    oneShot(third);

    sendFromService(remote, {record(4, "4")});
    ASSERT_TRUE(waitForCallbackLine(removal(3, 2)));
    std::lock_guard<std::mutex> lock(request_callback_mutex);
    ASSERT_EQ(request_callbacks.size(), 2u);
    EXPECT_EQ(request_callbacks[0]->mCallback, first);
    EXPECT_EQ(request_callbacks[1]->mCallback, third);
}

TEST_F(CallbackClientTest, TransactionLogHookWritesAnUntaggedLine) {
    auto callback = std::make_shared<RecordingCallback>();
    auto remote = oneShot(callback);
    sendFromService(remote, {record(1, "1")});
    const auto untaggedLines = [&] { return logs.linesWithTag(program_invocation_short_name); };
    ASSERT_TRUE(eventually([&] { return !untaggedLines().empty(); }));
    EXPECT_EQ(untaggedLines(),
              Lines{untagged("BnTroxCallback::logFunc NDK BACKEND method_name onCallback "
                             "exception_code 0 exception_message  transaction_error 0 "
                             "service_specific_error_code 0")});
}

TEST_F(CallbackClientTest, EveryConstructionInstallsTheHook) {
    BnTroxCallback::logFunc = nullptr;
    auto idClient = ndk::SharedRefBase::make<TroxCallbackClient>(
            std::shared_ptr<IClientCallback>(std::make_shared<RecordingCallback>()));
    ASSERT_TRUE(static_cast<bool>(BnTroxCallback::logFunc));

    BnTroxCallback::logFunc = nullptr;
    auto pathClient = ndk::SharedRefBase::make<TroxCallbackClient>(
            std::shared_ptr<IClientCallbackByPath>(std::make_shared<RecordingPathCallback>()), true,
            true);
    ASSERT_TRUE(static_cast<bool>(BnTroxCallback::logFunc));

    BnTroxCallback::TransactionLog log;
    log.method_name = "m";
    log.exception_code = -8;
    log.exception_message = "msg";
    log.transaction_error = -32;
    log.service_specific_error_code = 12;
    BnTroxCallback::logFunc(log);
    EXPECT_EQ(logs.linesWithTag(program_invocation_short_name),
              Lines{untagged("BnTroxCallback::logFunc NDK BACKEND method_name m exception_code -8 "
                             "exception_message msg transaction_error -32 "
                             "service_specific_error_code 12")});
}

TEST_F(CallbackClientTest, ConstructorsFillTheFields) {
    auto caller = std::make_shared<RecordingCallback>();
    auto byPath = std::make_shared<RecordingPathCallback>();
    auto defaults =
            ndk::SharedRefBase::make<TroxCallbackClient>(std::shared_ptr<IClientCallback>(caller));
    auto path = ndk::SharedRefBase::make<TroxCallbackClient>(
            std::shared_ptr<IClientCallbackByPath>(byPath), false, true);

    EXPECT_EQ(defaults->mCallback, caller);
    EXPECT_EQ(defaults->mCallbackByPath, nullptr);
    EXPECT_TRUE(defaults->is_register);
    EXPECT_FALSE(defaults->is_by_path);
    EXPECT_EQ(path->mCallback, nullptr);
    EXPECT_EQ(path->mCallbackByPath, byPath);
    EXPECT_FALSE(path->is_register);
    EXPECT_TRUE(path->is_by_path);
}

TEST_F(CallbackClientTest, DestructionIsLoggedAndReleasesTheCaller) {
    auto caller = std::make_shared<RecordingCallback>();
    {
        auto client = ndk::SharedRefBase::make<TroxCallbackClient>(
                std::shared_ptr<IClientCallback>(caller));
        EXPECT_EQ(caller.use_count(), 2);
    }
    EXPECT_EQ(caller.use_count(), 1);
    EXPECT_EQ(callbackLines(), Lines{kDestroyed});
}

TEST_F(CallbackClientTest, SameClientTwiceIsRemovedTwice) {
    auto caller = std::make_shared<RecordingCallback>();
    auto client = ndk::SharedRefBase::make<TroxCallbackClient>(
            std::shared_ptr<IClientCallback>(caller), false);
    auto other = ndk::SharedRefBase::make<TroxCallbackClient>(
            std::shared_ptr<IClientCallback>(caller), false);
    {
        std::lock_guard<std::mutex> lock(request_callback_mutex);
        request_callbacks = {client, other, client};
    }
    EXPECT_TRUE(client->onCallback({record(1, "x")}).isOk());
    EXPECT_EQ(callbackLines(),
              (Lines{cbInfo("TroxCallbackClient::onCallback res_Id 0x1 res_Value x is_register 0"),
                     callingCaller(0), kFound, kFound, removal(3, 1)}));
    EXPECT_EQ(requestCallbackCount(), 1u);
}

TEST_F(CallbackClientTest, RegistrationClientIsNeverLookedUp) {
    auto caller = std::make_shared<RecordingCallback>();
    auto client =
            ndk::SharedRefBase::make<TroxCallbackClient>(std::shared_ptr<IClientCallback>(caller));
    {
        std::lock_guard<std::mutex> lock(request_callback_mutex);
        request_callbacks = {client};
    }
    EXPECT_TRUE(client->onCallback({}).isOk());
    EXPECT_TRUE(client->onCallback({record(3)}).isOk());
    EXPECT_EQ(requestCallbackCount(), 1u);
    EXPECT_EQ(callbackLines(),
              (Lines{cbInfo("TroxCallbackClient::onCallback res_Id 0x3 is_register 1"),
                     callingCaller(1)}));
    EXPECT_EQ(caller->received(), (std::vector<Resources>{{{3, ""}}}));
}

TEST_F(CallbackClientTest, MissingCallerObjectIsSkippedSilently) {
    auto client = ndk::SharedRefBase::make<TroxCallbackClient>(std::shared_ptr<IClientCallback>());
    EXPECT_TRUE(client->onCallback({record(6, "6")}).isOk());
    EXPECT_EQ(callbackLines(),
              Lines{cbInfo("TroxCallbackClient::onCallback res_Id 0x6 res_Value 6 is_register 1")});
}

TEST_F(CallbackClientTest, PathFormDeliversValuesBeforePaths) {
    auto caller = std::make_shared<RecordingPathCallback>();
    auto client = ndk::SharedRefBase::make<TroxCallbackClient>(
            std::shared_ptr<IClientCallbackByPath>(caller), true, true);
    EXPECT_TRUE(client->onCallback({pathRecord("/a", "1"), record(5, "2"),
                                    pathRecord("/c", std::nullopt), record(7)})
                        .isOk());
    EXPECT_EQ(caller->received(), (std::vector<RecordingPathCallback::Delivery>{
                                          {{"1", "2", "", ""}, {"/a", "", "/c", ""}}}));
    // Only a record with both a path and a value gets a line of its own.
    EXPECT_EQ(callbackLines(),
              (Lines{cbInfo("TroxCallbackClient::onCallback res_Id /a res_Value 1 is_register 1"),
                     callingCaller(1)}));
}

TEST_F(CallbackClientTest, PathFormWithoutCallerOnlyLogsRecords) {
    auto client = ndk::SharedRefBase::make<TroxCallbackClient>(
            std::shared_ptr<IClientCallbackByPath>(), true, true);
    EXPECT_TRUE(client->onCallback({pathRecord("/p", "v")}).isOk());
    EXPECT_EQ(callbackLines(),
              Lines{cbInfo("TroxCallbackClient::onCallback res_Id /p res_Value v is_register 1")});
}

}  // namespace
}  // namespace vexal::testing
