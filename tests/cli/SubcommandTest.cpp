// Output of each subcommand against the embedded reference service (default configuration),
// readable and --json, several subcommands chained with "+" where one needs another's effect.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "PymctlRunner.h"
#include "Registry.h"

using nlohmann::json;
using pymctl_test::Outcome;
using pymctl_test::runPymctl;
using ::testing::HasSubstr;

namespace {

Outcome ok(const std::vector<std::string>& args) {
    Outcome r = runPymctl(args);
    EXPECT_EQ(r.exitCode, 0) << r.err;
    return r;
}

TEST(PymctlSubcommand, PrintsWhatTheServiceDid) {
    struct Case {
        std::vector<std::string> args;
        std::vector<std::string> lines;  // each a part of standard output
        int exitCode = 0;
    };
    const Case cases[] = {
            {{"init"}, {"init: ok\n"}},
            {{"acquire", "--action", "ACTION_LAUNCH", "+", "state", "0x01010020", "0x01030010"},
             {"acquired ACTION_LAUNCH (event 0): handle ",
              "\n0x01010020 cpu.cluster1.min_freq = 1804800\n0x01030010 membus.min_freq = "
              "1555000\n"}},
            {{"acquire", "-2", "0x01011070=7", "--duration", "5000", "+", "state", "0x01011070"},
             {"acquired command -2: handle 1, duration 5000 ms", "input.boost_level = 7"}},
            {{"acquire", "--action", "ACTION_LAUNCH", "+", "release", "1", "+", "state",
              "0x01010020"},
             {"release of handle 1 sent", "cpu.cluster1.min_freq = 710400"}},
            {{"sysinfo", "1", "2147483647"}, {"sysinfo: result 0\n"}},
            {{"wrapper-notify", "8", "1", "0", "", "+", "state", "0x010103A0"},
             {"notification 8 type 1 sent through the wrapper", "sched.boost_mode = 1"}},
            {{"rule", "300", "2", "+", "state", "0x01040010"},
             {"rule 300 status 2: result 0", "thermal.cpu_freq_cap = 1036800"}},
            {{"state", "0x01010020", "0x99"}, {"cpu.cluster1.min_freq = 710400"}, 1},
            {{"sysinfo", "4", "5", "+", "history"}, {"sysinfo 4=5"}},
            {{"pm-status", "0", "+", "feature", "3", "+", "power-consistency"},
             {"power mode 0: status 1\nfeature 3: status 0\npower consistency: result 87\n"}},
            {{"pm-status", "9"}, {}, 1},
            {{"dataset"}, {"1 soc:vx9100\n2 clusters:3\n3 cores:4,3,1\n4 gpu:vxg720\n"}},
            {{"resctl", "0x01010010=1000000", "--duration", "5000", "+", "state", "0x01010010", "+",
              "resctl", "release", "1", "+", "state", "0x01010010"},
             {"resource control granted: handle 1", "cpu.cluster0.min_freq = 1000000",
              "released handle 1", "cpu.cluster0.min_freq = 300000"}},
            {{"scenario", "start", "2", "+", "state", "0x01020050", "+", "scenario", "release",
              "1"},
             {"scenario 2 started: handle 1", "gpu.min_freq = 900000",
              "scenario handle 1 released"}},
            // The request must outlive the start of listening, even under an emulator.
            {{"acquire", "--action", "ACTION_LAUNCH", "--duration", "400", "+", "listen",
              "0x01010020", "--timeout", "1500"},
             {"listening on 1 resource(s), handle 2",
              "\nchange: 0x01010020 cpu.cluster1.min_freq = 710400\n", "1 change batch(es) seen"}},
            {{"dump", "res-info"},
             {"dump resource info: 22 resources", "gpu.min_freq boost default 220000"}},
            {{"prop", "set", "vendor.test", "on", "+", "prop", "get", "vendor.test", "+", "prop",
              "get", "ro.vendor.trox.version"},
             {"vendor.test set to on\nvendor.test = on\nro.vendor.trox.version = 1.0\n"}},
            {{"actions", "WFD"}, {"124\tACTION_WFD\n"}}};
    for (const Case& c : cases) {
        const Outcome r = runPymctl(c.args);
        EXPECT_EQ(r.exitCode, c.exitCode) << c.args[0] << ": " << r.err;
        for (const std::string& line : c.lines) EXPECT_THAT(r.out, HasSubstr(line)) << c.args[0];
    }
}

TEST(PymctlSubcommand, JsonIsOneDocumentWithTheFieldsScriptsRelyOn) {
    struct Case {
        std::vector<std::string> args;
        std::vector<std::pair<std::string, json>> fields;  // JSON pointer, value
        int exitCode = 0;
    };
    const Case cases[] = {
            {{"acquire", "--action", "ACTION_LAUNCH", "--pkg", "com.x", "--duration", "300"},
             {{"/ok", true},
              {"/handle", 1},
              {"/cmdid", 0},
              {"/action", "ACTION_LAUNCH"},
              {"/pkg", "com.x"},
              {"/duration", 300}}},
            {{"state", "0x01010020", "0x01020050"},
             {{"/resources/0/id", 0x01010020},
              {"/resources/0/hex", "0x01010020"},
              {"/resources/0/name", "cpu.cluster1.min_freq"},
              {"/resources/0/value", "710400"},
              {"/resources/1/value", "220000"}}},
            {{"init", "+", "pm-status", "0", "+", "feature", "1"},
             {{"/0/result", 0}, {"/1/status", 1}, {"/2/feature", 1}, {"/2/status", 1}}},
            {{"dataset"}, {{"/dataset/0/id", 1}, {"/dataset/0/value", "soc:vx9100"}}},
            {{"actions"},
             {{"/count", 199},
              {"/actions/17/name", "ACTION_CAMERA_PREVIEW"},
              {"/actions/162/reachable", false}}},
            // The expiry must fall inside the listen window even on a slow (emulated) machine.
            {{"acquire", "--action", "ACTION_LAUNCH", "--duration", "600", "+", "listen",
              "0x01010020", "0x01030010", "--timeout", "2500"},
             {{"/1/batches", 1}, {"/1/changes", json::parse(R"([[
               {"id": 16842784, "hex": "0x01010020", "value": "710400"},
               {"id": 16973840, "hex": "0x01030010", "value": "547000"}]])")}}},
            {{"prop", "set", "k", "v", "+", "history", "+", "prop", "get", "k"},
             {{"/2/value", "v"}}},
            {{"pm-status", "9"},
             {{"/ok", false},
              {"/mode", 9},
              {"/status", -1},
              {"/error", "no status for power mode 9"}},
             1},
            {{"dump", "scenarios"},
             {{"/selector", "scenarios"}, {"/log/0", "dump scenarios: 2 configured"}}}};
    for (const Case& c : cases) {
        std::vector<std::string> args = {"--json"};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const Outcome r = runPymctl(args);
        EXPECT_EQ(r.exitCode, c.exitCode) << r.err;
        const json doc = json::parse(r.out, nullptr, false);
        for (const auto& [pointer, value] : c.fields) {
            const json::json_pointer at(pointer);
            EXPECT_EQ(doc.contains(at) ? doc.at(at) : json(), value) << pointer << " in " << r.out;
        }
    }
}

TEST(PymctlSubcommand, HelpForTheToolAndEachSubcommandAndVerboseLog) {
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
    EXPECT_EQ(ok({"init"}).err, "") << "the library's log stays off standard error";
    EXPECT_THAT(ok({"--verbose", "init"}).err, HasSubstr("pymInit enter"));
}

}  // namespace
