// The demo checks itself; these tests check that it says so and stays quick.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>

#include "PymctlRunner.h"

using pymctl_test::Outcome;
using pymctl_test::runPymctl;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

TEST(PymctlDemo, EveryStepBehavesAndItFinishesInSeconds) {
    const auto start = std::chrono::steady_clock::now();
    Outcome r = runPymctl({"demo"});
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_EQ(r.exitCode, 0) << r.out << r.err;
    EXPECT_THAT(r.out, Not(HasSubstr("FAILED")));
    for (const char* line :
         {"QUARNE_ACTION_LAUNCH", "cpu.cluster1.min_freq = 1804800",
          "ok: the listener saw the restore", "state query while it is down: -1",
          "client class: ro.vendor.trox.version = 1.0", "demo: every step behaved as expected"}) {
        EXPECT_THAT(r.out, HasSubstr(line));
    }
    r = runPymctl({"--json", "demo"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const nlohmann::json doc = nlohmann::json::parse(r.out);
    EXPECT_EQ(doc["steps"].size(), 12u);
    EXPECT_EQ(doc["failures"], 0);
    ASSERT_GE(doc["checks"].size(), 19u);
    for (const auto& c : doc["checks"]) EXPECT_EQ(c["ok"], true) << c["what"];
}

}  // namespace
