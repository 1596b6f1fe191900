#include "PymTestSupport.h"

#include <functional>
#include <optional>
#include <stdexcept>

namespace vexal::testing {
namespace {

struct HistoryCase {
    const char* name;
    std::vector<TroxRequestData> reply;
    int32_t result;
    std::string history;         // starts as "old"
    std::vector<LogLine> lines;  // after the entry and pre-call lines
};

class HistoryTest : public PymTest, public ::testing::WithParamInterface<HistoryCase> {};

TEST_P(HistoryTest, JoinsEveryExtraText) {
    const HistoryCase& c = GetParam();
    fake().setStateReply(c.reply);
    std::string history = "old";
    EXPECT_EQ(PymGetHistory(history), c.result);
    EXPECT_EQ(history, c.history);
    expectOnlyCall(fake(), {"troxResStateRequest", parcelOfKind(11)});
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logInfo("pym client PymGetHistory"),
                                                logInfo("pym client hal PymGetHistory")} +
                           c.lines));
}

INSTANTIATE_TEST_SUITE_P(
        Cases, HistoryTest,
        ::testing::Values(HistoryCase{"Three",
                                      {entry(1, "v", "a"), entry(2, "w"),
                                       entry(3, std::nullopt, "c")},
                                      0,
                                      "start:a;none;c;end",
                                      {logDebug("get history successful: start:a;none;c;end")}},
                          HistoryCase{"One",
                                      {entry(0, std::nullopt, "x")},
                                      0,
                                      "start:x;end",
                                      {logDebug("get history successful: start:x;end")}},
                          HistoryCase{"OneWithoutExtra",
                                      {entry(0, "value")},
                                      0,
                                      "start:none;end",
                                      {logDebug("get history successful: start:none;end")}},
                          HistoryCase{"EmptyExtraIsKept",
                                      {entry(0, std::nullopt, ""), entry(0, std::nullopt, "")},
                                      0,
                                      "start:;;end",
                                      {logDebug("get history successful: start:;;end")}},
                          HistoryCase{"EmptyReply",
                                      {},
                                      -1,
                                      "old",
                                      {logError("failed to get history or return vector empty, "
                                                "data vector size 0")}}),
        [](const auto& p) { return std::string(p.param.name); });

struct StatusCase {
    const char* name;
    std::vector<TroxRequestData> reply;
    int32_t result;
    std::vector<LogLine> lines;  // after the entry lines
    std::string stdoutText;
};

std::string stoiWhat(const std::string& text) {
    try {
        (void)std::stoi(text);
    } catch (const std::exception& e) {
        return e.what();
    }
    return "";
}

class PMStatusTest : public PymTest, public ::testing::WithParamInterface<StatusCase> {};

TEST_P(PMStatusTest, ReadsTheFirstValueAndCatchesConversionErrors) {
    const StatusCase& c = GetParam();
    fake().setStateReply(c.reply);
    ::testing::internal::CaptureStdout();
    const int32_t result = PymGetPMStatus(-5);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), c.stdoutText);
    EXPECT_EQ(result, c.result);
    expectOnlyCall(fake(), {"troxResStateRequest", parcelOfKind(13, {entry(0xFFFFFFFB)})});
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logInfo("pym client PymGetPMStatus"),
                                                logInfo("pym client hal PymGetPMStatus")} +
                           c.lines));
}

INSTANTIATE_TEST_SUITE_P(
        Cases, PMStatusTest,
        ::testing::Values(
                StatusCase{"Number", {entry(0, "3")}, 3, {}, ""},
                StatusCase{"LeadingBlank", {entry(0, " 7"), entry(0, "8")}, 7, {}, ""},
                StatusCase{"Negative", {entry(0, "-2x")}, -2, {}, ""},
                StatusCase{"TooLarge",
                           {entry(0, "99999999999")},
                           -1,
                           {},
                           "Out of range exception: " + stoiWhat("99999999999") + "\n"},
                StatusCase{"NotANumber",
                           {entry(0, "abc")},
                           -1,
                           {},
                           "Invalid argument exception: " + stoiWhat("abc") + "\n"},
                StatusCase{
                        "EmptyReply",
                        {},
                        -1,
                        {logError("failed to get power mode status, mode -5, data vector size 0")},
                        ""},
                StatusCase{
                        "FirstWithoutValue",
                        {entry(0), entry(0, "1")},
                        -1,
                        {logError("failed to get power mode status, mode -5, data vector size 2")},
                        ""}),
        [](const auto& p) { return std::string(p.param.name); });

class FeatureStatusTest : public PymTest, public ::testing::WithParamInterface<StatusCase> {};

