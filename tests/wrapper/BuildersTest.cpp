#include "WrapperTestSupport.h"

#include <iterator>

namespace vexal::testing {
namespace {

class BuildersTest : public WrapperTest {};

constexpr uint32_t kLoad0 = 0x010108A0, kLoad1 = 0x010108B0, kLoad2 = 0x010108C0;
constexpr uint32_t kColocation = 0x01011040, kMigrateFrom = 0x01010FB0, kMigrateTo = 0x01010FC0;
constexpr uint32_t kUpgradeText = 0x010115B0;

TEST_F(BuildersTest, OpcodeTablesHoldTheirEntriesAndEndThere) {
    using Table = std::vector<uint32_t>;
    auto table = [](const auto& array) { return Table(std::begin(array), std::end(array)); };
    EXPECT_EQ(table(opCodeTargetLoad), (Table{kLoad0, kLoad1, kLoad2}));
    EXPECT_EQ(table(opCodeAdpXpuCoreBoost),
              (Table{0x01010B10, 0x01010B20, 0x01010B30, 0x01020070}));
    EXPECT_EQ(table(opCodeAdpXpuCoreLimit),
              (Table{0x01010B90, 0x01010BA0, 0x01010BB0, 0x01020080}));
    EXPECT_EQ(table(opCodeAdpXpuFreqBoost),
              (Table{0x01010010, 0x01010020, 0x01010030, 0x01020050}));
    EXPECT_EQ(table(opCodeAdpXpuFreqLimit),
              (Table{0x010100A0, 0x010100B0, 0x010100C0, 0x01020060}));
}

TEST_F(BuildersTest, ResourceInfoEngagesEvenAnEmptyValue) {
    const Resource resource = PymResourceInfo(0x01011040, "");
    EXPECT_EQ(resource.id, 0x01011040);
    EXPECT_EQ(resource.value, std::optional<std::string>(""));
}

TEST_F(BuildersTest, TargetLoads) {
    const std::vector<std::pair<std::string, Settings>> cases = {
            {"80,90,70", {{kLoad0, "80"}, {kLoad1, "90"}, {kLoad2, "70"}}},
            {"0-80,1-90", {{kLoad0, "80"}, {kLoad1, "90"}}},
            {"5-80,9-90", {{kLoad0, "80"}, {kLoad1, "90"}}},  // the written index is not read
            {"80,-1,70", {}},
            {"0-80,-1,2-70", {{kLoad0, "80"}, {kLoad2, "70"}}},
            {"1-2-3", {{kLoad0, "2"}}},
            {"", {}},
            {",,,", {}},
            {"-", {}},
            {"---,,-", {}},
            {" 80 ,x", {{kLoad0, " 80 "}, {kLoad1, "x"}}},
            {"99999999999999999999", {{kLoad0, "99999999999999999999"}}},
            {"1,2,3,4,5,6", {{kLoad0, "1"}, {kLoad1, "2"}, {kLoad2, "3"}}},
            {"0-1,1-2,2-3,3-4,4-5", {{kLoad0, "1"}, {kLoad1, "2"}, {kLoad2, "3"}}},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(settingsOf(getTargetLoadList(text)), expected) << '"' << text << '"';
    }
}

TEST_F(BuildersTest, Colocation) {
    const std::vector<std::pair<std::string, Settings>> cases = {
            {"colocation:1,groupmigrate:5-3",
             {{kColocation, "1"}, {kMigrateFrom, "5"}, {kMigrateTo, "3"}}},
            {"groupmigrate:3-5", {}},
            {"groupmigrate:4-4", {}},
            {"groupmigrate:x-3", {}},
            {"groupmigrate:5-x", {{kMigrateFrom, "5"}, {kMigrateTo, "0"}}},
            {"groupmigrate:05-3", {{kMigrateFrom, "5"}, {kMigrateTo, "3"}}},
            {"groupmigrate:12ab-3", {{kMigrateFrom, "12"}, {kMigrateTo, "3"}}},
            {"groupmigrate:99999999999-3", {}},
            {"groupmigrate:3-99999999999", {{kMigrateFrom, "3"}, {kMigrateTo, "0"}}},
            {"groupmigrate:7-2-1", {{kMigrateFrom, "7"}, {kMigrateTo, "2"}}},
            {"groupmigrate:-5", {}},
            {"groupmigrate:5", {}},
            {"colocation:abc:def", {{kColocation, "abc"}}},
            {"groupmigrate:9-1,colocation:2",
             {{kMigrateFrom, "9"}, {kMigrateTo, "1"}, {kColocation, "2"}}},
            {"colocation", {}},
            {"colocation:", {}},
            {"Colocation:1, colocation:2,colocation :3,other:4", {}},
            {"", {}},
            {":::,,,", {}},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(settingsOf(getColocationList(text)), expected) << '"' << text << '"';
    }
}

TEST_F(BuildersTest, GameAdaptiveLimits) {
    constexpr uint32_t b0 = 0x01010B10, b1 = 0x01010B20, b2 = 0x01010B30, b3 = 0x01020070;
    constexpr uint32_t l0 = 0x01010B90, l1 = 0x01010BA0;
    constexpr uint32_t f0 = 0x01010010, f1 = 0x01010020, q0 = 0x010100A0, q1 = 0x010100B0;
    const std::vector<std::pair<std::string, Settings>> cases = {
            {"1,2,3,4;5,6", {{b0, "1"}, {b1, "2"}, {b2, "3"}, {b3, "4"}, {l0, "5"}, {l1, "6"}}},
            {"7;1,2", {{l0, "1"}, {l1, "2"}}},
            {"1,2;3,4;5,6;7,8;9,10",
             {{b0, "1"},
              {b1, "2"},
              {l0, "3"},
              {l1, "4"},
              {f0, "5"},
              {f1, "6"},
              {q0, "7"},
              {q1, "8"}}},
            {"1,2,3,4,5,6", {{b0, "1"}, {b1, "2"}, {b2, "3"}, {b3, "4"}}},
            {" 1 ,\t2\r\n", {{b0, "1"}, {b1, "2"}}},
            {"1, ,2", {{b0, "1"}, {b1, ""}, {b2, "2"}}},
            {";;1,2", {{b0, "1"}, {b1, "2"}}},
            {"", {}},
            {";;;", {}},
            {",;,", {}},
            {"5;6;7;8", {}},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(settingsOf(getGameAdpList(text)), expected) << '"' << text << '"';
    }
}

TEST_F(BuildersTest, GameUpgradeReadsOnlyTheLevelAndTheText) {
    EXPECT_EQ(settingsOf(getGameUpgradeList(0, 0, 3, 0, 0, "pro")),
              (Settings{{kColocation, "3"}, {kUpgradeText, "pro"}}));
    EXPECT_EQ(settingsOf(getGameUpgradeList(9, 9, 0, 9, 9, "")), Settings{});
    EXPECT_EQ(settingsOf(getGameUpgradeList(0, 0, -4, 0, 0, " x ")),
              (Settings{{kUpgradeText, " x "}}));
    EXPECT_EQ(settingsOf(getGameUpgradeList(0, 0, 1, 0, 0, "")), (Settings{{kColocation, "1"}}));
}

TEST_F(BuildersTest, ClearingTheGameUpgradeSendsTheSameOpcodeTwice) {
    clrGameUpgradeMode(21, -4);
    EXPECT_EQ(ruleCalls(fake()),
              (std::vector<RuleCall>{{21, -4, {{kColocation, "-1"}, {kColocation, ""}}}}));
    EXPECT_TRUE(wrapperLines().empty());
}

}  // namespace
}  // namespace vexal::testing
