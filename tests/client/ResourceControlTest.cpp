#include "ClientTestSupport.h"

#include <binder_host/service_control.h>

#include <functional>

namespace vexal::testing {
namespace {

TroxRequestParcel controlParcel(int handle, int64_t duration, int param, bool flag, int pid,
                                std::vector<TroxRequestData> data) {
    TroxRequestParcel p = parcel(1);
    p.handle = handle;
    p.duration = duration;
    p.param = param;
    p.flag = flag;
    p.pid = pid;
    p.requestData = std::move(data);
    return p;
}

struct ListCase {
    const char* name;
    Resources list;
    bool accepted;
};

class CheckResourceListTest : public ::testing::TestWithParam<ListCase> {};

TEST_P(CheckResourceListTest, PairsNonZeroIdsWithValuesAndZeroIdsWithNone) {
    Resources list = GetParam().list;
    EXPECT_EQ(checkResourceList(list), GetParam().accepted);
}

INSTANTIATE_TEST_SUITE_P(
        Lists, CheckResourceListTest,
        ::testing::Values(ListCase{"Empty", {}, true},
                          ListCase{"ZeroIdNoValue", {{0, std::nullopt}}, true},
                          ListCase{"ZeroIdEmptyValue", {{0, ""}}, true},
                          ListCase{"ZeroIdWithValue", {{0, "1"}}, false},
                          ListCase{"IdWithEmptyValue", {{5, ""}}, false},
                          ListCase{"IdWithoutValue", {{5, std::nullopt}}, false},
                          ListCase{"IdsWithValues", {{5, "1"}, {-5, "x"}}, true},
                          ListCase{"BadAfterGood", {{5, "1"}, {0, "2"}}, false},
                          ListCase{"MixedGood", {{7, "3"}, {0, std::nullopt}}, true}),
        [](const auto& test) { return std::string(test.param.name); });

using Call = std::function<int(Resources&)>;

struct OverloadCase {
    const char* name;
    Call call;
    int handle;
    int param;
    bool flag;
};

class ThinOverloadTest : public ClientTest, public ::testing::WithParamInterface<OverloadCase> {};

TEST_P(ThinOverloadTest, FillsTheDefaultsAndReturnsTheWorkersResult) {
    fake().setIntResult("troxResCtlRequest", 31);
    Resources list{{0x10, "800"}, {-5, "1"}};
    EXPECT_EQ(GetParam().call(list), 31);

    const auto& c = GetParam();
    EXPECT_EQ(lastParcel(), controlParcel(c.handle, -2, c.param, c.flag, 99,
                                          {record(0x10, "800"), record(0xFFFFFFFBLL, "1")}))
            << lastParcel().toString();
    EXPECT_EQ(troxLines(), Lines{info("trox client troxResCtlRequest")});
}

INSTANTIATE_TEST_SUITE_P(
        Overloads, ThinOverloadTest,
        ::testing::Values(OverloadCase{"DurationPid",
                                       [](Resources& r) {
                                           return troxHalclient::troxResCtlRequest(-2, r, 99);
                                       },
                                       -1, -1, false},
                          OverloadCase{"DurationFlagPid",
                                       [](Resources& r) {
                                           return troxHalclient::troxResCtlRequest(-2, r, 1, 99);
                                       },
                                       -1, -1, true},
                          OverloadCase{"DurationParamFlagPid",
                                       [](Resources& r) {
                                           return troxHalclient::troxResCtlRequest(-2, r, 6, 0, 99);
                                       },
                                       -1, 6, false},
                          OverloadCase{"HandleDurationPid",
                                       [](Resources& r) {
                                           return troxHalclient::troxResCtlRequest(12, -2, r, 99);
                                       },
                                       12, -1, false},
                          OverloadCase{"HandleDurationFlagPid",
                                       [](Resources& r) {
                                           return troxHalclient::troxResCtlRequest(12, -2, r, 7,
                                                                                   99);
                                       },
                                       12, -1, true}),
        [](const auto& test) { return std::string(test.param.name); });

using ResourceControlTest = ClientTest;

TEST_F(ResourceControlTest, WorkerSendsEveryFieldAndReturnsTheHandle) {
    fake().setIntResult("troxResCtlRequest", 4242);
    Resources list{{3, "1,2"}, {0, std::nullopt}};
    const Resources before = list;

    EXPECT_EQ(troxHalclient::troxResCtlRequest(8, -1, list, 3, 7, 1234), 4242);

    // An absent value goes out present and empty; the id sign-extends nowhere.
    EXPECT_EQ(lastParcel(), controlParcel(8, -1, 3, true, 1234, {record(3, "1,2"), record(0, "")}))
            << lastParcel().toString();
    EXPECT_EQ(lastParcel().duration, -1LL);
    EXPECT_EQ(lastParcel().callback, nullptr);
    EXPECT_EQ(list, before);
    EXPECT_EQ(fake().lastCall().method, "troxResCtlRequest");
    EXPECT_EQ(troxLines(), Lines{info("trox client troxResCtlRequest")});
}

TEST_F(ResourceControlTest, FlagZeroOrMinusOneLeavesTheFlagClear) {
    Resources list;
    for (int flag : {0, -1, 1, 7}) {
        troxHalclient::troxResCtlRequest(-1, 10, list, -1, flag, 1);
        EXPECT_EQ(lastParcel().flag, flag >= 1) << flag;
    }
}

TEST_F(ResourceControlTest, EmptyListGoesOutWithoutRecords) {
    fake().setIntResult("troxResCtlRequest", 5);
    Resources list;
    EXPECT_EQ(troxHalclient::troxResCtlRequest(-1, 100, list, -1, -1, 2), 5);
    EXPECT_EQ(lastParcel(), controlParcel(-1, 100, -1, false, 2, {}));
}

TEST_F(ResourceControlTest, ServiceAnswerIsReturnedUnchanged) {
    Resources list{{1, "2"}};
    for (int answer : {-1, 0, 123456}) {
        fake().setIntResult("troxResCtlRequest", answer);
        EXPECT_EQ(troxHalclient::troxResCtlRequest(-1, 100, list, -1, -1, 2), answer);
    }
    EXPECT_EQ(fake().callCount(), 3u);
}

TEST_F(ResourceControlTest, BadListIsRefusedWithoutACall) {
    Resources list{{0, "1"}};
    EXPECT_EQ(troxHalclient::troxResCtlRequest(-1, 100, list, -1, -1, 2), -1);
    EXPECT_EQ(fake().callCount(), 0u);
    EXPECT_EQ(troxLines(), (Lines{info("trox client troxResCtlRequest"),
                                  error("troxResCtlRequest ERROR: size unmatched for id and "
                                        "value ")}));
}

TEST_F(ResourceControlTest, BadListWithCallbackCreatesNoClient) {
    auto callback = std::make_shared<RecordingCallback>();
    Resources list{{5, ""}};
    EXPECT_EQ(troxHalclient::troxResCtlRequest(-1, 100, list, -1, -1, 2, callback), -1);
    EXPECT_EQ(fake().callCount(), 0u);
    EXPECT_EQ(requestCallbackCount(), 0u);
    EXPECT_EQ(troxLines(),
              (Lines{info("trox client troxResCtlRequest with callback"),
                     error("trox client trox_resctl_request ERROR: size unmatched for id and "
                           "value ")}));
    EXPECT_TRUE(callbackLines().empty());
}

TEST_F(ResourceControlTest, WithCallbackRegistersAOneShotClientAndSendsIt) {
    fake().setIntResult("troxResCtlRequest", 17);
    auto callback = std::make_shared<RecordingCallback>();
    Resources list{{9, "1"}};

    EXPECT_EQ(troxHalclient::troxResCtlRequest(2, 300, list, 4, 1, 77, callback), 17);

    const TroxRequestParcel sent = lastParcel();
    ASSERT_NE(sent.callback, nullptr);
    TroxRequestParcel expected = controlParcel(2, 300, 4, true, 77, {record(9, "1")});
    expected.callback = sent.callback;
    EXPECT_EQ(sent, expected) << sent.toString();
    {
        std::lock_guard<std::mutex> lock(request_callback_mutex);
        ASSERT_EQ(request_callbacks.size(), 1u);
        EXPECT_EQ(request_callbacks[0]->mCallback, callback);
        EXPECT_EQ(request_callbacks[0]->mCallbackByPath, nullptr);
        EXPECT_FALSE(request_callbacks[0]->is_register);
        EXPECT_FALSE(request_callbacks[0]->is_by_path);
    }
    EXPECT_EQ(troxLines(), (Lines{info("trox client troxResCtlRequest with callback"),
                                  info("new std::shared_ptr TroxCallbackClient callback"),
                                  info("trox client troxResCtlRequest add to request_callbacks")}));
}

TEST_F(ResourceControlTest, WithCallbackFailureKeepsTheClientAndNamesTheClient) {
    fake().failNextCalls(1);
    auto callback = std::make_shared<RecordingCallback>();
    Resources list;
    EXPECT_EQ(troxHalclient::troxResCtlRequest(-1, 1, list, -1, -1, 1, callback), -1);
    EXPECT_EQ(requestCallbackCount(), 1u);
    EXPECT_EQ(troxLines(), (Lines{info("trox client troxResCtlRequest with callback"),
                                  info("new std::shared_ptr TroxCallbackClient callback"),
                                  info("trox client troxResCtlRequest add to request_callbacks"),
                                  failed("trox client TroxCallbackClient with callback")}));
}

TEST_F(ResourceControlTest, FailedCallDropsTheConnectionAndTheNextCallConnectsAgain) {
    fake().failNextCalls(1);
    Resources list{{1, "1"}};
    EXPECT_EQ(troxHalclient::troxResCtlRequest(100, list, 3), -1);

    // The next call must connect again: a refused link proves that it tried.
    binder_host::failNextLinkToDeath(STATUS_DEAD_OBJECT);
    EXPECT_EQ(troxHalclient::troxResCtlRelease(5), -1);
    fake().setIntResult("troxResCtlRelease", 0);
    EXPECT_EQ(troxHalclient::troxResCtlRelease(5), 0);

    EXPECT_EQ(fake().callCount(), 2u);
    EXPECT_EQ(troxLines(),
              (Lines{info("trox client troxResCtlRequest"), failed("troxResCtlRequest"),
                     info("trox client troxResCtlRelease"), linkFailed(),
                     info("trox client troxResCtlRelease")}));
}

TEST_F(ResourceControlTest, ReleaseSendsTheHandle) {
    fake().setIntResult("troxResCtlRelease", 1);
    EXPECT_EQ(troxHalclient::troxResCtlRelease(-7), 1);
    const auto call = fake().lastCall();
    EXPECT_EQ(call.method, "troxResCtlRelease");
    EXPECT_EQ(call.ints, std::vector<int32_t>{-7});
    EXPECT_EQ(troxLines(), Lines{info("trox client troxResCtlRelease")});
}

}  // namespace
}  // namespace vexal::testing
