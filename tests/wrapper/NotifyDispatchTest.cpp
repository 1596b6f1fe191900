#include "WrapperTestSupport.h"

#include <climits>

namespace vexal::testing {
namespace {

constexpr uint32_t kBoost = 0x010103A0, kGame = 0x010112F0, kGameExtra = 0x01011910;
constexpr uint32_t kLevel = 0x01011070, kUpgrade = 0x01011040, kText = 0x010115B0;
constexpr uint32_t kL0 = 0x010108A0, kL1 = 0x010108B0, kL2 = 0x010108C0, kFrom = 0x01010FB0;
constexpr uint32_t kTo = 0x01010FC0, kLimit0 = 0x01010B90, kLimit1 = 0x01010BA0;

struct Row {
    int32_t src;
    int32_t type;
    int32_t arg1;
    std::string data;
    std::vector<RuleCall> sent;
};

std::vector<Row> dispatchTable() {
    std::vector<Row> rows = {
            {8, 1, 1, "", {{8, 1, {{kBoost, "0"}}}}},
            {8, 1, 0, "", {{8, 1, {}}}},
            {8, 3, 1, "", {}},
            {9, 1, 0, "", {{9, 1, {{kGame, "enable 0"}, {kGameExtra, "0"}}}}},
            {14, 0, 5, "pro", {{14, 0, {{kUpgrade, "-1"}, {kUpgrade, ""}}}}},
            {14, 1, 3, "pro", {{14, 1, {{kUpgrade, "3"}, {kText, "pro"}}}}},
            {14, 1, -2, "t", {{14, 1, {{kText, "t"}}}}},
            {14, 2, 3, "pro", {}},
            {15, 1, 3, "", {{15, 0x301, {}}}},
            {15, -1, 2, "", {{15, 0x2FF, {}}}},
            {15, 1, 0x01000000, "", {{15, 1, {}}}},
            {15, 2, 3, "", {}},
            {102, 1, 0, "", {{102, 1, {{kLevel, "3"}}}}},
            {102, 0, 9, "", {{102, 0, {{kLevel, "0"}}}}},
            {102, 2, 5, "", {}},
            {111, 1, 9, "", {{111, 1, {{kBoost, "1"}}}}},
            {111, -1, 9, "", {{111, -1, {{kBoost, "-1"}}}}},
            {130, 1, 0, "80,90,70", {{130, 1, {{kL0, "80"}, {kL1, "90"}, {kL2, "70"}}}}},
            {130, 1, 0, ",,,", {{130, 1, {}}}},
            {130, 2, 0, "80", {}},
            {131,
             1,
             0,
             "colocation:1,groupmigrate:5-3",
             {{131, 1, {{kUpgrade, "1"}, {kFrom, "5"}, {kTo, "3"}}}}},
            {131, 1, 0, "", {}},
            {131, -1, 0, "colocation:1", {}},
            {9000, 1, 0, "7;1,2", {{9000, 1, {{kLimit0, "1"}, {kLimit1, "2"}}}}},
            {9000, 0, 0, "1,2", {{9000, 0, {}}}},
            {9000, 3, 0, "1,2", {}},
    };
    for (int32_t src : {1, 10, 11, 12, 16, 110, 129, 1000}) {
        for (int32_t type : {0, 1, 7, -1}) rows.push_back({src, type, 3, "1,2", {{src, type, {}}}});
    }
    // The folded rules send their source as the status when on, and 0 otherwise.
    for (int32_t src : {2, 3, 5, 6}) {
        rows.push_back({src, 1, 0, "", {{200, src, {}}}});
        for (int32_t type : {0, 7, -1}) rows.push_back({src, type, 1, "", {{200, 0, {}}}});
    }
    for (int32_t src : {4, 7,  13,  17,  50,  101,  103,  109,  112,     128,
                        0, -1, 132, 200, 999, 1001, 8999, 9001, INT_MIN, INT_MAX}) {
        for (int32_t type : {0, 1}) rows.push_back({src, type, 1, "1,2", {}});
    }
    return rows;
}

TEST_F(WrapperTest, EveryNotifyRowSendsExactlyItsRuleCallsAndLogsItsLine) {
    for (const Row& row : dispatchTable()) {
        SCOPED_TRACE(::testing::Message() << "src " << row.src << " type " << row.type << " arg1 "
                                          << row.arg1 << " data \"" << row.data << '"');
        fake().clearCalls();
        logs.clear();
        EXPECT_EQ(PymNotifyWapper("i", row.src, row.type, row.arg1, 77, 88, row.data), 0);
        EXPECT_EQ(ruleCalls(fake()), row.sent);
        EXPECT_EQ(wrapperLines(), (std::vector<LogLine>{wrapperInfo(
                                          "[PymNotifyWapper] i, src:" + std::to_string(row.src) +
                                          ", type:" + std::to_string(row.type))}));
    }
}

}  // namespace
}  // namespace vexal::testing
