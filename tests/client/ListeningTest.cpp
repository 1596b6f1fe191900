#include "ClientTestSupport.h"

namespace vexal::testing {
namespace {

const LogLine kRegistered = info("A callback has been registered to Trox HAL ");
const LogLine kDuplicate = error("Same callback interface registered already");
const LogLine kRegister = info("troxResListeningRegister");
const LogLine kUnregister = info("trox client troxResListeningUnRegister");
const LogLine kRegisterByPath = info("trox client trox_res_listening_register");

LogLine unregistered(int handle) {
    return info("a callback has been unregistered to Trox HAL handle " + std::to_string(handle));
}

class ListeningTest : public ClientTest {
  protected:
    int registerIds(Resources list, int handle, std::shared_ptr<IClientCallback> callback = {}) {
        fake().setIntResult("troxResListeningRegister", handle);
        return kept(troxHalclient::troxResListeningRegister(list, 3, callback), handle);
    }
    int registerPaths(const Texts& paths, int handle,
                      std::shared_ptr<IClientCallbackByPath> callback = {}) {
        fake().setIntResult("troxResListeningRegister", handle);
        return kept(troxHalclient::trox_res_listening_register_by_path(paths, 9, callback), handle);
    }
    int kept(int result, int handle) {
        if (result == handle) registered(handle);
        return result;
    }
};

TEST_F(ListeningTest, IdRegistrationSendsItsListAndDeliversWithoutLeavingTheRegistry) {
    auto recorder = std::make_shared<ClientRecorder>();
    fake().setIntResult("troxResListeningRegister", 700);
    Resources list{{0x20, "5"}, {-1, std::nullopt}};
    ASSERT_EQ(troxHalclient::troxResListeningRegister(list, 1234, recorder), 700);
    const auto call = fake().lastCall();
    EXPECT_EQ(call.method, "troxResListeningRegister");
    EXPECT_EQ(*call.parcel, parcel(0, {record(0x20, "5"), record(0xFFFFFFFFLL, "")}, 1234))
            << call.parcel->toString();
    EXPECT_EQ(troxLines(), (Lines{kRegister, kRegistered}));
    logs.clear();

    sendFromService(call.callback, {record(5, "3"), record(6)});
    ASSERT_TRUE(recorder->waitFor(1));
    EXPECT_EQ(recorder->ids(), (std::vector<Resources>{{{5, "3"}, {6, ""}}}));
    EXPECT_EQ(callbackLinesOnce(3),
              (Lines{cbInfo("TroxCallbackClient::onCallback res_Id 0x5 res_Value 3 is_register 1"),
                     cbInfo("TroxCallbackClient::onCallback res_Id 0x6 is_register 1"),
                     cbInfo("TroxCallback::onCallback call IClientCallback onCallback "
                            "is_register 1")}))
            << "a registration client never looks into request_callbacks";

    registered(700);
}

TEST_F(ListeningTest, SameListIsRefusedWithoutACallUntilItsHandleIsUnregistered) {
    ASSERT_EQ(registerIds({{5, "1"}, {6, "1"}}, 702), 702);
    ASSERT_EQ(registerIds({}, 702), 702);
    const size_t calls = fake().callCount();
    logs.clear();
    EXPECT_EQ(registerIds({{5, "9"}, {6, std::nullopt}}, 703), -1) << "values do not count";
    EXPECT_EQ(registerPaths({}, 703), -1) << "an id registration has no paths";
    EXPECT_EQ(fake().callCount(), calls);
    EXPECT_EQ(troxLines(), (Lines{kRegister, kDuplicate, kRegisterByPath, kDuplicate}));
    EXPECT_EQ(registerIds({{6, "1"}, {5, "1"}}, 704), 704) << "another order is another list";

    logs.clear();
    troxHalclient::troxResListeningUnRegister(702);
    EXPECT_EQ(troxLines(), (Lines{kUnregister, unregistered(702), unregistered(702)}));
}

TEST_F(ListeningTest, FailuresLeaveNoGroupAndAreLoggedLast) {
    fake().failNextCalls(1);
    EXPECT_EQ(registerIds({{10, "1"}}, 712), -1);
    EXPECT_EQ(troxLines(), (Lines{kRegister, failed("trox_res_listening_register_map")}));
    ASSERT_EQ(registerIds({{10, "1"}}, 713), 713) << "no group may be left behind";

    logs.clear();
    fake().failNextCalls(1);
    EXPECT_EQ(troxHalclient::troxResListeningUnRegister(713), -1);
    EXPECT_EQ(troxLines(),
              (Lines{kUnregister, unregistered(713), failed("troxResListeningUnRegister")}));
    EXPECT_EQ(registerIds({{10, "1"}}, 714), 714) << "the group must be gone";

    logs.clear();
    fake().failNextCalls(2);
    EXPECT_EQ(registerPaths({"/f"}, 807), -1);
    EXPECT_EQ(troxHalclient::trox_res_listening_register_map_by_path({{"/f", "1"}}, 4, nullptr),
              -1);
    EXPECT_EQ(troxLines(), (Lines{kRegisterByPath, failed("trox_res_listening_register"),
                                  info("trox client trox_res_listening_register_map"),
                                  failed("trox_res_listening_register_map")}));
    EXPECT_EQ(registerPaths({"/f"}, 808), 808);
}

TEST_F(ListeningTest, PathRegistrationsSendTheirPathsAndDeliverInPathForm) {
    auto recorder = std::make_shared<ClientRecorder>();
    ASSERT_EQ(registerPaths({"/p", "/q"}, 800, recorder), 800);
    const auto call = fake().lastCall();
    EXPECT_EQ(*call.parcel,
              parcel(0, {pathRecord("/p", std::nullopt), pathRecord("/q", std::nullopt)}, 9, 0, 0,
                     0, false, true));
    EXPECT_EQ(troxLines(), (Lines{kRegisterByPath, kRegistered}));

    sendFromService(call.callback, {pathRecord("/q", "on")});
    ASSERT_TRUE(recorder->waitFor(1));
    EXPECT_EQ(recorder->paths(), (std::vector<PathDelivery>{{{"on"}, {"/q"}}}));
    EXPECT_EQ(registerPaths({"/p", "/q"}, 801), -1);

    // A map registers its keys, in order, with their values.
    fake().setIntResult("troxResListeningRegister", 805);
    ASSERT_EQ(troxHalclient::trox_res_listening_register_map_by_path({{"/n", "2"}, {"/m", "1"}}, 4,
                                                                     nullptr),
              805);
    registered(805);
    EXPECT_EQ(lastParcel(),
              parcel(0, {pathRecord("/m", "1"), pathRecord("/n", "2")}, 4, 0, 0, 0, false, true));
    EXPECT_EQ(registerPaths({"/m", "/n"}, 806), -1) << "the map's keys are its paths";
}

}  // namespace
}  // namespace vexal::testing
