// The text parsers behind the notify rules (and so the string helpers they stand on).
#include "WrapperTestSupport.h"

#include <functional>

namespace vexal::testing {
namespace {

using Builder = std::function<std::vector<Resource>(std::string)>;
const Builder load = getTargetLoadList, colo = getColocationList, adp = getGameAdpList;

constexpr uint32_t kLoad0 = 0x010108A0, kLoad1 = 0x010108B0, kLoad2 = 0x010108C0;
constexpr uint32_t kCo = 0x01011040, kFrom = 0x01010FB0, kTo = 0x01010FC0;
constexpr uint32_t b0 = 0x01010B10, b1 = 0x01010B20, b2 = 0x01010B30, b3 = 0x01020070;
constexpr uint32_t l0 = 0x01010B90, l1 = 0x01010BA0, l2 = 0x01010BB0, l3 = 0x01020080;
constexpr uint32_t f0 = 0x01010010, f1 = 0x01010020, f2 = 0x01010030, f3 = 0x01020050;
constexpr uint32_t q0 = 0x010100A0, q1 = 0x010100B0, q2 = 0x010100C0, q3 = 0x01020060;

// The opcodes in order with the values "1", "2", ...
Settings seq(const std::vector<uint32_t>& opcodes) {
    Settings settings;
    for (uint32_t op : opcodes) settings.emplace_back(op, std::to_string(settings.size() + 1));
    return settings;
}

struct BuilderCase {
    const Builder& build;
    std::string text;
    Settings expected;
};

TEST(BuildersTest, EveryTextGivesExactlyItsSettings) {
    const std::vector<BuilderCase> cases = {
            {load, "80,90,70", {{kLoad0, "80"}, {kLoad1, "90"}, {kLoad2, "70"}}},
            {load, "5-80,9-90", {{kLoad0, "80"}, {kLoad1, "90"}}},  // the written index is unread
            {load, "0-80,-1,2-70", {{kLoad0, "80"}, {kLoad2, "70"}}},
            {load, "80,-1,70", {}},
            {colo, "colocation:1,groupmigrate:5-3", {{kCo, "1"}, {kFrom, "5"}, {kTo, "3"}}},
            {colo, "groupmigrate:3-5", {}},
            {colo, "groupmigrate:5-x", {{kFrom, "5"}, {kTo, "0"}}},
            {colo, "groupmigrate:12ab-3", {{kFrom, "12"}, {kTo, "3"}}},
            {colo, "groupmigrate:99999999999-3", {}},
            {colo, "colocation:abc:def", {{kCo, "abc"}}},
            {colo, "Colocation:1, colocation:2,colocation :3,other:4", {}},
            {adp, "1,2,3,4;5,6,7,8;9,10,11,12;13,14,15,16",
             seq({b0, b1, b2, b3, l0, l1, l2, l3, f0, f1, f2, f3, q0, q1, q2, q3})},
            {adp, "7;1,2", {{l0, "1"}, {l1, "2"}}},
            {adp, "1,2,3,4,5,6", {{b0, "1"}, {b1, "2"}, {b2, "3"}, {b3, "4"}}},
            {adp, " 1 ,\t2\r\n", {{b0, "1"}, {b1, "2"}}},
            {adp, "1, ,2", {{b0, "1"}, {b1, ""}, {b2, "2"}}},
    };
    for (const auto& c : cases) EXPECT_EQ(settingsOf(c.build(c.text)), c.expected) << c.text;
}

}  // namespace
}  // namespace vexal::testing
