#include <gtest/gtest.h>

#include "trox_sim/Config.h"
#include "trox_sim/ResourceModel.h"

namespace sim {
namespace {

using Changes = std::vector<Change>;

TEST(ResourceModelTest, BoostsTakeTheHighestLimitsTheLowestClampedAndOnlyMovesAreReported) {
    const Holder a{Holder::Type::kRequest, 1};
    const Holder b{Holder::Type::kRequest, 2};
    const Holder rule{Holder::Type::kRule, 1};
    ResourceModel m({{10, "boost", "/b", Kind::kBoost, 100, 100, 1000},
                     {20, "limit", "", Kind::kLimit, 900, 300, 900}});
    EXPECT_EQ(m.apply(a, {{10, 400}, {20, 600}}), (Changes{{10, 100, 400}, {20, 900, 600}}));
    EXPECT_EQ(m.apply(b, {{10, 300}, {20, 700}, {99, 1}}), Changes{}) << "neither wins";
    EXPECT_EQ(m.apply(rule, {{10, 5000}, {20, 1}}), (Changes{{10, 400, 1000}, {20, 600, 300}}));
    // Applying again replaces what the holder asked for before.
    EXPECT_EQ(m.apply(rule, {{10, 700}}), (Changes{{10, 1000, 700}, {20, 300, 600}}));
    EXPECT_EQ(m.heldBy(rule), (std::map<int32_t, int64_t>{{10, 700}}));
    EXPECT_EQ(m.holderCount(10), 3u);
    EXPECT_EQ(m.release(rule), (Changes{{10, 700, 400}}));
    EXPECT_EQ(m.release(a), (Changes{{10, 400, 300}, {20, 600, 700}}));
    EXPECT_EQ(m.release(b), (Changes{{10, 300, 100}, {20, 700, 900}}));
    EXPECT_EQ(m.value(20), 900);
}

TEST(ConfigTest, HexIdsPathsNumberTextsAndLimitsAreRead) {
    const Config c = parseConfig(R"({
      "resources": [{"id": "0x80000010", "path": "/p", "kind": "limit", "default": "5", "min": 0, "max": 9}],
      "actions": [{"id": 3, "settings": [{"resource": "/p", "value": "7"}]}],
      "features": {"0x11": 2},
      "limits": {"max_requests": 5, "max_text": 100, "max_connections": 7, "reply_timeout_ms": 250}
    })");
    ASSERT_EQ(c.resources.size(), 1u);
    EXPECT_EQ(c.resources[0].id, static_cast<int32_t>(0x80000010u));
    EXPECT_EQ(c.resources[0].defaultValue, 5);
    EXPECT_EQ(c.actions.at(3).settings,
              (std::vector<Setting>{{static_cast<int32_t>(0x80000010u), 7}}));
    EXPECT_EQ(c.features.at(0x11), "2");
    EXPECT_EQ(c.maxRequests, 5u);
    EXPECT_EQ(c.maxText, 100u);
    EXPECT_EQ(c.transportLimits,
              (std::map<std::string, uint64_t>{{"BINDER_HOST_MAX_CONNECTIONS", 7},
                                               {"BINDER_HOST_REPLY_TIMEOUT_MS", 250}}));
    const Config defaults = parseConfig(
            R"({"resources": [{"id": 1, "kind": "boost", "default": 0, "min": 0, "max": 1}]})");
    EXPECT_EQ(defaults.maxRequests, 1024u);
    EXPECT_EQ(defaults.maxText, 256u);
    EXPECT_TRUE(defaults.transportLimits.empty());
}

TEST(ConfigTest, BadConfigurationIsRejectedWithAMessageNamingTheProblem) {
    const std::string res = R"({"resources":[{"id":1,"kind":"boost","default":0,"min":0,"max":9}])";
    const std::pair<std::string, std::string> cases[] = {
            {"{", "not valid JSON"},
            {"[1, 2]", "the configuration must be a JSON object"},
            {R"({"resources": "cpu"})", "resources: expected an array"},
            {R"({"resources":[{"id":1,"kind":"boost","default":5,"min":9,"max":1}]})",
             "min is above max"},
            {R"({"resources":[{"id":1,"kind":"boost","default":50,"min":0,"max":9}]})",
             "default is outside"},
            {R"({"resources":[{"id":1,"kind":"up","default":0,"min":0,"max":9}]})",
             "resources[0].kind"},
            {R"({"resources":[{"id":true,"kind":"boost","default":0,"min":0,"max":9}]})",
             "resources[0].id: expected an integer"},
            {R"({"resources":[{"id":99999999999,"kind":"boost","default":0,"min":0,"max":9}]})",
             "id out of 32-bit range"},
            {res.substr(0, res.size() - 1) +
                     R"(,{"id":"0x1","kind":"boost","default":0,"min":0,"max":9}]})",
             "duplicate resource id"},
            {res + R"(,"actions":[{"id":0,"settings":[{"resource":2,"value":1}]}]})",
             "actions[0].settings[0]"},
            {res + R"(,"actions":[{"id":1,"settings":{"resource":1}}]})",
             "actions[0].settings: expected an array of settings"},
            {res + R"(,"rules":[{"id":5,"statuses":{"0":[]}}]})", "status 0"},
            {res + R"(,"scenarios":[{"id":1,"settings":[{"resource":1,"value":"fast"}]}]})",
             "'fast' is not an integer"},
            {res + R"(,"history":{"enabled":"yes"}})", "history.enabled: expected true or false"},
            {res + R"(,"extra":1})", "unknown section"},
            {res + R"(,"limits":{"max_requests":0}})", "max_requests"},
            {res + R"(,"limits":{"max_text":8}})", "max_text"}};
    for (const auto& [json, mentions] : cases) {
        try {
            parseConfig(json);
            ADD_FAILURE() << "accepted " << json;
        } catch (const ConfigError& e) {
            EXPECT_NE(std::string(e.what()).find(mentions), std::string::npos)
                    << e.what() << " / " << json;
        }
    }
}

}  // namespace
}  // namespace sim
