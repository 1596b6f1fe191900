// The demo checks itself; these tests check that it says so and stays quick.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "PymctlRunner.h"

#include <chrono>

using pymctl_test::Outcome;
using pymctl_test::runPymctl;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

TEST(PymctlDemo, EveryStepBehavesAndItFinishesInSeconds) {
    const auto start = std::chrono::steady_clock::now();
    Outcome r = runPymctl({"demo"});
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(r.exitCode, 0) << r.out << r.err;
    EXPECT_THAT(r.out, Not(HasSubstr("FAILED")));
    EXPECT_THAT(r.out, HasSubstr("QUARNE_ACTION_LAUNCH"));
    EXPECT_THAT(r.out, HasSubstr("cpu.cluster1.min_freq = 1804800"));
    EXPECT_THAT(r.out, HasSubstr("ok: the listener saw the restore"));
    EXPECT_THAT(r.out, HasSubstr("state query while it is down: -1"));
    EXPECT_THAT(r.out, HasSubstr("client class: ro.vendor.trox.version = 1.0"));
    EXPECT_THAT(r.out, HasSubstr("demo: every step behaved as expected"));
    EXPECT_LT(elapsed, std::chrono::seconds(10));
}

TEST(PymctlDemo, JsonListsTwelveStepsAndNoFailedCheck) {
    Outcome r = runPymctl({"--json", "demo"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    nlohmann::json doc = nlohmann::json::parse(r.out);
    EXPECT_EQ(doc["steps"].size(), 12u);
    EXPECT_EQ(doc["failures"], 0);
    ASSERT_GE(doc["checks"].size(), 19u);
    for (const auto& c : doc["checks"]) EXPECT_EQ(c["ok"], true) << c["what"];
}

TEST(PymctlDemo, FailsWhenTheConfigurationCannotShowTheDay) {
    // A configuration without the launch action: the demo must say it cannot check and fail.
    const std::string path = ::testing::TempDir() + "/pymctl_demo_bare.json";
    FILE* f = std::fopen(path.c_str(), "w");
    ASSERT_NE(f, nullptr);
    std::fputs(R"({"resources":[{"id":"0x01010020","name":"cpu.cluster1.min_freq","kind":"boost",)"
               R"("default":710400,"min":710400,"max":2419200}],"actions":[]})",
               f);
    std::fclose(f);
    Outcome r = runPymctl({"--config", path, "demo"});
    EXPECT_TRUE(r.exitedNormally());
    EXPECT_EQ(r.exitCode, 1) << r.out << r.err;
    EXPECT_THAT(r.out, HasSubstr("FAILED"));
}

}  // namespace
