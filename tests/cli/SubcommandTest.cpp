// Readable output of each subcommand against the embedded reference service (default
// configuration), several subcommands chained with "+" where one needs another's effect.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "PymctlRunner.h"
#include "Registry.h"

using pymctl_test::Outcome;
using pymctl_test::runPymctl;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

Outcome ok(const std::vector<std::string>& args) {
    Outcome r = runPymctl(args);
    EXPECT_EQ(r.exitCode, 0) << r.err;
    EXPECT_TRUE(r.exitedNormally());
    return r;
}

TEST(PymctlSubcommand, InitSaysOk) {
    EXPECT_EQ(ok({"init"}).out, "init: ok\n");
}

TEST(PymctlSubcommand, AcquireByActionNameBoostsItsResources) {
    Outcome r =
            ok({"acquire", "--action", "ACTION_LAUNCH", "+", "state", "0x01010020", "0x01030010"});
    EXPECT_THAT(r.out, HasSubstr("acquired ACTION_LAUNCH (event 0): handle "));
    EXPECT_THAT(r.out, HasSubstr("0x01010020 cpu.cluster1.min_freq = 1804800\n"));
    EXPECT_THAT(r.out, HasSubstr("0x01030010 membus.min_freq = 1555000\n"));
}

TEST(PymctlSubcommand, AcquireAcceptsTheMarkerInFrontOfTheName) {
    EXPECT_THAT(ok({"acquire", "--action", "QUARNE_ACTION_SWIPE_V"}).out,
                HasSubstr("acquired ACTION_SWIPE_V (event 6)"));
}

TEST(PymctlSubcommand, AcquireByCommandIdWithResources) {
    Outcome r =
            ok({"acquire", "-2", "0x01011070=7", "--duration", "5000", "+", "state", "0x01011070"});
    EXPECT_THAT(r.out, HasSubstr("acquired command -2: handle 1, duration 5000 ms"));
    EXPECT_THAT(r.out, HasSubstr("input.boost_level = 7"));
}

TEST(PymctlSubcommand, ReleaseRestoresTheDefault) {
    Outcome r = ok({"acquire", "--action", "ACTION_LAUNCH", "+", "release", "1", "+", "state",
                    "0x01010020"});
    EXPECT_THAT(r.out, HasSubstr("release of handle 1 sent"));
    EXPECT_THAT(r.out, HasSubstr("cpu.cluster1.min_freq = 710400"));
}

TEST(PymctlSubcommand, OneWayReportsTheDrawnHandle) {
    EXPECT_THAT(ok({"oneway", "6"}).out, HasSubstr("sent one-way command 6: handle "));
}

TEST(PymctlSubcommand, NotifyAndSysInfoReportTheServiceResult) {
    EXPECT_EQ(ok({"notify", "1", "0", "3", "4"}).out, "notify: result 0\n");
    EXPECT_EQ(ok({"sysinfo", "1", "2"}).out, "sysinfo: result 0\n");
}

TEST(PymctlSubcommand, WrapperNotifyDrivesTheSchedulerBoostRule) {
    Outcome r = ok({"wrapper-notify", "8", "1", "0", "", "+", "state", "0x010103A0"});
    EXPECT_THAT(r.out, HasSubstr("notification 8 type 1 sent through the wrapper"));
    EXPECT_THAT(r.out, HasSubstr("sched.boost_mode = 1"));
}

TEST(PymctlSubcommand, RuleSetsWhatTheConfigurationSays) {
    Outcome r = ok({"rule", "300", "2", "+", "state", "0x01040010"});
    EXPECT_THAT(r.out, HasSubstr("rule 300 status 2: result 0"));
    EXPECT_THAT(r.out, HasSubstr("thermal.cpu_freq_cap = 1036800"));
}

