#include "ClientTestSupport.h"

#include <cstring>
#include <memory>

namespace vexal::testing {
namespace {

struct DiagnosticCase {
    const char* name;
    int (*member)();
    int selector;
};

class DiagnosticTest : public ClientTest, public ::testing::WithParamInterface<DiagnosticCase> {};

TEST_P(DiagnosticTest, SendsItsSelectorAndMapsTheAnswer) {
    const auto& c = GetParam();
    fake().setIntResult("troxResCtlRequest", 3);
    EXPECT_EQ(c.member(), 0);

    TroxRequestParcel expected = parcel(5);
    expected.param = 1;
    expected.requestData = {record(c.selector)};
    EXPECT_EQ(lastParcel(), expected) << lastParcel().toString();

    fake().setIntResult("troxResCtlRequest", 0);
    EXPECT_EQ(c.member(), -1);
    EXPECT_EQ(troxLines(), (Lines{info(std::string("trox client ") + c.name),
                                  info(std::string("trox client ") + c.name)}));
}

TEST_P(DiagnosticTest, FailureIsLoggedUnderItsOwnName) {
    const auto& c = GetParam();
    fake().failNextCalls(1);
    EXPECT_EQ(c.member(), -1);
    EXPECT_EQ(troxLines(), (Lines{info(std::string("trox client ") + c.name), failed(c.name)}));
}

INSTANTIATE_TEST_SUITE_P(
        Members, DiagnosticTest,
        ::testing::Values(
                DiagnosticCase{"troxDumpToDoQueue", troxHalclient::troxDumpToDoQueue, 0},
                DiagnosticCase{"troxDumpRunMap", troxHalclient::troxDumpRunMap, 1},
                DiagnosticCase{"troxDumpActiveResMap", troxHalclient::troxDumpActiveResMap, 2},
                DiagnosticCase{"troxDumpResRequest", troxHalclient::troxDumpResRequest, 3},
                DiagnosticCase{"troxDumpResInfo", troxHalclient::troxDumpResInfo, 4},
                DiagnosticCase{"troxDumpSAInfo", troxHalclient::troxDumpSAInfo, 5},
                DiagnosticCase{"troxDumpPidFdList", troxHalclient::troxDumpPidFdList, 6},
                DiagnosticCase{"troxDumpPidfdMonitorMap", troxHalclient::troxDumpPidfdMonitorMap,
                               7},
                DiagnosticCase{"troxDumpResRecordList", troxHalclient::troxDumpResRecordList, 8},
                DiagnosticCase{"troxHistoryRequestRecordOn",
                               troxHalclient::troxHistoryRequestRecordOn, 10},
                DiagnosticCase{"troxHistoryRequestRecordOff",
                               troxHalclient::troxHistoryRequestRecordOff, 11}),
        [](const auto& test) { return std::string(test.param.name); });

using PropertyTest = ClientTest;

struct ArrayDelete {
    void operator()(char* p) const { delete[] p; }
};
using Property = std::unique_ptr<char, ArrayDelete>;

TEST_F(PropertyTest, GetCopiesTheValueAndLogsIt) {
    fake().setPropertyValue("performance");
    Property value(troxHalclient::troxPropertyGet("persist.trox.mode"));
    EXPECT_STREQ(value.get(), "performance");
    EXPECT_EQ(fake().lastCall().texts, Texts{"persist.trox.mode"});
    EXPECT_EQ(troxLines(),
              (Lines{info("trox client troxPropertyGet"), info("troxPropertyGet performance ")}));
}

TEST_F(PropertyTest, GetFitsTwoHundredFiftyFiveCharacters) {
    const std::string longest(255, 'v');
    fake().setPropertyValue(longest);
    Property value(troxHalclient::troxPropertyGet("k"));
    EXPECT_EQ(std::string(value.get()), longest);
}

TEST_F(PropertyTest, GetOfAnEmptyValueIsTheEmptyText) {
    Property value(troxHalclient::troxPropertyGet("k"));
    EXPECT_STREQ(value.get(), "");
    EXPECT_EQ(troxLines(), (Lines{info("trox client troxPropertyGet"), info("troxPropertyGet  ")}));
}

TEST_F(PropertyTest, GetFailureCopiesTheEmptyTextAndDropsTheConnection) {
    fake().setPropertyValue("unused");
    fake().failNextCalls(1);
    Property value(troxHalclient::troxPropertyGet("k"));
    EXPECT_STREQ(value.get(), "");
    EXPECT_EQ(troxLines(), (Lines{info("trox client troxPropertyGet"), failed("troxPropertyGet"),
                                  info("troxPropertyGet  ")}));
}

TEST(PropertyNoServiceTest, GetWithoutAConnectionReturnsAClearedArray) {
    LogCapture logs;
    FakeTroxService service(FakeTroxService::Start::kNotDeclared);
    Property value(troxHalclient::troxPropertyGet("k"));
    ASSERT_NE(value.get(), nullptr);
    const char zeros[256] = {};
    EXPECT_EQ(std::memcmp(value.get(), zeros, sizeof(zeros)), 0);
    EXPECT_EQ(logs.linesWithTag(kTroxTag), (Lines{info("trox client troxPropertyGet"),
                                                  notDeclared(), info("troxPropertyGet  ")}));
}

TEST(PropertyDeathTest, ValueOfTwoHundredFiftySixCharactersEndsTheProcess) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
            {
                FakeTroxService service;
                service.fake().setPropertyValue(std::string(256, 'x'));
                delete[] troxHalclient::troxPropertyGet("k");
            },
            "");
}

TEST_F(PropertyTest, SetSendsKeyAndValue) {
    fake().setIntResult("troxPropertySet", 0);
    EXPECT_EQ(troxHalclient::troxPropertySet("a.b", "on"), 0);
    EXPECT_EQ(fake().lastCall().texts, (Texts{"a.b", "on"}));
    EXPECT_EQ(troxLines(), Lines{info("trox client troxPropertySet")});
}

using InitTest = ClientTest;

TEST_F(InitTest, InitCallsTheService) {
    troxHalclient::trox_init();
    EXPECT_EQ(fake().lastCall().method, "trox_init");
    EXPECT_EQ(troxLines(), Lines{info("trox client trox_init")});
}

TEST_F(InitTest, InitFailureIsLogged) {
    fake().failNextCalls(1);
    troxHalclient::trox_init();
    EXPECT_EQ(troxLines(), (Lines{info("trox client trox_init"), failed("trox_init")}));
}

TEST(ZdbdebugTest, ReplacesTheTagsWithOneAndTouchesNothingElse) {
    TroxRequestParcel p;
    p.requestType = 4;
    p.debugTags = std::vector<std::optional<std::string>>{std::string("a"), std::nullopt};
    troxHalclient::trox_add_zdbdebug_for_request_parcel(p);
    troxHalclient::trox_add_zdbdebug_for_request_parcel(p);

    TroxRequestParcel expected;
    expected.requestType = 4;
    expected.debugTags = zdbdebug();
    EXPECT_EQ(p, expected) << p.toString();
}

}  // namespace
}  // namespace vexal::testing
