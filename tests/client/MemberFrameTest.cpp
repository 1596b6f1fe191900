#include "ClientTestSupport.h"

#include <binder_host/service_control.h>

#include <functional>
#include <map>

namespace vexal::testing {
namespace {

// What every member does without a service and with a failing one: its own lines around the
// frame's, the preset result, and a fresh connection for the next call.
struct FrameCase {
    const char* name;
    std::function<int()> call;
    Lines entry;       // logged before the frame finds no connection
    Lines beforeFail;  // logged from the entry to just before the failure line
    std::string failedName;
    Lines afterFail;  // logged after the failure line
};

Resources good() {
    return {{1, "1"}};
}

std::shared_ptr<IClientCallback> idCallback() {
    return std::make_shared<RecordingCallback>();
}

std::shared_ptr<IClientCallbackByPath> pathCallback() {
    return std::make_shared<RecordingPathCallback>();
}

const LogLine kNewClient = info("new std::shared_ptr TroxCallbackClient callback");

std::vector<FrameCase> frameCases() {
    return {
            {"ResCtlRequest",
             [] {
                 auto l = good();
                 return troxHalclient::troxResCtlRequest(-1, 1, l, -1, -1, 1);
             },
             {info("trox client troxResCtlRequest")},
             {info("trox client troxResCtlRequest")},
             "troxResCtlRequest",
             {}},
            {"ResCtlRequestWithCallback",
             [] {
                 auto l = good();
                 return troxHalclient::troxResCtlRequest(-1, 1, l, -1, -1, 1, idCallback());
             },
             {info("trox client troxResCtlRequest with callback")},
             {info("trox client troxResCtlRequest with callback"), kNewClient,
              info("trox client troxResCtlRequest add to request_callbacks")},
             "trox client TroxCallbackClient with callback",
             {}},
            {"ResCtlRelease",
             [] { return troxHalclient::troxResCtlRelease(1); },
             {info("trox client troxResCtlRelease")},
             {info("trox client troxResCtlRelease")},
             "troxResCtlRelease",
             {}},
            {"SACtlRequest",
             [] { return troxHalclient::troxSACtlRequest(1, 2, 3); },
             {info("trox client troxSACtlRequest")},
             {info("trox client troxSACtlRequest")},
             "troxSACtlRequest",
             {}},
            {"SACtlRequestWithCallback",
             [] { return troxHalclient::troxSACtlRequest(1, 2, 3, 4, 5, 6, idCallback()); },
             {info("trox client troxSACtlRequest with callback")},
             {info("trox client troxSACtlRequest with callback"), kNewClient,
              info("trox client troxSACtlRequest add to request_callbacks")},
             "troxSACtlRequest with callback",
             {}},
            {"SACtlRelease",
             [] { return troxHalclient::troxSACtlRelease(1); },
             {info("trox client troxSACtlRelease")},
             {info("trox client troxSACtlRelease")},
             "troxSACtlRelease",
             {}},
            {"ResStateRequest",
             [] {
                 auto l = good();
                 Resources result;
                 return troxHalclient::troxResStateRequest(l, 1, result);
             },
             {info("trox client troxResStateRequest")},
             {info("trox client troxResStateRequest"), info("trox client hal troxResStateRequest")},
             "troxResStateRequest",
             {}},
            {"ResListeningRegister",
             [] {
                 Resources l{{0x5151, "1"}};
                 return troxHalclient::troxResListeningRegister(l, 1, idCallback());
             },
             {info("troxResListeningRegister")},
             {info("troxResListeningRegister")},
             "trox_res_listening_register_map",
             {}},
            {"ResListeningUnRegister",
             [] { return troxHalclient::troxResListeningUnRegister(1); },
             {info("trox client troxResListeningUnRegister")},
             {info("trox client troxResListeningUnRegister"),
              error("The callback was not registered before")},
             "troxResListeningUnRegister",
             {}},
            {"ThermalNotify",
             [] {
                 auto l = good();
                 return troxHalclient::troxThermalNotify(l, 1);
             },
             {info("trox client troxThermalNotify")},
             {info("trox client troxThermalNotify")},
             "troxThermalNotify",
             {}},
            {"ThermalListeningRegister",
             [] { return troxHalclient::troxThermalListeningRegister({0x5252}, idCallback()); },
             {info("troxThermalListeningRegister")},
             {info("troxThermalListeningRegister")},
             "troxThermalListeningRegister",
             {}},
            {"ThermalListeningUnregister",
             [] { return troxHalclient::troxThermalListeningUnregister(1); },
             {info("trox client troxThermalListeningUnregister")},
             {info("trox client troxThermalListeningUnregister")},
             "troxThermalListeningUnregister",
             {}},
            {"RequestByPath",
             [] {
                 return troxHalclient::trox_resctl_request_by_path(1, 2L, {"/a"}, {"1"}, 3, 4, 5);
             },
             {info("trox client trox_resctl_request")},
             {info("trox client trox_resctl_request")},
             "trox_resctl_request_by_path",
             {}},
            {"RequestWithCallbackByPath",
             [] {
                 return troxHalclient::trox_resctl_request_with_callback_by_path(
                         1, 2L, {"/a"}, {"1"}, 3, 4, 5, pathCallback());
             },
             {info("trox client trox_resctl_request_with_callback")},
             {info("trox client trox_resctl_request_with_callback"), kNewClient,
              info("trox client trox_resctl_request_with_callback add to request_callbacks")},
             "trox client trox_resctl_request_with_callback",
             {}},
            {"StateByPath",
             [] {
                 Texts result;
                 return troxHalclient::trox_res_state_request_by_path({"/a"}, {}, 1, result);
             },
             {info("trox client trox_res_state_request")},
             {info("trox client trox_res_state_request")},
             "trox_res_state_request",
             {}},
            {"StateMapByPath",
             [] {
                 std::map<std::string, std::string> result;
                 return troxHalclient::trox_res_state_request_map_by_path({{"/a", "1"}}, 1, result);
             },
             {info("trox client trox_res_state_request_map")},
             {info("trox client trox_res_state_request_map")},
             "trox_res_state_request_map",
             {}},
            {"ListeningByPath",
             [] {
                 return troxHalclient::trox_res_listening_register_by_path({"/frame"}, 1,
                                                                           pathCallback());
             },
             {info("trox client trox_res_listening_register")},
             {info("trox client trox_res_listening_register")},
             "trox_res_listening_register",
             {}},
            {"ListeningMapByPath",
             [] {
                 return troxHalclient::trox_res_listening_register_map_by_path({{"/frame", "1"}}, 1,
                                                                               pathCallback());
             },
             {info("trox client trox_res_listening_register_map")},
             {info("trox client trox_res_listening_register_map")},
             "trox_res_listening_register_map",
             {}},
            {"PropertySet",
             [] { return troxHalclient::troxPropertySet("k", "v"); },
             {info("trox client troxPropertySet")},
             {info("trox client troxPropertySet")},
             "troxPropertySet",
             {}},
            {"DumpRunMap",
             [] { return troxHalclient::troxDumpRunMap(); },
             {info("trox client troxDumpRunMap")},
             {info("trox client troxDumpRunMap")},
             "troxDumpRunMap",
             {}},
    };
}

class MemberFrameTest : public ::testing::TestWithParam<FrameCase> {
  protected:
    void TearDown() override {
        std::lock_guard<std::mutex> lock(request_callback_mutex);
        request_callbacks.clear();
    }
    LogCapture logs;
};

TEST_P(MemberFrameTest, WithoutAServiceReturnsMinusOneAndSendsNothing) {
    FakeTroxService service(FakeTroxService::Start::kNotDeclared);
    EXPECT_EQ(GetParam().call(), -1);
    Lines expected = GetParam().entry;
    expected.push_back(notDeclared());
    EXPECT_EQ(logs.linesWithTag(kTroxTag), expected);
    EXPECT_EQ(service.fake().callCount(), 0u);
}

TEST_P(MemberFrameTest, FailedCallIsLoggedAndTheNextCallConnectsAgain) {
    FakeTroxService service;
    service.fake().failNextCalls(1);
    EXPECT_EQ(GetParam().call(), -1);
    EXPECT_EQ(service.fake().callCount(), 1u);
    Lines expected = GetParam().beforeFail;
    expected.push_back(failed(GetParam().failedName));
    for (const auto& line : GetParam().afterFail) expected.push_back(line);
    EXPECT_EQ(logs.linesWithTag(kTroxTag), expected);

    // A refused link on the next call shows that the connection was dropped.
    logs.clear();
    binder_host::failNextLinkToDeath(STATUS_DEAD_OBJECT);
    EXPECT_EQ(GetParam().call(), -1);
    expected = GetParam().entry;
    expected.push_back(linkFailed());
    EXPECT_EQ(logs.linesWithTag(kTroxTag), expected);
    EXPECT_EQ(service.fake().callCount(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Members, MemberFrameTest, ::testing::ValuesIn(frameCases()),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace vexal::testing
