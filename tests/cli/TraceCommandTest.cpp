// The ways to a trace: the demo's, a running troxd's through pymctl, troxd's own on SIGUSR1.
#include <gtest/gtest.h>
#include <signal.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <set>

#include "ChildProcess.h"
#include "PymctlRunner.h"
#include "TraceCheck.h"

using pymctl_test::runPymctl;

namespace {

TEST(PymctlTrace, DemoDaemonAndSignalWriteValidTraces) {
    std::string dir = ::testing::TempDir() + "/pymctl_trace_XXXXXX";
    ASSERT_NE(mkdtemp(dir.data()), nullptr);
    ASSERT_EQ(runPymctl({"demo", "--trace", dir + "/demo.json"}).exitCode, 0);

    vexal::testing::ChildProcess troxd({TROXD_PATH, "--dir", dir, "--trace", dir + "/usr1.json"});
    ASSERT_TRUE(troxd.waitForOutput("serving")) << troxd.output();
    ASSERT_EQ(
            runPymctl({"--dir", dir, "acquire", "--action", "ACTION_LAUNCH", "--duration", "60000"})
                    .exitCode,
            0);
    const auto fetched = runPymctl({"--dir", dir, "trace", dir + "/fetched.json"});
    ASSERT_EQ(fetched.exitCode, 0) << fetched.err;
    kill(troxd.pid(), SIGUSR1);
    ASSERT_TRUE(troxd.waitForOutput("written to " + dir + "/usr1.json")) << troxd.output();

    for (const char* name : {"/demo.json", "/fetched.json", "/usr1.json"}) {
        std::ifstream in(dir + name);
        const nlohmann::json trace = nlohmann::json::parse(in, nullptr, false);
        EXPECT_EQ(vexal::testing::traceProblem(trace), "") << name;
        std::set<std::string> slices;
        std::set<std::string> counters;
        for (const auto& e : trace["traceEvents"]) {
            (e["ph"] == "X" ? slices : counters).insert(e["name"].get<std::string>());
        }
        EXPECT_EQ(slices.count("ACTION_LAUNCH"), 1u) << name;
        EXPECT_EQ(counters.count("cpu.cluster1.min_freq"), 1u) << name;
    }
    const auto svg = runPymctl({"timeline", dir + "/demo.json", "--svg", dir + "/demo.svg"});
    EXPECT_EQ(svg.exitCode, 0) << svg.err;
    std::ifstream picture(dir + "/demo.svg");
    std::string head(4, '\0');
    picture.read(head.data(), 4);
    EXPECT_EQ(head, "<svg");
    EXPECT_EQ(std::system(("rm -rf '" + dir + "'").c_str()), 0);
}

}  // namespace
