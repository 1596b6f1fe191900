#include "PymTestSupport.h"

#include <binder_host/service_control.h>

#include <functional>
#include <optional>
#include <stdexcept>

namespace vexal::testing {
namespace {

struct MultiCase {
    const char* name;
    std::vector<Resource> resources;
    std::vector<TroxRequestData> sent;  // ids only
    std::vector<TroxRequestData> reply;
    int32_t result;
    std::vector<std::optional<std::string>> values;  // the caller's values afterwards
    std::vector<LogLine> lines;                      // after the entry line
};

class MultiStateTest : public PymTest, public ::testing::WithParamInterface<MultiCase> {};

TEST_P(MultiStateTest, FillsMatchedValuesAndCountsThem) {
    const MultiCase& c = GetParam();
    fake().setStateReply(c.reply);
    std::vector<Resource> resources = c.resources;

    EXPECT_EQ(PymMutiResStateRequest(resources), c.result);
    expectOnlyCall(fake(), {"troxResStateRequest", parcelOfKind(0, c.sent)});
    std::vector<std::optional<std::string>> values;
    for (const auto& resource : resources) values.push_back(resource.value);
    EXPECT_EQ(values, c.values);
    for (size_t i = 0; i < resources.size(); ++i) EXPECT_EQ(resources[i].id, c.resources[i].id);
    EXPECT_EQ(pymLines(),
              (std::vector<LogLine>{logInfo("PymMutiResStateRequest enter")} + c.lines));
}

INSTANTIATE_TEST_SUITE_P(
        Cases, MultiStateTest,
        ::testing::Values(MultiCase{"MatchesByLowWordInCallerOrder",
                                    {{0x1000, "old"}, {-5, std::nullopt}, {0x2000, "x"}},
                                    {entry(0x1000), entry(0xFFFFFFFB), entry(0x2000)},
                                    {entry(0x2000, "20"), entry(0x00000007FFFFFFFB, "5")},
                                    2,
                                    {"old", "5", "20"},
                                    {logInfo("not match any opcode in pymcore"),
                                     logDebug("get resource value, opcode 0xfffffffb, value 5"),
                                     logDebug("get resource value, opcode 0x00002000, value 20")}},
                          MultiCase{"OtherIdsLeaveEverythingAndCountZero",
                                    {{1, "a"}, {2, std::nullopt}},
                                    {entry(1), entry(2)},
                                    {entry(3, "c")},
                                    0,
                                    {"a", std::nullopt},
                                    {logInfo("not match any opcode in pymcore"),
                                     logInfo("not match any opcode in pymcore")}},
                          MultiCase{"MatchWithoutValueIsSkippedSilently",
                                    {{1, "a"}, {2, "b"}},
                                    {entry(1), entry(2)},
                                    {entry(1), entry(2, "")},
                                    1,
                                    {"a", ""},
                                    {logDebug("get resource value, opcode 0x00000002, value ")}},
                          MultiCase{
                                  "RepeatedIdsTakeTheFirstMatch",
                                  {{4, std::nullopt}, {4, std::nullopt}},
                                  {entry(4), entry(4)},
                                  {entry(4, "first"), entry(4, "second")},
                                  2,
                                  {"first", "first"},
                                  {logDebug("get resource value, opcode 0x00000004, value first"),
                                   logDebug("get resource value, opcode 0x00000004, value first")}},
                          MultiCase{"EmptyReplyFails",
                                    {{1, "a"}},
                                    {entry(1)},
                                    {},
                                    -1,
                                    {"a"},
                                    {logError("failed to get resource value")}}),
        [](const auto& p) { return std::string(p.param.name); });

TEST_F(PymTest, MultiStateRejectsAnEmptyListWithoutCalling) {
    std::vector<Resource> resources;
    EXPECT_EQ(PymMutiResStateRequest(resources), -1);
    EXPECT_EQ(fake().callCount(), 0u);
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logInfo("PymMutiResStateRequest enter"),
                                                logError("input resource is empty, return")}));
}

struct SingleCase {
    const char* name;
    std::vector<TroxRequestData> reply;
    std::string value;           // afterwards; starts as "before"
    std::vector<LogLine> lines;  // after the two entry lines
};

class SingleStateTest : public PymTest, public ::testing::WithParamInterface<SingleCase> {};

TEST_P(SingleStateTest, SetsTheValueOnlyWhenExactlyOneCameBack) {
    const SingleCase& c = GetParam();
    fake().setStateReply(c.reply);
    std::string value = "before";
    PymResStateRequest(0x0101, value);
    EXPECT_EQ(value, c.value);
    expectOnlyCall(fake(), {"troxResStateRequest", parcelOfKind(0, {entry(0x0101)})});
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logInfo("PymResStateRequest enter"),
                                                logInfo("PymMutiResStateRequest enter")} +
                           c.lines));
}

