#include "ClientTestSupport.h"

namespace vexal::testing {
namespace {

TroxRequestParcel scenarioParcel(int handle, int64_t duration, int id, int param, bool flag,
                                 int pid) {
    TroxRequestParcel p = parcel(2);
    p.handle = handle;
    p.duration = duration;
    p.param = param;
    p.flag = flag;
    p.pid = pid;
    p.requestData = {record(static_cast<uint32_t>(id))};
    return p;
}

using ScenarioTest = ClientTest;

TEST_F(ScenarioTest, ShortFormFillsMinusOnes) {
    fake().setIntResult("troxResCtlRequest", 61);
    EXPECT_EQ(troxHalclient::troxSACtlRequest(-3000, 42, 555), 61);
    EXPECT_EQ(lastParcel(), scenarioParcel(-1, -3000, 42, -1, false, 555))
            << lastParcel().toString();
    EXPECT_EQ(troxLines(), Lines{info("trox client troxSACtlRequest")});
}

TEST_F(ScenarioTest, SixArgumentFormSendsEachArgumentInItsField) {
    fake().setIntResult("troxResCtlRequest", 62);
    EXPECT_EQ(troxHalclient::troxSACtlRequest(9, 2000, -7, 3, 1, 88), 62);
    EXPECT_EQ(lastParcel(), scenarioParcel(9, 2000, -7, 3, true, 88)) << lastParcel().toString();
    EXPECT_EQ(lastParcel().requestData[0].res_Id, 0xFFFFFFF9LL);
}

TEST_F(ScenarioTest, FlagNeedsOneOrMore) {
    for (int flag : {-1, 0, 1, 3}) {
        troxHalclient::troxSACtlRequest(1, 1, 1, 1, flag, 1);
        EXPECT_EQ(lastParcel().flag, flag >= 1) << flag;
    }
}

TEST_F(ScenarioTest, WithCallbackAddsAOneShotClientAndDeliversOneList) {
    fake().setIntResult("troxResCtlRequest", 63);
    auto callback = std::make_shared<RecordingCallback>();
    EXPECT_EQ(troxHalclient::troxSACtlRequest(-1, 500, 11, -1, 0, 7, callback), 63);

    const TroxRequestParcel sent = lastParcel();
    TroxRequestParcel expected = scenarioParcel(-1, 500, 11, -1, false, 7);
    ASSERT_NE(sent.callback, nullptr);
    expected.callback = sent.callback;
    EXPECT_EQ(sent, expected) << sent.toString();
    EXPECT_EQ(troxLines(), (Lines{info("trox client troxSACtlRequest with callback"),
                                  info("new std::shared_ptr TroxCallbackClient callback"),
                                  info("trox client troxSACtlRequest add to request_callbacks")}));
    {
        std::lock_guard<std::mutex> lock(request_callback_mutex);
        ASSERT_EQ(request_callbacks.size(), 1u);
        EXPECT_FALSE(request_callbacks[0]->is_register);
        EXPECT_FALSE(request_callbacks[0]->is_by_path);
    }

    sendFromService(sent.callback, {record(11, "on")});
    ASSERT_TRUE(callback->waitFor(1));
    EXPECT_TRUE(eventually([] { return requestCallbackCount() == 0; }));
    EXPECT_EQ(callback->received(), (std::vector<Resources>{{{11, "on"}}}));
}

TEST_F(ScenarioTest, FailedRequestWithCallbackKeepsItsClient) {
    fake().failNextCalls(1);
    auto callback = std::make_shared<RecordingCallback>();
    EXPECT_EQ(troxHalclient::troxSACtlRequest(-1, 500, 11, -1, 0, 7, callback), -1);
    EXPECT_EQ(requestCallbackCount(), 1u);
    EXPECT_EQ(troxLines().back(), failed("troxSACtlRequest with callback"));
}

TEST_F(ScenarioTest, ReleaseSendsTheHandleToTheReleaseOperation) {
    fake().setIntResult("troxResCtlRelease", 0);
    EXPECT_EQ(troxHalclient::troxSACtlRelease(63), 0);
    EXPECT_EQ(fake().lastCall().method, "troxResCtlRelease");
    EXPECT_EQ(fake().lastCall().ints, std::vector<int32_t>{63});
    EXPECT_EQ(troxLines(), Lines{info("trox client troxSACtlRelease")});
}

using StateRequestTest = ClientTest;

TEST_F(StateRequestTest, AppendsTheReplyAndCountsWhatWasThere) {
    fake().setStateReply({record(0x500000001LL, "1,2"), record(0xFFFFFFFELL), record(3, "x")});
    Resources request{{1, std::nullopt}, {0, "v"}};
    Resources result{{90, "a"}, {91, std::nullopt}};

    EXPECT_EQ(troxHalclient::troxResStateRequest(request, 4321, result), 5);

    TroxRequestParcel expected = parcel(0);
    expected.pid = 4321;
    expected.requestData = {record(1, ""), record(0, "v")};
    EXPECT_EQ(lastParcel(), expected) << lastParcel().toString();
    EXPECT_EQ(fake().lastCall().method, "troxResStateRequest");
    EXPECT_EQ(result, (Resources{{90, "a"}, {91, std::nullopt}, {1, "1,2"}, {-2, ""}, {3, "x"}}));
    EXPECT_EQ(troxLines(), (Lines{info("trox client troxResStateRequest"),
                                  info("trox client hal troxResStateRequest"),
                                  info("trox client troxResStateRequest size 5")}));
}

TEST_F(StateRequestTest, EmptyReplyIsMinusOneWithoutALine) {
    Resources request;
    Resources result{{1, "1"}};
    EXPECT_EQ(troxHalclient::troxResStateRequest(request, 1, result), -1);
    EXPECT_EQ(result, (Resources{{1, "1"}}));
    EXPECT_EQ(lastParcel().requestData.size(), 0u);
    EXPECT_EQ(troxLines(), (Lines{info("trox client troxResStateRequest"),
                                  info("trox client hal troxResStateRequest")}));
}

TEST_F(StateRequestTest, FailedCallLeavesTheResultAlone) {
    fake().setStateReply({record(1, "1")});
    fake().failNextCalls(1);
    Resources request{{1, "1"}};
    Resources result;
    EXPECT_EQ(troxHalclient::troxResStateRequest(request, 1, result), -1);
    EXPECT_TRUE(result.empty());
    EXPECT_EQ(troxLines(),
              (Lines{info("trox client troxResStateRequest"),
                     info("trox client hal troxResStateRequest"), failed("troxResStateRequest")}));
}

}  // namespace
}  // namespace vexal::testing
