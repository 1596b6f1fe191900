#include "ClientTestSupport.h"

namespace vexal::testing {
namespace {

const LogLine kRegistered = info("A callback has been registered to Trox HAL ");
const LogLine kDuplicate = error("Same callback interface registered already");
const LogLine kNotRegistered = error("The callback was not registered before");

LogLine unregistered(int handle) {
    return info("a callback has been unregistered to Trox HAL handle " + std::to_string(handle));
}

class ListeningTest : public ClientTest {
  protected:
    int registerIds(Resources list, int handle,
                    std::shared_ptr<IClientCallback> callback = nullptr) {
        if (!callback) callback = std::make_shared<RecordingCallback>();
        fake().setIntResult("troxResListeningRegister", handle);
        const int result = troxHalclient::troxResListeningRegister(list, 3, callback);
        if (result == handle) registered(handle);
        return result;
    }
};

TEST_F(ListeningTest, RegistersIdsWithTheValueAsPidAndACallback) {
    auto callback = std::make_shared<RecordingCallback>();
    Resources list{{0x20, "5"}, {-1, std::nullopt}};
    fake().setIntResult("troxResListeningRegister", 700);
    EXPECT_EQ(troxHalclient::troxResListeningRegister(list, 1234, callback), 700);
    registered(700);

    const auto call = fake().lastCall();
    EXPECT_EQ(call.method, "troxResListeningRegister");
    ASSERT_NE(call.callback, nullptr);
    TroxRequestParcel expected = parcel(0);
    expected.pid = 1234;
    expected.requestData = {record(0x20, "5"), record(0xFFFFFFFFLL, "")};
    EXPECT_EQ(*call.parcel, expected) << call.parcel->toString();
    EXPECT_EQ(troxLines(), (Lines{info("troxResListeningRegister"), kRegistered}));
}

TEST_F(ListeningTest, RegistrationDeliversEveryCallbackUntilUnregistered) {
    auto callback = std::make_shared<RecordingCallback>();
    ASSERT_EQ(registerIds({{5, "1"}}, 701, callback), 701);
    auto remote = fake().lastCall().callback;
    logs.clear();

    sendFromService(remote, {record(5, "2")});
    sendFromService(remote, {record(5, "3"), record(6)});
    ASSERT_TRUE(callback->waitFor(2));
    ASSERT_TRUE(eventually([&] { return callbackLines().size() == 5u; }));

    EXPECT_EQ(callback->received(), (std::vector<Resources>{{{5, "2"}}, {{5, "3"}, {6, ""}}}));
    const LogLine calling =
            cbInfo("TroxCallback::onCallback call IClientCallback onCallback is_register 1");
    EXPECT_EQ(callbackLines(),
              (Lines{cbInfo("TroxCallbackClient::onCallback res_Id 0x5 res_Value 2 is_register 1"),
                     calling,
                     cbInfo("TroxCallbackClient::onCallback res_Id 0x5 res_Value 3 is_register 1"),
                     cbInfo("TroxCallbackClient::onCallback res_Id 0x6 is_register 1"), calling}))
            << "a registration client never looks into request_callbacks";
}

TEST_F(ListeningTest, SameIdListIsRefusedWithoutACallWhateverTheCallback) {
    ASSERT_EQ(registerIds({{5, "1"}, {6, "1"}}, 702), 702);
    const size_t calls = fake().callCount();
    logs.clear();

    EXPECT_EQ(registerIds({{5, "9"}, {6, std::nullopt}}, 703), -1);
    EXPECT_EQ(fake().callCount(), calls);
    EXPECT_EQ(troxLines(), (Lines{info("troxResListeningRegister"), kDuplicate}));

    // Another order is another list.
    EXPECT_EQ(registerIds({{6, "1"}, {5, "1"}}, 704), 704);
}

TEST_F(ListeningTest, EmptyListRegistersOnceThenCountsAsDuplicate) {
    ASSERT_EQ(registerIds({}, 705), 705);
    EXPECT_EQ(registerIds({}, 706), -1);
    EXPECT_EQ(troxLines().back(), kDuplicate);
}

TEST_F(ListeningTest, UnregisterRemovesTheGroupSoTheIdsCanRegisterAgain) {
    ASSERT_EQ(registerIds({{8, "1"}}, 707), 707);
    logs.clear();
    fake().setIntResult("troxResListeningUnRegister", 0);

    EXPECT_EQ(troxHalclient::troxResListeningUnRegister(707), 0);
    EXPECT_EQ(fake().lastCall().ints, std::vector<int32_t>{707});
    EXPECT_EQ(troxLines(),
              (Lines{info("trox client troxResListeningUnRegister"), unregistered(707)}));

    EXPECT_EQ(registerIds({{8, "1"}}, 708), 708);
}

TEST_F(ListeningTest, UnknownHandleStillCallsTheService) {
    fake().setIntResult("troxResListeningUnRegister", -3);
    EXPECT_EQ(troxHalclient::troxResListeningUnRegister(12345), -3);
    EXPECT_EQ(fake().lastCall().method, "troxResListeningUnRegister");
    EXPECT_EQ(troxLines(), (Lines{info("trox client troxResListeningUnRegister"), kNotRegistered}));
}

TEST_F(ListeningTest, EveryGroupWithTheHandleGoesAndIsLoggedEach) {
    ASSERT_EQ(registerIds({{1, "1"}}, 709), 709);
    ASSERT_EQ(registerIds({{2, "1"}}, 709), 709);
    logs.clear();
    troxHalclient::troxResListeningUnRegister(709);
    EXPECT_EQ(troxLines(), (Lines{info("trox client troxResListeningUnRegister"), unregistered(709),
                                  unregistered(709)}));
}

TEST_F(ListeningTest, FailedUnregisterStillRemovesAndLogsTheFailureLast) {
    ASSERT_EQ(registerIds({{9, "1"}}, 710), 710);
    logs.clear();
    fake().failNextCalls(1);
    EXPECT_EQ(troxHalclient::troxResListeningUnRegister(710), -1);
    EXPECT_EQ(troxLines(), (Lines{info("trox client troxResListeningUnRegister"), unregistered(710),
                                  failed("troxResListeningUnRegister")}));
    EXPECT_EQ(registerIds({{9, "1"}}, 711), 711) << "the group must be gone";
}

TEST_F(ListeningTest, FailedRegistrationAddsNoGroupAndNamesTheMapMember) {
    fake().failNextCalls(1);
    EXPECT_EQ(registerIds({{10, "1"}}, 712), -1);
    EXPECT_EQ(troxLines(),
              (Lines{info("troxResListeningRegister"), failed("trox_res_listening_register_map")}));
    EXPECT_EQ(registerIds({{10, "1"}}, 713), 713) << "no group may be left behind";
}

TEST_F(ListeningTest, ThermalNotifySendsLevelsAndMapsTheAnswer) {
    Resources levels{{1, "45"}, {0, std::nullopt}};
    fake().setIntResult("troxResCtlRequest", 2);
    EXPECT_EQ(troxHalclient::troxThermalNotify(levels, 66), 0);

    TroxRequestParcel expected = parcel(7);
    expected.pid = 66;
    expected.requestData = {record(1, "45"), record(0, "")};
    EXPECT_EQ(lastParcel(), expected) << lastParcel().toString();
    EXPECT_EQ(troxLines(), Lines{info("trox client troxThermalNotify")});

    fake().setIntResult("troxResCtlRequest", 0);
    EXPECT_EQ(troxHalclient::troxThermalNotify(levels, 66), -1) << "an answer of 0 is a refusal";
}

TEST_F(ListeningTest, ThermalNotifyRefusesABadList) {
    Resources levels{{3, std::nullopt}};
    EXPECT_EQ(troxHalclient::troxThermalNotify(levels, 1), -1);
    EXPECT_EQ(fake().callCount(), 0u);
    EXPECT_EQ(troxLines(),
              (Lines{info("trox client troxThermalNotify"),
                     error("troxThermalNotify ERROR: size unmatched for id and level ")}));
}

TEST_F(ListeningTest, ThermalRegistrationHasNoDuplicateCheckAndOutlivesItsUnregister) {
    auto callback = std::make_shared<RecordingCallback>();
    fake().setIntResult("troxThermalListeningRegister", 720);
    EXPECT_EQ(troxHalclient::troxThermalListeningRegister({4, -4}, callback), 720);
    registered(720);
    const auto call = fake().lastCall();
    EXPECT_EQ(call.ints, (std::vector<int32_t>{4, -4}));
    ASSERT_NE(call.callback, nullptr);
    EXPECT_EQ(troxHalclient::troxThermalListeningRegister({4, -4}, callback), 720);
    EXPECT_EQ(fake().callCount(), 2u);

    fake().setIntResult("troxThermalListeningUnregister", 0);
    EXPECT_EQ(troxHalclient::troxThermalListeningUnregister(720), 0);
    EXPECT_EQ(fake().lastCall().ints, std::vector<int32_t>{720});

    // The thermal groups still stand: the same id list is a duplicate.
    EXPECT_EQ(registerIds({{4, "1"}, {-4, "1"}}, 721), -1);
    EXPECT_EQ(troxLines(), (Lines{info("troxThermalListeningRegister"),
                                  info("subsys's callback has been registered to Trox HAL"),
                                  info("troxThermalListeningRegister"),
                                  info("subsys's callback has been registered to Trox HAL"),
                                  info("trox client troxThermalListeningUnregister"),
                                  info("subsys's callback has been unRegistered to Trox HAL"),
                                  info("troxResListeningRegister"), kDuplicate}));

    sendFromService(call.callback, {record(4, "90")});
    ASSERT_TRUE(callback->waitFor(1));
    EXPECT_EQ(callback->received()[0], (Resources{{4, "90"}}));
}

TEST_F(ListeningTest, FailedThermalRegistrationAddsNothing) {
    fake().failNextCalls(1);
    fake().setIntResult("troxThermalListeningRegister", 722);
    EXPECT_EQ(troxHalclient::troxThermalListeningRegister({77}, nullptr), -1);
    EXPECT_EQ(troxLines(), (Lines{info("troxThermalListeningRegister"),
                                  failed("troxThermalListeningRegister")}));
    EXPECT_EQ(registerIds({{77, "1"}}, 723), 723);
}

}  // namespace
}  // namespace vexal::testing
