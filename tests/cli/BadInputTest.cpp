// Every kind of bad input ends with a non-zero exit and one clear line on standard error,
// never a crash, and before anything is sent.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "PymctlRunner.h"

#include <unistd.h>

#include <cstdlib>

using pymctl_test::Outcome;
using pymctl_test::runPymctl;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

struct BadCase {
    std::vector<std::string> args;
    std::string message;  // part of the single error line
};

void PrintTo(const BadCase& c, std::ostream* os) {
    for (const auto& a : c.args) *os << "'" << a << "' ";
}

class PymctlBadInput : public ::testing::TestWithParam<BadCase> {};

TEST_P(PymctlBadInput, ExitsTwoWithOneLineOnStandardError) {
    const BadCase& c = GetParam();
    Outcome r = runPymctl(c.args);
    ASSERT_TRUE(r.exitedNormally()) << "signal " << r.signal;
    EXPECT_EQ(r.exitCode, 2) << r.err;
    ASSERT_EQ(r.errLines().size(), 1u) << r.err;
    EXPECT_THAT(r.err, StartsWith("pymctl"));
    EXPECT_THAT(r.err, HasSubstr(c.message));
    EXPECT_EQ(r.out, "");
}

INSTANTIATE_TEST_SUITE_P(
        Cases, PymctlBadInput,
        ::testing::Values(
                BadCase{{}, "missing subcommand"},
                BadCase{{"frobnicate"}, "unknown subcommand 'frobnicate'"},
                BadCase{{"--bogus", "init"}, "unknown option --bogus"},
                BadCase{{"--service", "remote", "init"}, "--service takes 'embedded'"},
                BadCase{{"--dir", "/nonexistent/pymctl", "init"}, "is not a directory"},
                BadCase{{"--dir"}, "--dir needs a value"},
                BadCase{{"--config", "/nonexistent.json", "init"}, "cannot use configuration"},
                BadCase{{"acquire", "1", "--json"}, "--json goes before the subcommand"},
                BadCase{{"acquire", "--action", "ACTION_NOPE"},
                        "unknown action name 'ACTION_NOPE'"},
                BadCase{{"acquire", "--action", "ACTION_LAUNCH", "0x10=1"}, "takes no command id"},
                BadCase{{"acquire"}, "missing arguments"},
                BadCase{{"acquire", "12abc"}, "command id '12abc' is not a whole number"},
                BadCase{{"acquire", " 12"}, "is not a whole number"},
                BadCase{{"acquire", "2147483648"}, "out of range"},
                BadCase{{"acquire", "1", "--duration", "-1"}, "duration -1 is out of range"},
                BadCase{{"acquire", "1", "--duration"}, "option --duration needs a value"},
                BadCase{{"acquire", "1", "--frob"}, "unknown option --frob"},
                BadCase{{"acquire", "1", "0x10"}, "expected ID=VALUE"},
                BadCase{{"acquire", "1", "0x10="}, "has no value"},
                BadCase{{"acquire", "1", "zz=4"}, "resource id 'zz' is not a whole number"},
                BadCase{{"acquire", "-2", "ID=abc"}, "resource id 'ID' is not a whole number"},
                BadCase{{"acquire", "-2", "0x01010020=abc"},
                        "value of resource 0x01010020 'abc' is not a whole number"},
                BadCase{{"oneway", "6", "0x10=1.5"}, "'1.5' is not a whole number"},
                BadCase{{"resctl", "0x10= 7"}, "' 7' is not a whole number"},
                BadCase{{"listen", "0x01010020", "--timeout", "10", "--follow=yes"},
                        "option --follow takes no value"},
                BadCase{{"oneway", "--action", "ACTION_LAUNCH"}, "unknown option --action"},
                BadCase{{"release"}, "missing arguments"},
                BadCase{{"release", "1", "2"}, "unexpected argument '2'"},
                BadCase{{"release", "one"}, "handle 'one' is not a whole number"},
                BadCase{{"notify", "1"}, "missing arguments"},
                BadCase{{"notify", "1", "0", "x"}, "value 'x' is not a whole number"},
                BadCase{{"wrapper-notify", "8", "1", "0"}, "missing arguments"},
                BadCase{{"wrapper-notify", "8", "x", "0", "d"}, "type 'x'"},
                BadCase{{"rule", "8"}, "missing arguments"},
                BadCase{{"state"}, "missing arguments"},
                BadCase{{"state", "0xG1"}, "resource id '0xG1' is not a number"},
                BadCase{{"state", "0x100000000"}, "out of range (0x0..0xFFFFFFFF)"},
                BadCase{{"pm-status"}, "missing arguments"},
                BadCase{{"feature", "1.5"}, "feature '1.5' is not a whole number"},
                BadCase{{"dataset", "extra"}, "unexpected argument 'extra'"},
                BadCase{{"resctl"}, "missing arguments"},
                BadCase{{"resctl", "0x10=1", "--pid", "-3"}, "pid -3 is out of range"},
                BadCase{{"scenario", "stop", "1"}, "unknown scenario action 'stop'"},
                BadCase{{"listen", "0x01010020"}, "missing --timeout"},
                BadCase{{"listen", "0x01010020", "--timeout", "600001"}, "out of range"},
                BadCase{{"listen", "--timeout", "10"}, "missing arguments"},
                BadCase{{"thermal", "boil"}, "unknown thermal action 'boil'"},
                BadCase{{"thermal", "notify"}, "missing arguments"},
                BadCase{{"thermal", "listen", "1"}, "missing --timeout"},
                BadCase{{"dump", "everything"}, "unknown dump selector 'everything'"},
                BadCase{{"prop", "get"}, "missing arguments"},
                BadCase{{"prop", "set", "k"}, "missing arguments"},
                BadCase{{"prop", "set", "k", std::string(256, 'x')}, "longer than 255"},
                BadCase{{"prop", "peek", "k"}, "unknown prop action 'peek'"},
                BadCase{{"actions", "NO_SUCH_THING"}, "no action name contains"},
                BadCase{{"init", "+"}, "missing subcommand after '+'"},
                BadCase{{"init", "+", "nope"}, "unknown subcommand 'nope'"},
                BadCase{{"--dir", "/tmp", "init"}, "is refused"}));

TEST(PymctlBadInputChain, DemoNeedsTheEmbeddedService) {
    std::string dir = ::testing::TempDir() + "/pymctl_dir_XXXXXX";
    ASSERT_NE(mkdtemp(dir.data()), nullptr);
    Outcome r = runPymctl({"--dir", dir, "demo"});
    rmdir(dir.c_str());
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_THAT(r.err, HasSubstr("embedded service only"));
}

TEST(PymctlBadInputChain, NothingRunsWhenALaterSubcommandIsUnknown) {
    Outcome r = runPymctl({"init", "+", "nope"});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.out, "");
}

TEST(PymctlBadInputChain, ServiceFailureExitsOneNotTwo) {
    Outcome r = runPymctl({"release", "5", "+", "resctl", "release", "5"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.errLines().size(), 1u) << r.err;
    EXPECT_THAT(r.err, HasSubstr("pymctl resctl: release of handle 5 refused"));
}

}  // namespace
