#include "LinkTestSupport.h"

#include <optional>

namespace vexal::testing {
namespace {

using aidl::vendor::vexal::hardware::trox::TroxRequestData;
using aidl::vendor::vexal::hardware::trox::TroxRequestParcel;
using link::CallResult;

struct FailureCase {
    const char* name;
    FakeTrox::StatusMaker make;
};

// Names the case in test listings, which would otherwise show its bytes.
void PrintTo(const FailureCase& c, std::ostream* os) {
    *os << c.name;
}

class FailedCallTest : public LinkTest, public ::testing::WithParamInterface<FailureCase> {};

TEST_P(FailedCallTest, EachConnectionLogsItsOwnLineAndOnlyItIsDropped) {
    FakeTroxService service;
    ASSERT_EQ(troxInit(), CallResult::kOk);
    ASSERT_TRUE(pym::connectPymHal());
    logs.clear();

    service.fake().failNextCalls(1, GetParam().make);
    int32_t out = -1;
    EXPECT_EQ(link::callTroxHal("troxResCtlRequest",
                                [&](link::ITrox& hal) { return hal.troxResCtlRequest({}, &out); }),
              CallResult::kFailed);
    EXPECT_EQ(out, -1);
    EXPECT_FALSE(troxConnected());
    EXPECT_TRUE(pymConnected());
    EXPECT_EQ(troxInit(), CallResult::kOk) << "the next call reconnects";

    service.fake().failNextCalls(1, GetParam().make);
    EXPECT_EQ(pymInitCall(), CallResult::kFailed);
    EXPECT_FALSE(pymConnected());
    EXPECT_TRUE(troxConnected());
    ASSERT_TRUE(pym::connectPymHal());
    EXPECT_EQ(pymInitCall(), CallResult::kOk);

    EXPECT_EQ(logs.linesWithTag(kTroxTag),
              (Lines{{ANDROID_LOG_ERROR, kTroxTag,
                      "troxResCtlRequest() failed: trox HAL service not available"}}));
    EXPECT_EQ(logs.linesWithTag(kPymTag),
              (Lines{{ANDROID_LOG_ERROR, kPymTag,
                      "trox_init() failed : trox HAL service not available"}}));
}

ndk::ScopedAStatus exception() {
    return ndk::ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE);
}

ndk::ScopedAStatus transactionError() {
    return ndk::ScopedAStatus::fromStatus(STATUS_BAD_VALUE);
}

INSTANTIATE_TEST_SUITE_P(Statuses, FailedCallTest,
                         ::testing::Values(FailureCase{"ServiceSpecific",
                                                       FakeTrox::serviceSpecificError},
                                           FailureCase{"Exception", exception},
                                           FailureCase{"TransactionError", transactionError}),
                         [](const auto& test) { return std::string(test.param.name); });

// The client class checks some requests itself once connected, and may then send nothing.
TEST_F(LinkTest, ADeclinedCallSendsNothingAndKeepsTheConnection) {
    FakeTroxService service;
    ASSERT_EQ(troxInit(), CallResult::kOk);
    EXPECT_EQ(link::callTroxHal("x",
                                [](link::ITrox&) -> std::optional<ndk::ScopedAStatus> {
                                    return std::nullopt;
                                }),
              CallResult::kDeclined);
    EXPECT_EQ(service.fake().callCount(), 1u);
    EXPECT_TRUE(troxConnected());
    EXPECT_TRUE(logs.lines().empty()) << ::testing::PrintToString(logs.lines());
}

TEST_F(LinkTest, TheServiceReceivesExactlyTheParcelThatWasSent) {
    FakeTroxService service;
    service.fake().setIntResult("troxResCtlRequest", -7);
    TroxRequestParcel sent;
    sent.requestType = 12;
    sent.requestData = {
            TroxRequestData{0x00000000FFFFFFFBLL, std::string("1"), std::nullopt, std::nullopt},
            TroxRequestData{3, std::string(""), std::string("/p"), std::string("x")}};
    sent.flag = true;
    sent.param = -1;
    sent.pid = 4242;
    sent.duration = -2;
    sent.debugTags = std::vector<std::optional<std::string>>{std::string("zdbdebug"), std::nullopt};
    sent.handle = 77;
    sent.pkg = "com.example";
    sent.identity = "";
    sent.values = std::vector<int32_t>{5, 7};

    int32_t out = -1;
    ASSERT_EQ(
            link::callTroxHal("troxResCtlRequest",
                              [&](link::ITrox& hal) { return hal.troxResCtlRequest(sent, &out); }),
            CallResult::kOk);
    EXPECT_EQ(out, -7);
    ASSERT_TRUE(service.fake().lastCall().parcel.has_value());
    EXPECT_EQ(*service.fake().lastCall().parcel, sent);
}

}  // namespace
}  // namespace vexal::testing
