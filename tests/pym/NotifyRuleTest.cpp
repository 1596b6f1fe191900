#include "PymTestSupport.h"

namespace vexal::testing {
namespace {

TEST_F(PymTest, InitCallsTheServiceAndLogsOnlyItsEntryLine) {
    EXPECT_EQ(pymInit(), 0);
    expectOnlyCall(fake(), {"trox_init", std::nullopt});
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logError("pymInit enter")}));
}

constexpr int64_t kHighAllOnesLowOne = static_cast<int64_t>(0xFFFFFFFF00000001u);

struct NotifyCase {
    const char* name;
    int32_t idLow;
    int32_t idHigh;
    std::vector<int32_t> values;
    std::vector<TroxRequestData> sent;
};

class NotifyTest : public PymTest, public ::testing::WithParamInterface<NotifyCase> {};

TEST_P(NotifyTest, SendsOneIdEntryPerValueAndNoValues) {
    const NotifyCase& c = GetParam();
    fake().setIntResult("troxResCtlRequest", 31);
    EXPECT_EQ(PymNotify(c.idLow, c.idHigh, c.values), 31);
    // The values' texts must stay off the wire: debugTags absent, values absent.
    expectOnlyCall(fake(), {"troxResCtlRequest", parcelOfKind(10, c.sent)});
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logInfo("PymNotify enter")}));
}

INSTANTIATE_TEST_SUITE_P(
        Cases, NotifyTest,
        ::testing::Values(
                NotifyCase{"TwoValues",
                           3,
                           4,
                           {5, 7},
                           {entry(0x0000000400000003), entry(0x0000000400000003)}},
                NotifyCase{"NoValuesStillOneEntry", 3, 4, {}, {entry(0x0000000400000003)}},
                NotifyCase{"LowWordIsNotSignExtended", -1, 0, {1}, {entry(0x00000000FFFFFFFF)}},
                NotifyCase{"HighWordNegative",
                           1,
                           -1,
                           {9, 9, 9},
                           std::vector<TroxRequestData>(3, entry(kHighAllOnesLowOne))}),
        [](const auto& p) { return std::string(p.param.name); });

// Whatever the service wrote on success is the result, even a negative number.
struct IntResultCase {
    const char* name;
    int32_t written;
};

class IntResultTest : public PymTest, public ::testing::WithParamInterface<IntResultCase> {
  protected:
    void script(const char* method) { fake().setIntResult(method, GetParam().written); }
};

TEST_P(IntResultTest, Notify) {
    script("troxResCtlRequest");
    EXPECT_EQ(PymNotify(1, 0, {2}), GetParam().written);
    EXPECT_EQ(fake().callCount(), 1u);
}

TEST_P(IntResultTest, RelatedSysInfo) {
    script("setRelatedSysInfo");
    EXPECT_EQ(setRelatedSysInfo(1, 2), GetParam().written);
    EXPECT_EQ(fake().callCount(), 1u);
}

TEST_P(IntResultTest, RuleCtl) {
    script("troxRuleCtl");
    EXPECT_EQ(pymRuleCtl(1, 2, {}), GetParam().written);
    EXPECT_EQ(fake().callCount(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Results, IntResultTest,
                         ::testing::Values(IntResultCase{"Positive", 17}, IntResultCase{"Zero", 0},
                                           IntResultCase{"MinusOne", -1},
                                           IntResultCase{"Negative", -8}),
                         [](const auto& p) { return std::string(p.param.name); });

TEST_F(PymTest, RelatedSysInfoPassesBothIntegersAndLogsNothing) {
    fake().setIntResult("setRelatedSysInfo", 3);
    EXPECT_EQ(setRelatedSysInfo(-6, 2147483647), 3);
    expectOnlyCall(fake(), {"setRelatedSysInfo", std::nullopt, {-6, 2147483647}});
    EXPECT_EQ(pymLines(), std::vector<LogLine>{});
}

struct RuleCase {
    const char* name;
    int32_t ruleId;
    int32_t status;
    std::vector<Resource> resources;
    std::vector<TroxRequestData> sent;
};

class RuleCtlTest : public PymTest, public ::testing::WithParamInterface<RuleCase> {};

TEST_P(RuleCtlTest, RuleAndStatusTravelAsArgumentsWithTheResourceList) {
    const RuleCase& c = GetParam();
    fake().setIntResult("troxRuleCtl", 44);
    EXPECT_EQ(pymRuleCtl(c.ruleId, c.status, c.resources), 44);
    expectOnlyCall(fake(), {"troxRuleCtl", std::nullopt, {c.ruleId, c.status}, c.sent});
    EXPECT_EQ(pymLines(),
              (std::vector<LogLine>{logInfo("pymRuleCtl, ruleId:" + std::to_string(c.ruleId) +
                                            ", status:" + std::to_string(c.status))}));
}

INSTANTIATE_TEST_SUITE_P(
        Cases, RuleCtlTest,
        ::testing::Values(RuleCase{"EmptyList", 8, 1, {}, {}},
                          RuleCase{"ResourcesInOrder",
                                   9,
                                   1,
                                   {{0x010112F0, "enable 0"}, {0x01011910, "0"}},
                                   {entry(0x010112F0, "enable 0"), entry(0x01011910, "0")}},
                          RuleCase{"MissingValueSentEmpty",
                                   14,
                                   0,
                                   {{5, std::nullopt}, {-5, std::nullopt}},
                                   {entry(5, ""), entry(0xFFFFFFFB, "")}},
                          RuleCase{"NegativeRuleAndStatus", -3, -200, {{1, "x"}}, {entry(1, "x")}}),
        [](const auto& p) { return std::string(p.param.name); });

}  // namespace
}  // namespace vexal::testing