TEST(PymctlSubcommand, StateOfAnUnknownResourceFails) {
    Outcome r = runPymctl({"state", "0x01010020", "0x99"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_THAT(r.out, HasSubstr("cpu.cluster1.min_freq = 710400"));
    EXPECT_THAT(r.err, HasSubstr("no value for 0x00000099"));
}

TEST(PymctlSubcommand, HistoryListsEarlierRequests) {
    Outcome r = ok({"sysinfo", "4", "5", "+", "history"});
    EXPECT_THAT(r.out, HasSubstr("sysinfo 4=5"));
}

TEST(PymctlSubcommand, HistoryOfAFreshServiceIsAFailure) {
    Outcome r = runPymctl({"history"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_THAT(r.err, HasSubstr("no history"));
}

TEST(PymctlSubcommand, StatusQueriesAnswerFromTheConfiguration) {
    EXPECT_EQ(ok({"pm-status", "0"}).out, "power mode 0: status 1\n");
    EXPECT_EQ(ok({"feature", "3"}).out, "feature 3: status 0\n");
    EXPECT_EQ(ok({"power-consistency"}).out, "power consistency: result 87\n");
    EXPECT_EQ(runPymctl({"pm-status", "9"}).exitCode, 1);
}

TEST(PymctlSubcommand, DatasetListsEveryEntry) {
    EXPECT_EQ(ok({"dataset"}).out, "1 soc:vx9100\n2 clusters:3\n3 cores:4,3,1\n4 gpu:vxg720\n");
}

TEST(PymctlSubcommand, ResCtlGrantsAndReleases) {
    Outcome r = ok({"resctl", "0x01010010=1000000", "--duration", "5000", "+", "state",
                    "0x01010010", "+", "resctl", "release", "1", "+", "state", "0x01010010"});
    EXPECT_THAT(r.out, HasSubstr("resource control granted: handle 1"));
    EXPECT_THAT(r.out, HasSubstr("cpu.cluster0.min_freq = 1000000"));
    EXPECT_THAT(r.out, HasSubstr("released handle 1"));
    EXPECT_THAT(r.out, HasSubstr("cpu.cluster0.min_freq = 300000"));
}

TEST(PymctlSubcommand, ScenarioStartsAndReleases) {
    Outcome r = ok({"scenario", "start", "2", "+", "state", "0x01020050", "+", "scenario",
                    "release", "1"});
    EXPECT_THAT(r.out, HasSubstr("scenario 2 started: handle 1"));
    EXPECT_THAT(r.out, HasSubstr("gpu.min_freq = 900000"));
    EXPECT_THAT(r.out, HasSubstr("scenario handle 1 released"));
    EXPECT_EQ(runPymctl({"scenario", "start", "9"}).exitCode, 1);
}

TEST(PymctlSubcommand, ListenPrintsTheChangeOfAnExpiringRequest) {
    // The request must outlive the start of listening, even under an emulator on a busy machine.
    Outcome r = ok({"acquire", "--action", "ACTION_LAUNCH", "--duration", "400", "+", "listen",
                    "0x01010020", "--timeout", "1500"});
    EXPECT_THAT(r.out, HasSubstr("listening on 1 resource(s), handle 2"));
    EXPECT_THAT(r.out, HasSubstr("change: 0x01010020 cpu.cluster1.min_freq = 710400"));
    EXPECT_THAT(r.out, HasSubstr("1 change batch(es) seen"));
}

TEST(PymctlSubcommand, ThermalNotifyAndListen) {
    EXPECT_EQ(ok({"thermal", "notify", "1=3", "2=1"}).out, "thermal levels sent (2)\n");
    Outcome r = ok({"thermal", "listen", "1", "--timeout", "20"});
    EXPECT_THAT(r.out, HasSubstr("listening for thermal levels of 1 id(s), handle 1"));
    EXPECT_THAT(r.out, HasSubstr("0 change batch(es) seen"));
}

TEST(PymctlSubcommand, DumpShowsWhatTheEmbeddedServiceLogged) {
    Outcome r = ok({"dump", "res-info"});
    EXPECT_THAT(r.out, HasSubstr("dump resource info: 22 resources"));
    EXPECT_THAT(r.out, HasSubstr("gpu.min_freq boost default 220000"));
}

TEST(PymctlSubcommand, PropSetThenGet) {
    Outcome r = ok({"prop", "set", "vendor.test", "on", "+", "prop", "get", "vendor.test"});
    EXPECT_EQ(r.out, "vendor.test set to on\nvendor.test = on\n");
    EXPECT_EQ(ok({"prop", "get", "ro.vendor.trox.version"}).out, "ro.vendor.trox.version = 1.0\n");
}

TEST(PymctlSubcommand, ActionsListsTheWholeCatalogue) {
    Outcome r = ok({"actions"});
    size_t lines = 0;
    for (char c : r.out) lines += c == '\n';
    EXPECT_EQ(lines, 199u);
    EXPECT_THAT(r.out, HasSubstr("0\tACTION_LAUNCH\n"));
    EXPECT_THAT(r.out, HasSubstr("106\tACTION_CAMERA_APS_CAPTURE_L1\t(repeat"));
    EXPECT_THAT(ok({"actions", "WFD"}).out, HasSubstr("124\tACTION_WFD\n"));
}

TEST(PymctlSubcommand, LibraryLogStaysOffStandardErrorUnlessVerbose) {
    EXPECT_EQ(ok({"init"}).err, "");
    EXPECT_THAT(ok({"--verbose", "init"}).err, HasSubstr("pymInit enter"));
}

TEST(PymctlSubcommand, HelpForTheToolAndEachSubcommand) {
    const std::string tool = ok({"--help"}).out;
    ASSERT_FALSE(pymctl::allCommands().empty());
    for (const pymctl::Command& c : pymctl::allCommands()) {
        // The whole name, at least two blanks, then the summary: nothing cut or run together.
        const std::string lead = "\n  " + c.name + "  ";
        const size_t at = tool.find(lead);
        ASSERT_NE(at, std::string::npos) << c.name;
        const size_t from = tool.find_first_not_of(' ', at + lead.size());
        EXPECT_EQ(tool.substr(from, c.summary.size() + 1), c.summary + "\n") << c.name;
        EXPECT_THAT(ok({c.name, "--help"}).out, HasSubstr("usage: pymctl " + c.name)) << c.name;
    }
    EXPECT_THAT(ok({"acquire", "--help"}).out, HasSubstr("--action NAME"));
}

}  // namespace
