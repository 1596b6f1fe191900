// --json: one document that parses, with the fields scripts rely on.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "PymctlRunner.h"

using nlohmann::json;
using pymctl_test::Outcome;
using pymctl_test::runPymctl;

namespace {

json parsed(const std::vector<std::string>& args, int expectedExit = 0) {
    std::vector<std::string> all = {"--json"};
    all.insert(all.end(), args.begin(), args.end());
    Outcome r = runPymctl(all);
    EXPECT_EQ(r.exitCode, expectedExit) << r.err;
    json doc = json::parse(r.out, nullptr, false);
    EXPECT_FALSE(doc.is_discarded()) << r.out;
    return doc;
}

TEST(PymctlJson, AcquireCarriesHandleAndRequest) {
    json doc =
            parsed({"acquire", "--action", "ACTION_LAUNCH", "--pkg", "com.x", "--duration", "300"});
    EXPECT_EQ(doc["ok"], true);
    EXPECT_EQ(doc["handle"], 1);
    EXPECT_EQ(doc["cmdid"], 0);
    EXPECT_EQ(doc["action"], "ACTION_LAUNCH");
    EXPECT_EQ(doc["pkg"], "com.x");
    EXPECT_EQ(doc["duration"], 300);
}

TEST(PymctlJson, StateCarriesIdsNamesAndValues) {
    json doc = parsed({"state", "0x01010020", "0x01020050"});
    ASSERT_EQ(doc["resources"].size(), 2u);
    EXPECT_EQ(doc["resources"][0]["id"], 0x01010020);
    EXPECT_EQ(doc["resources"][0]["hex"], "0x01010020");
    EXPECT_EQ(doc["resources"][0]["name"], "cpu.cluster1.min_freq");
    EXPECT_EQ(doc["resources"][0]["value"], "710400");
    EXPECT_EQ(doc["resources"][1]["value"], "220000");
}

TEST(PymctlJson, ChainGivesAnArrayOfDocuments) {
    json doc = parsed({"init", "+", "pm-status", "0", "+", "feature", "1"});
    ASSERT_TRUE(doc.is_array());
    ASSERT_EQ(doc.size(), 3u);
    EXPECT_EQ(doc[0]["result"], 0);
    EXPECT_EQ(doc[1]["status"], 1);
    EXPECT_EQ(doc[2]["feature"], 1);
    EXPECT_EQ(doc[2]["status"], 1);
}

TEST(PymctlJson, DatasetAndActions) {
    json data = parsed({"dataset"});
    ASSERT_EQ(data["dataset"].size(), 4u);
    EXPECT_EQ(data["dataset"][0]["id"], 1);
    EXPECT_EQ(data["dataset"][0]["value"], "soc:vx9100");
    json actions = parsed({"actions"});
    EXPECT_EQ(actions["count"], 199);
    EXPECT_EQ(actions["actions"][17]["name"], "ACTION_CAMERA_PREVIEW");
    EXPECT_EQ(actions["actions"][162]["reachable"], false);
}

TEST(PymctlJson, ListenRecordsEachChangeBatch) {
    // The expiry must fall inside the listen window even on a slow (emulated) machine.
    json doc = parsed({"acquire", "--action", "ACTION_LAUNCH", "--duration", "600", "+", "listen",
                       "0x01010020", "0x01030010", "--timeout", "2500"});
    ASSERT_EQ(doc.size(), 2u);
    const json& listen = doc[1];
    EXPECT_EQ(listen["batches"], 1);
    ASSERT_EQ(listen["changes"].size(), 1u);
    ASSERT_EQ(listen["changes"][0].size(), 2u);
    EXPECT_EQ(listen["changes"][0][0]["value"], "710400");
    EXPECT_EQ(listen["changes"][0][1]["value"], "547000");
}

TEST(PymctlJson, HistoryRecordsAndPropertyValue) {
    json doc = parsed({"prop", "set", "k", "v", "+", "history", "+", "prop", "get", "k"});
    ASSERT_EQ(doc.size(), 3u);
    ASSERT_EQ(doc[1]["records"].size(), 1u);
    EXPECT_NE(doc[1]["records"][0].get<std::string>().find("prop-set k=v"), std::string::npos);
    EXPECT_EQ(doc[2]["value"], "v");
}

TEST(PymctlJson, FailureStillPrintsADocumentWithTheError) {
    json doc = parsed({"pm-status", "9"}, 1);
    EXPECT_EQ(doc["ok"], false);
    EXPECT_EQ(doc["mode"], 9);
    EXPECT_EQ(doc["status"], -1);
    EXPECT_NE(doc["error"].get<std::string>().find("power mode 9"), std::string::npos);
}

TEST(PymctlJson, DumpCarriesTheServiceLog) {
    json doc = parsed({"dump", "scenarios"});
    EXPECT_EQ(doc["selector"], "scenarios");
    ASSERT_GE(doc["log"].size(), 3u);
    EXPECT_EQ(doc["log"][0], "dump scenarios: 2 configured");
}

}  // namespace
