#include "ClientTestSupport.h"

#include <map>

namespace vexal::testing {
namespace {

using TextMap = std::map<std::string, std::string>;

TroxRequestParcel pathControl(int handle, int64_t duration, int param, bool flag, int pid,
                              std::vector<TroxRequestData> data) {
    TroxRequestParcel p = parcel(1);
    p.debugTags = zdbdebug();
    p.handle = handle;
    p.duration = duration;
    p.param = param;
    p.flag = flag;
    p.pid = pid;
    p.requestData = std::move(data);
    return p;
}

TroxRequestParcel tagged(int pid, std::vector<TroxRequestData> data) {
    TroxRequestParcel p = parcel(0);
    p.debugTags = zdbdebug();
    p.pid = pid;
    p.requestData = std::move(data);
    return p;
}

class PathRequestTest : public ClientTest {
  protected:
    int registerPaths(const Texts& paths, int handle,
                      std::shared_ptr<IClientCallbackByPath> callback = nullptr) {
        if (!callback) callback = std::make_shared<RecordingPathCallback>();
        fake().setIntResult("troxResListeningRegister", handle);
        const int result = troxHalclient::trox_res_listening_register_by_path(paths, 9, callback);
        if (result == handle) registered(handle);
        return result;
    }
};

TEST_F(PathRequestTest, RequestByPathPairsPathsWithValues) {
    fake().setIntResult("troxResCtlRequest", 90);
    EXPECT_EQ(troxHalclient::trox_resctl_request_by_path(3, -40L, {"/a", "/b"}, {"1", ""}, 5, 1, 6),
              90);
    EXPECT_EQ(lastParcel(),
              pathControl(3, -40, 5, true, 6, {pathRecord("/a", "1"), pathRecord("/b", "")}))
            << lastParcel().toString();
    EXPECT_EQ(troxLines(), Lines{info("trox client trox_resctl_request")});
}

TEST_F(PathRequestTest, RequestByPathFlagAndEmptyVectors) {
    fake().setIntResult("troxResCtlRequest", 4);
    EXPECT_EQ(troxHalclient::trox_resctl_request_by_path(-1, 0L, {}, {}, -1, 0, 1), 4);
    EXPECT_EQ(lastParcel(), pathControl(-1, 0, -1, false, 1, {}));
}

TEST_F(PathRequestTest, RequestByPathRefusesUnequalLengths) {
    EXPECT_EQ(troxHalclient::trox_resctl_request_by_path(-1, 1L, {"/a"}, {}, -1, 0, 1), -1);
    EXPECT_EQ(fake().callCount(), 0u);
    EXPECT_EQ(troxLines(),
              (Lines{info("trox client trox_resctl_request"),
                     error("trox_resctl_request ERROR: size unmatched for paths and value ")}));
}

TEST_F(PathRequestTest, RequestWithCallbackDeliversValuesThenPathsOnce) {
    fake().setIntResult("troxResCtlRequest", 91);
    auto callback = std::make_shared<RecordingPathCallback>();
    EXPECT_EQ(troxHalclient::trox_resctl_request_with_callback_by_path(-1, 2500L, {"/x"}, {"7"}, -1,
                                                                       -1, 12, callback),
              91);
    const TroxRequestParcel sent = lastParcel();
    ASSERT_NE(sent.callback, nullptr);
    TroxRequestParcel expected = pathControl(-1, 2500, -1, false, 12, {pathRecord("/x", "7")});
    expected.callback = sent.callback;
    EXPECT_EQ(sent, expected) << sent.toString();
    EXPECT_EQ(troxLines(), (Lines{info("trox client trox_resctl_request_with_callback"),
                                  info("new std::shared_ptr TroxCallbackClient callback"),
                                  info("trox client trox_resctl_request_with_callback add to "
                                       "request_callbacks")}));
    {
        std::lock_guard<std::mutex> lock(request_callback_mutex);
        ASSERT_EQ(request_callbacks.size(), 1u);
        EXPECT_FALSE(request_callbacks[0]->is_register);
        EXPECT_TRUE(request_callbacks[0]->is_by_path);
        EXPECT_EQ(request_callbacks[0]->mCallbackByPath, callback);
    }
    logs.clear();

    sendFromService(sent.callback, {pathRecord("/x", "8"), pathRecord("/y", std::nullopt)});
    ASSERT_TRUE(callback->waitFor(1));
    ASSERT_TRUE(eventually([] { return requestCallbackCount() == 0; }));
    ASSERT_TRUE(eventually([&] { return callbackLines().size() == 4u; }));
    EXPECT_EQ(callback->received(),
              (std::vector<RecordingPathCallback::Delivery>{{{"8", ""}, {"/x", "/y"}}}));
    EXPECT_EQ(
            callbackLines(),
            (Lines{cbInfo("TroxCallbackClient::onCallback res_Id /x res_Value 8 is_register 0"),
                   cbInfo("TroxCallback::onCallback call IClientCallback onCallback is_register 0"),
                   cbInfo("callback is found in request_callbacks"),
                   cbInfo("TroxCallback::onCallback request callback called , remove from "
                          "request_callbacks , request_callbacks size before 1 after 0")}));
}

TEST_F(PathRequestTest, RequestWithCallbackChecksBeforeMakingAClient) {
    auto callback = std::make_shared<RecordingPathCallback>();
    EXPECT_EQ(troxHalclient::trox_resctl_request_with_callback_by_path(-1, 1L, {}, {"v"}, -1, -1, 1,
                                                                       callback),
              -1);
    EXPECT_EQ(requestCallbackCount(), 0u);
    EXPECT_EQ(fake().callCount(), 0u);
    EXPECT_EQ(troxLines(),
              (Lines{info("trox client trox_resctl_request_with_callback"),
                     error("trox client trox_resctl_request ERROR: size unmatched for id and "
                           "value ")}));
}

TEST_F(PathRequestTest, StateByPathSendsValuesOnlyWhenTheyPairUp) {
    fake().setStateReply({pathRecord("/a", "10"), record(0), pathRecord("/c", "")});
    Texts result{"old"};
    EXPECT_EQ(troxHalclient::trox_res_state_request_by_path({"/a", "/b"}, {"1", "2"}, 55, result),
              4);
    EXPECT_EQ(lastParcel(), tagged(55, {pathRecord("/a", "1"), pathRecord("/b", "2")}))
            << lastParcel().toString();
    EXPECT_EQ(result, (Texts{"old", "10", "", ""}));
    EXPECT_EQ(troxLines(), (Lines{info("trox client trox_res_state_request"),
                                  info("trox client trox_res_state_request size 4")}));

    for (const Texts& values : {Texts{}, Texts{"1"}}) {
        troxHalclient::trox_res_state_request_by_path({"/a", "/b"}, values, 55, result);
        EXPECT_EQ(lastParcel(),
                  tagged(55, {pathRecord("/a", std::nullopt), pathRecord("/b", std::nullopt)}));
    }
}

TEST_F(PathRequestTest, StateByPathEmptyAnswerOrFailureIsMinusOne) {
    Texts result;
    EXPECT_EQ(troxHalclient::trox_res_state_request_by_path({"/a"}, {}, 1, result), -1);
    fake().setStateReply({pathRecord("/a", "1")});
    fake().failNextCalls(1);
    EXPECT_EQ(troxHalclient::trox_res_state_request_by_path({"/a"}, {}, 1, result), -1);
    EXPECT_TRUE(result.empty());
    EXPECT_EQ(troxLines(), (Lines{info("trox client trox_res_state_request"),
                                  info("trox client trox_res_state_request"),
                                  failed("trox_res_state_request")}));
}

TEST_F(PathRequestTest, StateMapWalksKeysInOrderAndSkipsHalfAnswers) {
    fake().setStateReply({pathRecord("/b", "2"), record(0, "lost"), pathRecord("/c", std::nullopt),
                          pathRecord("/k", "new")});
    TextMap result{{"/k", "old"}, {"/z", "z"}};
    EXPECT_EQ(troxHalclient::trox_res_state_request_map_by_path({{"/b", "x"}, {"/a", "y"}}, 8,
                                                                result),
              3);
    EXPECT_EQ(lastParcel(), tagged(8, {pathRecord("/a", "y"), pathRecord("/b", "x")}));
    EXPECT_EQ(result, (TextMap{{"/b", "2"}, {"/k", "new"}, {"/z", "z"}}));
    EXPECT_EQ(troxLines(),
              (Lines{info("trox client trox_res_state_request_map"),
                     info("res_Path: /b, res_Value:2"), info("res_Path: /k, res_Value:new"),
                     info("trox client trox_res_state_request_map size 3")}));
}

TEST_F(PathRequestTest, StateMapFailureIsMinusOne) {
    fake().failNextCalls(1);
    TextMap result;
    EXPECT_EQ(troxHalclient::trox_res_state_request_map_by_path({{"/a", "1"}}, 8, result), -1);
    EXPECT_EQ(troxLines(), (Lines{info("trox client trox_res_state_request_map"),
                                  failed("trox_res_state_request_map")}));
}

TEST_F(PathRequestTest, ListeningByPathRegistersAPathFormClient) {
    auto callback = std::make_shared<RecordingPathCallback>();
    ASSERT_EQ(registerPaths({"/p", "/q"}, 800, callback), 800);
    const auto call = fake().lastCall();
    ASSERT_NE(call.callback, nullptr);
    EXPECT_EQ(*call.parcel,
              tagged(9, {pathRecord("/p", std::nullopt), pathRecord("/q", std::nullopt)}));
    EXPECT_EQ(troxLines(), (Lines{info("trox client trox_res_listening_register"),
                                  info("A callback has been registered to Trox HAL ")}));
    logs.clear();

    sendFromService(call.callback, {pathRecord("/q", "on")});
    sendFromService(call.callback, {pathRecord("/p", "off")});
    ASSERT_TRUE(callback->waitFor(2));
    EXPECT_EQ(callback->received(),
              (std::vector<RecordingPathCallback::Delivery>{{{"on"}, {"/q"}}, {{"off"}, {"/p"}}}));
}

TEST_F(PathRequestTest, DuplicatePathListIsRefusedAndEmptyPathsMatchIdRegistrations) {
    ASSERT_EQ(registerPaths({"/p"}, 801), 801);
    const size_t calls = fake().callCount();
    EXPECT_EQ(registerPaths({"/p"}, 802), -1);
    EXPECT_EQ(fake().callCount(), calls);

    fake().setIntResult("troxResListeningRegister", 803);
    Resources ids{{3, "1"}};
    ASSERT_EQ(
            troxHalclient::troxResListeningRegister(ids, 1, std::make_shared<RecordingCallback>()),
            803);
    registered(803);
    logs.clear();
    EXPECT_EQ(registerPaths({}, 804), -1) << "an id registration has no paths";
    EXPECT_EQ(troxLines(), (Lines{info("trox client trox_res_listening_register"),
                                  error("Same callback interface registered already")}));
}

TEST_F(PathRequestTest, ListeningMapTakesKeysInOrderWithTheirValues) {
    fake().setIntResult("troxResListeningRegister", 805);
    auto callback = std::make_shared<RecordingPathCallback>();
    ASSERT_EQ(troxHalclient::trox_res_listening_register_map_by_path({{"/n", "2"}, {"/m", "1"}}, 4,
                                                                     callback),
              805);
    registered(805);
    EXPECT_EQ(lastParcel(), tagged(4, {pathRecord("/m", "1"), pathRecord("/n", "2")}));
    logs.clear();
    EXPECT_EQ(registerPaths({"/m", "/n"}, 806), -1) << "the map's keys are its paths";
}

TEST_F(PathRequestTest, FailedListeningByPathNamesItsMember) {
    fake().failNextCalls(2);
    EXPECT_EQ(registerPaths({"/f"}, 807), -1);
    EXPECT_EQ(troxHalclient::trox_res_listening_register_map_by_path({{"/f", "1"}}, 4, nullptr),
              -1);
    EXPECT_EQ(troxLines(), (Lines{info("trox client trox_res_listening_register"),
                                  failed("trox_res_listening_register"),
                                  info("trox client trox_res_listening_register_map"),
                                  failed("trox_res_listening_register_map")}));
    EXPECT_EQ(registerPaths({"/f"}, 808), 808);
}

}  // namespace
}  // namespace vexal::testing
