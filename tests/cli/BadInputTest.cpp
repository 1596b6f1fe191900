// Bad input ends with exit status 2 and one clear line on standard error before anything is
// sent; a refusal by the service with status 1.
#include <gmock/gmock.h>

#include <gtest/gtest.h>
#include <algorithm>

#include "PymctlRunner.h"

using pymctl_test::Outcome;
using pymctl_test::runPymctl;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

TEST(PymctlBadInput, ExitsTwoWithOneLineOnStandardError) {
    const std::string notText = "\xff\xfe\xc3";
    const std::pair<std::vector<std::string>, std::string> cases[] = {
            {{}, "missing subcommand"},
            {{"frobnicate"}, "unknown subcommand 'frobnicate'"},
            {{notText}, "unknown subcommand"},
            {{"--bogus", "init"}, "unknown option --bogus"},
            {{"--service", "remote", "init"}, "--service takes 'embedded'"},
            {{"--dir", "/nonexistent/pymctl", "init"}, "is not a directory"},
            {{"--dir", "/tmp", "init"}, "is refused"},
            {{"--dir"}, "--dir needs a value"},
            {{"--config", "/nonexistent.json", "init"}, "cannot use configuration"},
            {{"acquire", "1", "--json"}, "--json goes before the subcommand"},
            {{"acquire", "--action", "ACTION_NOPE"}, "unknown action name 'ACTION_NOPE'"},
            {{"acquire", "--action", "ACTION_LAUNCH", "0x10=1"}, "takes no command id"},
            {{"acquire"}, "missing arguments"},
            {{"acquire", "12abc"}, "command id '12abc' is not a whole number"},
            {{"acquire", "2147483648"}, "out of range"},
            {{"acquire", "1", "--duration", "-1"}, "duration -1 is out of range"},
            {{"acquire", "1", "--duration"}, "option --duration needs a value"},
            {{"acquire", "1", "0x10"}, "expected ID=VALUE"},
            {{"acquire", "1", "0x10="}, "has no value"},
            {{"acquire", "1", notText + "=1"}, "is not a whole number"},
            {{"acquire", "-2", "0x01010020=abc"},
             "value of resource 0x01010020 'abc' is not a whole number"},
            {{"listen", "0x01010020", "--timeout", "10", "--follow=yes"},
             "option --follow takes no value"},
            {{"release", "1", "2"}, "unexpected argument '2'"},
            {{"state", "0xG1"}, "resource id '0xG1' is not a number"},
            {{"state", "0x100000000"}, "out of range (0x0..0xFFFFFFFF)"},
            {{"scenario", "stop", "1"}, "unknown scenario action 'stop'"},
            {{"listen", "0x01010020"}, "missing --timeout"},
            {{"listen", "0x01010020", "--timeout", "600001"}, "timeout 600001 is out of range"},
            {{"dump", "everything"}, "unknown dump selector 'everything'"},
            {{"prop", "set", "k", std::string(256, 'x')}, "longer than 255"},
            {{"init", "+"}, "missing subcommand after '+'"},
            {{"init", "+", "nope"}, "unknown subcommand 'nope'"}};
    for (const auto& [args, message] : cases) {
        const Outcome r = runPymctl(args);
        SCOPED_TRACE(args.empty() ? "" : args.back());
        EXPECT_EQ(r.exitCode, 2) << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        EXPECT_THAT(r.err, StartsWith("pymctl"));
        EXPECT_THAT(r.err, HasSubstr(message));
        EXPECT_EQ(r.out, "") << "nothing ran";
    }
}

TEST(PymctlBadInput, ServiceRefusalExitsOneNotTwo) {
    Outcome r = runPymctl({"release", "5", "+", "resctl", "release", "5"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "pymctl resctl: release of handle 5 refused\n");
}

}  // namespace
