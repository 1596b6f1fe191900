#include "WrapperTestSupport.h"

namespace vexal::testing {
namespace {

using ::aidl::vendor::vexal::hardware::trox::TroxRequestData;
using ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel;

class EntryPointsTest : public WrapperTest {};

TEST_F(EntryPointsTest, AcquireSendsTheActionIdWithAnEmptyResourceList) {
    fake().setIntResult("troxResCtlRequest", -9);
    EXPECT_EQ(PymEventAcquireWrapper("QUARNE_ACTION_WFD", "com.app", "who", -300), -9);

    TroxRequestParcel expected;
    expected.requestType = 8;
    expected.requestData = {TroxRequestData{}};
    expected.requestData[0].res_Id = 124;
    expected.identity = "who";
    expected.duration = -300;
    expected.pkg = "com.app";
    const auto calls = fake().calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].method, "troxResCtlRequest");
    EXPECT_EQ(calls[0].parcel, expected);
    EXPECT_EQ(
            wrapperLines(),
            (std::vector<LogLine>{wrapperInfo("[PymEventAcquireWrapper] eventId:QUARNE_ACTION_WFD, "
                                              "scene:com.app, identity:who, timeout:-300")}));
}

TEST_F(EntryPointsTest, AcquireLogsEmptyTextsAsNoneButSendsThemEmpty) {
    fake().setIntResult("troxResCtlRequest", 3);
    EXPECT_EQ(PymEventAcquireWrapper("QUARNE_ACTION_LAUNCH", "", "", 0), 3);
    const auto call = fake().lastCall();
    ASSERT_TRUE(call.parcel.has_value());
    EXPECT_EQ(call.parcel->pkg, std::optional<std::string>(""));
    EXPECT_EQ(call.parcel->identity, std::optional<std::string>(""));
    EXPECT_EQ(wrapperLines(), (std::vector<LogLine>{wrapperInfo(
                                      "[PymEventAcquireWrapper] eventId:QUARNE_ACTION_LAUNCH, "
                                      "scene:none, identity:none, timeout:0")}));
}

TEST_F(EntryPointsTest, AnUnknownNameLogsOnlyTheEntryLine) {
    EXPECT_EQ(PymEventAcquireWrapper("", "s", "i", 5), -1);
    EXPECT_EQ(fake().callCount(), 0u);
    EXPECT_EQ(logs.lines(), (std::vector<LogLine>{wrapperInfo(
                                    "[PymEventAcquireWrapper] eventId:none, scene:s, identity:i, "
                                    "timeout:5")}));
}

TEST_F(EntryPointsTest, AcquireWithoutAServiceGivesMinusOne) {
    service.kill();
    EXPECT_EQ(PymEventAcquireWrapper("QUARNE_ACTION_LAUNCH", "s", "i", 5), -1);
}

TEST_F(EntryPointsTest, ReleasePassesAnyHandleOn) {
    PymReleaseWapper(7);
    PymReleaseWapper(-3);
    const auto calls = fake().calls();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].method, "troxResCtlRelease");
    EXPECT_EQ(calls[0].ints, std::vector<int32_t>{7});
    EXPECT_EQ(calls[1].ints, std::vector<int32_t>{-3});
    EXPECT_EQ(wrapperLines(), (std::vector<LogLine>{wrapperInfo("[PymReleaseWapper] 7"),
                                                    wrapperInfo("[PymReleaseWapper] -3")}));
}

TEST_F(EntryPointsTest, NotifyLogsItsLineAndAlwaysReturnsZero) {
    fake().setIntResult("troxRuleCtl", 55);
    EXPECT_EQ(PymNotifyWapper("game on", 1, 1, 0, 0, 0, ""), 0);
    EXPECT_EQ(PymNotifyWapper("", 4, -2, 9, 9, 9, "x"), 0);
    EXPECT_EQ(wrapperLines(),
              (std::vector<LogLine>{wrapperInfo("[PymNotifyWapper] game on, src:1, type:1"),
                                    wrapperInfo("[PymNotifyWapper] none, src:4, type:-2")}));
    EXPECT_EQ(fake().callCount(), 1u);

    fake().failNextCalls(1);
    EXPECT_EQ(PymNotifyWapper("x", 10, 0, 0, 0, 0, ""), 0);
    service.kill();
    EXPECT_EQ(PymNotifyWapper("x", 10, 0, 0, 0, 0, ""), 0);
}

}  // namespace
}  // namespace vexal::testing