INSTANTIATE_TEST_SUITE_P(
        Cases, SingleStateTest,
        ::testing::Values(
                SingleCase{"Value",
                           {entry(0x0101, "1800")},
                           "1800",
                           {logDebug("get resource value, opcode 0x00000101, value 1800")}},
                SingleCase{"EmptyValue",
                           {entry(0x0101, "")},
                           "",
                           {logDebug("get resource value, opcode 0x00000101, value ")}},
                SingleCase{"CutAtTheFirstNul",
                           {entry(0x0101, std::string("12\0ab", 5))},
                           "12",
                           {logDebug("get resource value, opcode 0x00000101, value 12")}},
                SingleCase{"NoMatch",
                           {entry(0x0102, "9")},
                           "before",
                           {logInfo("not match any opcode in pymcore")}},
                SingleCase{"MatchWithoutValue", {entry(0x0101)}, "before", {}},
                SingleCase{"EmptyReply", {}, "before", {logError("failed to get resource value")}}),
        [](const auto& p) { return std::string(p.param.name); });

TEST_F(PymTest, PowerConsistencyOpcodeGoesThroughPowerConsis) {
    fake().setStateReply({entry(kPowerConsistencyOpcode, "42")});
    std::string value = "before";
    PymResStateRequest(kPowerConsistencyOpcode, value);
    EXPECT_EQ(value, "42");
    expectOnlyCall(fake(), {"troxResStateRequest", powerConsistencyParcel()});
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logInfo("pym client PymGetPowerConsis")}));
}

struct ConsisCase {
    const char* name;
    std::vector<TroxRequestData> reply;
    int32_t result;
};

class PowerConsisTest : public PymTest, public ::testing::WithParamInterface<ConsisCase> {};

TEST_P(PowerConsisTest, ReadsTheFirstReplyValueAsANumber) {
    fake().setStateReply(GetParam().reply);
    EXPECT_EQ(PymGetPowerConsis(), GetParam().result);
    expectOnlyCall(fake(), {"troxResStateRequest", powerConsistencyParcel()});
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logInfo("pym client PymGetPowerConsis")}));
}

INSTANTIATE_TEST_SUITE_P(
        Cases, PowerConsisTest,
        ::testing::Values(ConsisCase{"Plain", {entry(kPowerConsistencyOpcode, "35")}, 35},
                          ConsisCase{"LeadingBlankTrailingText",
                                     {entry(kPowerConsistencyOpcode, " 42abc")},
                                     42},
                          ConsisCase{"Negative", {entry(kPowerConsistencyOpcode, "-7")}, -7},
                          ConsisCase{"OnlyTheFirstEntryCounts",
                                     {entry(1, "3"), entry(kPowerConsistencyOpcode, "4")},
                                     3}),
        [](const auto& p) { return std::string(p.param.name); });

// Which exception leaves, for a reply the service gives; both doors let it through.
struct ThrowCase {
    const char* name;
    std::vector<TroxRequestData> reply;
    std::function<void(const std::function<void()>&)> expectThrow;
};

template <typename Exception>
std::function<void(const std::function<void()>&)> throws() {
    return [](const std::function<void()>& call) { EXPECT_THROW(call(), Exception); };
}

class PowerConsisThrowTest : public PymTest, public ::testing::WithParamInterface<ThrowCase> {};

TEST_P(PowerConsisThrowTest, EscapesFromPowerConsis) {
    fake().setStateReply(GetParam().reply);
    GetParam().expectThrow([] { PymGetPowerConsis(); });
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logInfo("pym client PymGetPowerConsis")}));
    // A kept shared hold would stall the exclusive one the death handler takes.
    service.kill();
    EXPECT_EQ(pymLines().back(), logError("Trox HAL Service died"));
}

TEST_P(PowerConsisThrowTest, EscapesFromResStateRequestLeavingTheValue) {
    fake().setStateReply(GetParam().reply);
    std::string value = "before";
    GetParam().expectThrow([&] { PymResStateRequest(kPowerConsistencyOpcode, value); });
    EXPECT_EQ(value, "before");
    expectOnlyCall(fake(), {"troxResStateRequest", powerConsistencyParcel()});
}

INSTANTIATE_TEST_SUITE_P(
        Replies, PowerConsisThrowTest,
        ::testing::Values(ThrowCase{"NotANumber",
                                    {entry(kPowerConsistencyOpcode, "abc")},
                                    throws<std::invalid_argument>()},
                          ThrowCase{"EmptyText",
                                    {entry(kPowerConsistencyOpcode, "")},
                                    throws<std::invalid_argument>()},
                          ThrowCase{"TooLarge",
                                    {entry(kPowerConsistencyOpcode, "99999999999")},
                                    throws<std::out_of_range>()},
                          ThrowCase{"FirstEntryWithoutValue",
                                    {entry(kPowerConsistencyOpcode),
                                     entry(kPowerConsistencyOpcode, "1")},
                                    throws<std::bad_optional_access>()},
                          ThrowCase{"EmptyReply", {}, throws<std::bad_optional_access>()}),
        [](const auto& p) { return std::string(p.param.name); });

TEST_F(PymTest, FailedPowerConsisThrowsAndKeepsTheConnection) {
    fake().setStateReply({entry(kPowerConsistencyOpcode, "5")});
    fake().failNextCalls(1);
    EXPECT_THROW(PymGetPowerConsis(), std::bad_optional_access);
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logInfo("pym client PymGetPowerConsis")}));

    // A reconnect would fail here; the kept connection does not need one.
    binder_host::failNextLinkToDeath(STATUS_DEAD_OBJECT);
    EXPECT_EQ(PymGetPowerConsis(), 5);
    EXPECT_EQ(fake().callCount(), 2u);
}

}  // namespace
}  // namespace vexal::testing
