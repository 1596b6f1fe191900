#include <gtest/gtest.h>

#include "trox_sim/Clock.h"
#include "trox_sim/Config.h"
#include "trox_sim/RequestTable.h"
#include "trox_sim/ResourceModel.h"

namespace sim {
namespace {

const Holder kA{Holder::Type::kRequest, 1};
const Holder kB{Holder::Type::kRequest, 2};
const Holder kRule1{Holder::Type::kRule, 1};

ResourceModel smallModel() {
    return ResourceModel({{10, "boost", "/b", Kind::kBoost, 100, 100, 1000},
                          {20, "limit", "", Kind::kLimit, 900, 300, 900}});
}

TEST(ResourceModelTest, NoHolderMeansDefault) {
    ResourceModel m = smallModel();
    EXPECT_EQ(m.value(10), 100);
    EXPECT_EQ(m.value(20), 900);
    EXPECT_EQ(m.holderCount(10), 0u);
}

TEST(ResourceModelTest, HighestBoostWinsAndLowerHolderRestoresWhenItLeaves) {
    ResourceModel m = smallModel();
    EXPECT_EQ(m.apply(kA, {{10, 400}}), (std::vector<Change>{{10, 100, 400}}));
    EXPECT_EQ(m.apply(kB, {{10, 700}}), (std::vector<Change>{{10, 400, 700}}));
    EXPECT_EQ(m.holderCount(10), 2u);
    EXPECT_EQ(m.release(kB), (std::vector<Change>{{10, 700, 400}}));
    EXPECT_EQ(m.release(kA), (std::vector<Change>{{10, 400, 100}}));
}

TEST(ResourceModelTest, LowestLimitWins) {
    ResourceModel m = smallModel();
    m.apply(kA, {{20, 600}});
    m.apply(kB, {{20, 400}});
    EXPECT_EQ(m.value(20), 400);
    EXPECT_TRUE(m.release(kA).empty()) << "the stricter limit still holds";
    EXPECT_EQ(m.value(20), 400);
    m.release(kB);
    EXPECT_EQ(m.value(20), 900);
}

TEST(ResourceModelTest, MergedValueIsClampedToRange) {
    ResourceModel m = smallModel();
    m.apply(kA, {{10, 5000}, {20, 1}});
    EXPECT_EQ(m.value(10), 1000);
    EXPECT_EQ(m.value(20), 300);
}

TEST(ResourceModelTest, ApplyReplacesWhatTheHolderAskedForBefore) {
    ResourceModel m = smallModel();
    m.apply(kRule1, {{10, 500}, {20, 400}});
    const auto changes = m.apply(kRule1, {{10, 600}});
    EXPECT_EQ(changes, (std::vector<Change>{{10, 500, 600}, {20, 400, 900}}));
    EXPECT_EQ(m.heldBy(kRule1), (std::map<int32_t, int64_t>{{10, 600}}));
}

TEST(ResourceModelTest, NoChangeIsReportedWhenTheMergedValueStays) {
    ResourceModel m = smallModel();
    m.apply(kA, {{10, 700}});
    EXPECT_TRUE(m.apply(kB, {{10, 300}}).empty());
    EXPECT_TRUE(m.release(kB).empty());
    EXPECT_TRUE(m.apply(kB, {{99, 1}}).empty()) << "unknown ids are ignored";
}

TEST(ResourceModelTest, FindsByIdAndPath) {
    ResourceModel m = smallModel();
    ASSERT_NE(m.findByPath("/b"), nullptr);
    EXPECT_EQ(m.findByPath("/b")->id, 10);
    EXPECT_EQ(m.findByPath(""), nullptr);
    EXPECT_EQ(m.find(30), nullptr);
}

TEST(RequestTableTest, HandlesArePositiveUniqueAndSkipThoseInUse) {
    RequestTable t;
    Request r;
    r.handle = 2;
    ASSERT_TRUE(t.add(r));
    t.reserve(3);
    EXPECT_EQ(t.newHandle(), 1);
    EXPECT_EQ(t.newHandle(), 4);
    EXPECT_FALSE(t.add(r)) << "handle 2 is taken";
    r.handle = 0;
    EXPECT_FALSE(t.add(r));
    r.handle = 3;
    EXPECT_FALSE(t.add(r)) << "reserved";
}

TEST(RequestTableTest, TakesExpiredEarliestFirstAndKeepsTheRest) {
    RequestTable t;
    for (auto [h, deadline] :
         std::vector<std::pair<int32_t, int64_t>>{{1, 300}, {2, 100}, {3, 200}}) {
        Request r;
        r.handle = h;
        r.deadlineMs = deadline;
        t.add(r);
    }
    Request forever;
    forever.handle = 4;
    t.add(forever);
    EXPECT_EQ(t.nextDeadline(), 100);
    const auto expired = t.takeExpired(200);
    ASSERT_EQ(expired.size(), 2u);
    EXPECT_EQ(expired[0].handle, 2);
    EXPECT_EQ(expired[1].handle, 3);
    EXPECT_EQ(t.size(), 2u);
    EXPECT_EQ(t.nextDeadline(), 300);
    EXPECT_TRUE(t.remove(1).has_value());
    EXPECT_FALSE(t.remove(1).has_value());
    EXPECT_FALSE(t.nextDeadline().has_value());
}

TEST(ManualClockTest, AlarmFiresOnlyWhenTimeReachesIt) {
    ManualClock c(1000);
    int fired = 0;
    int64_t firedAt = -1;
    c.setAlarm(1100, [&] {
        ++fired;
        firedAt = c.nowMs();
    });
    c.advance(99);
    EXPECT_EQ(fired, 0);
    c.advance(50);
    EXPECT_EQ(fired, 1);
    EXPECT_EQ(firedAt, 1100) << "the callback sees the time it was due at";
    EXPECT_EQ(c.nowMs(), 1149);
    c.advance(1000);
    EXPECT_EQ(fired, 1) << "an alarm fires once";
}

TEST(ManualClockTest, CancelledAlarmNeverFires) {
    ManualClock c;
    bool fired = false;
    c.setAlarm(10, [&] { fired = true; });
    c.cancelAlarm();
    c.advance(100);
    EXPECT_FALSE(fired);
}

TEST(ConfigTest, ShippedDefaultLoadsWithAPlausibleDevice) {
    const Config c = defaultConfig();
    EXPECT_GE(c.resources.size(), 10u);
    EXPECT_TRUE(c.actions.count(0)) << "launch";
    ASSERT_TRUE(c.actions.count(6)) << "vertical swipe";
    EXPECT_FALSE(c.actions.at(6).settings.empty());
    EXPECT_FALSE(c.rules.empty());
    EXPECT_FALSE(c.scenarios.empty());
    EXPECT_FALSE(c.dataset.empty());
    EXPECT_EQ(c.powerConsistency, "87");
    bool hasLimit = false;
    for (const auto& r : c.resources) hasLimit |= r.kind == Kind::kLimit;
    EXPECT_TRUE(hasLimit);
}

TEST(ConfigTest, HexIdsPathsAndNumberTextsAreRead) {
    const Config c = parseConfig(R"({
      "resources": [{"id": "0x80000010", "path": "/p", "kind": "limit", "default": "5", "min": 0, "max": 9}],
      "actions": [{"id": 3, "settings": [{"resource": "/p", "value": "7"}]}],
      "features": {"0x11": 2}
    })");
    ASSERT_EQ(c.resources.size(), 1u);
    EXPECT_EQ(c.resources[0].id, static_cast<int32_t>(0x80000010u));
    EXPECT_EQ(c.resources[0].defaultValue, 5);
    EXPECT_EQ(c.actions.at(3).settings,
              (std::vector<Setting>{{static_cast<int32_t>(0x80000010u), 7}}));
    EXPECT_EQ(c.features.at(0x11), "2");
}

struct BadConfig {
    const char* name;
    const char* json;
    const char* mentions;
};

class BadConfigTest : public ::testing::TestWithParam<BadConfig> {};

TEST_P(BadConfigTest, IsRejectedWithAMessageNamingTheProblem) {
    try {
        parseConfig(GetParam().json);
        FAIL() << "accepted";
    } catch (const ConfigError& e) {
        EXPECT_NE(std::string(e.what()).find(GetParam().mentions), std::string::npos) << e.what();
    }
}

INSTANTIATE_TEST_SUITE_P(
        Cases, BadConfigTest,
        ::testing::Values(
                BadConfig{"NotJson", "{", "not valid JSON"},
                BadConfig{"NoResources", "{}", "resources"},
                BadConfig{"MinAboveMax",
                          R"({"resources":[{"id":1,"kind":"boost","default":5,"min":9,"max":1}]})",
                          "min is above max"},
                BadConfig{"DefaultOutside",
                          R"({"resources":[{"id":1,"kind":"boost","default":50,"min":0,"max":9}]})",
                          "default is outside"},
                BadConfig{"BadKind",
                          R"({"resources":[{"id":1,"kind":"up","default":0,"min":0,"max":9}]})",
                          "resources[0].kind"},
                BadConfig{"DuplicateId",
                          R"({"resources":[{"id":1,"kind":"boost","default":0,"min":0,"max":9},
                                           {"id":"0x1","kind":"boost","default":0,"min":0,"max":9}]})",
                          "duplicate resource id"},
                BadConfig{"ActionOnUnknownResource",
                          R"({"resources":[{"id":1,"kind":"boost","default":0,"min":0,"max":9}],
                              "actions":[{"id":0,"settings":[{"resource":2,"value":1}]}]})",
                          "actions[0].settings[0]"},
                BadConfig{"RuleStatusZero",
                          R"({"resources":[{"id":1,"kind":"boost","default":0,"min":0,"max":9}],
                              "rules":[{"id":5,"statuses":{"0":[]}}]})",
                          "status 0"},
                BadConfig{"NonNumericValue",
                          R"({"resources":[{"id":1,"kind":"boost","default":0,"min":0,"max":9}],
                              "scenarios":[{"id":1,"settings":[{"resource":1,"value":"fast"}]}]})",
                          "not an integer"},
                BadConfig{"UnknownSection",
                          R"({"resources":[{"id":1,"kind":"boost","default":0,"min":0,"max":9}],
                              "extra":1})",
                          "unknown section"}),
        [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace sim