TEST_P(FeatureStatusTest, ReadsTheOnlyEntry) {
    const StatusCase& c = GetParam();
    fake().setStateReply(c.reply);
    EXPECT_EQ(PymGetFeatureStatus(0x30), c.result);
    expectOnlyCall(fake(), {"troxResStateRequest", parcelOfKind(17, {entry(0x30)})});
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logInfo("PymGetFeatureStatus enter")} + c.lines));
}

INSTANTIATE_TEST_SUITE_P(Cases, FeatureStatusTest,
                         ::testing::Values(StatusCase{"Number", {entry(0x30, "1")}, 1, {}, ""},
                                           StatusCase{"LeadingBlank", {entry(0, " 7")}, 7, {}, ""},
                                           StatusCase{"TwoEntriesWithValues",
                                                      {entry(0x30, "1"), entry(0x30, "2")},
                                                      -1,
                                                      {logError("failed to get resource value, 2")},
                                                      ""},
                                           StatusCase{"EmptyReply",
                                                      {},
                                                      -1,
                                                      {logError("failed to get resource value, 0")},
                                                      ""}),
                         [](const auto& p) { return std::string(p.param.name); });

struct FeatureThrowCase {
    const char* name;
    std::vector<TroxRequestData> reply;
    std::function<void()> expectThrow;
};

class FeatureStatusThrowTest : public PymTest,
                               public ::testing::WithParamInterface<FeatureThrowCase> {};

TEST_P(FeatureStatusThrowTest, ConversionErrorsEscape) {
    fake().setStateReply(GetParam().reply);
    GetParam().expectThrow();
    EXPECT_EQ(fake().callCount(), 1u);
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logInfo("PymGetFeatureStatus enter")}));
}

INSTANTIATE_TEST_SUITE_P(
        Replies, FeatureStatusThrowTest,
        ::testing::Values(
                FeatureThrowCase{
                        "WithoutValue",
                        {entry(0x30)},
                        [] { EXPECT_THROW(PymGetFeatureStatus(0x30), std::bad_optional_access); }},
                FeatureThrowCase{
                        "NotANumber",
                        {entry(0x30, "abc")},
                        [] { EXPECT_THROW(PymGetFeatureStatus(0x30), std::invalid_argument); }},
                FeatureThrowCase{
                        "TooLarge",
                        {entry(0x30, "99999999999")},
                        [] { EXPECT_THROW(PymGetFeatureStatus(0x30), std::out_of_range); }}),
        [](const auto& p) { return std::string(p.param.name); });

TEST_F(PymTest, FetchDatasetAppendsToWhatIsThere) {
    fake().setStateReply({entry(0x00000009FFFFFFFE, "a"), entry(7, "")});
    std::vector<Resource> dataset{{1, "x"}, {2, std::nullopt}, {3, "z"}};
    EXPECT_EQ(Pym_fetch_dataset(dataset), 5);
    ASSERT_EQ(dataset.size(), 5u);
    EXPECT_EQ(dataset[0].value, "x");
    EXPECT_EQ(dataset[1].value, std::nullopt);
    EXPECT_EQ(dataset[3].id, -2);
    EXPECT_EQ(dataset[3].value, "a");
    EXPECT_EQ(dataset[4].id, 7);
    EXPECT_EQ(dataset[4].value, "");
    expectOnlyCall(fake(), {"troxResStateRequest", parcelOfKind(16)});
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logInfo("Pym_fetch_dataset enter")}));
}

TEST_F(PymTest, FetchDatasetWithEmptyReplyFailsAndKeepsTheSet) {
    std::vector<Resource> dataset{{1, "x"}};
    EXPECT_EQ(Pym_fetch_dataset(dataset), -1);
    EXPECT_EQ(dataset.size(), 1u);
    EXPECT_EQ(fake().callCount(), 1u);
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logInfo("Pym_fetch_dataset enter"),
                                                logError("failed to get resource value")}));
}

TEST_F(PymTest, FetchDatasetEntryWithoutValueThrowsAfterAppendingTheOnesBefore) {
    fake().setStateReply({entry(4, "d"), entry(5), entry(6, "f")});
    std::vector<Resource> dataset;
    EXPECT_THROW(Pym_fetch_dataset(dataset), std::bad_optional_access);
    ASSERT_EQ(dataset.size(), 1u);
    EXPECT_EQ(dataset[0].id, 4);
    EXPECT_EQ(dataset[0].value, "d");
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logInfo("Pym_fetch_dataset enter")}));
}

}  // namespace
}  // namespace vexal::testing
