#include "../kit/ChildProcess.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "Daemon.h"

namespace {

std::string tempDir() {
    char tmpl[] = "/tmp/troxd-test-XXXXXX";
    const char* d = mkdtemp(tmpl);
    return d ? d : "";
}

bool exists(const std::string& path) {
    struct stat st {};
    return stat(path.c_str(), &st) == 0;
}

std::string slurp(const std::string& path) {
    std::ifstream in(path);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// troxd as a child process with its standard error on a pipe.
class Daemon : public vexal::testing::ChildProcess {
  public:
    explicit Daemon(std::vector<std::string> args) : ChildProcess(withProgram(std::move(args))) {}

  private:
    static std::vector<std::string> withProgram(std::vector<std::string> args) {
        args.insert(args.begin(), TROXD_PATH);
        return args;
    }
};

constexpr auto kTimeout = std::chrono::seconds(10);

TEST(TroxdTest, UnknownArgumentExitsWithUsage) {
    Daemon d({"--bogus"});
    EXPECT_EQ(d.waitForExit(kTimeout), 2);
    EXPECT_NE(d.output().find("unknown argument '--bogus'"), std::string::npos) << d.output();
    EXPECT_NE(d.output().find("usage: troxd"), std::string::npos);
}

TEST(TroxdTest, MissingOptionValueExitsWithUsage) {
    Daemon d({"--dir"});
    EXPECT_EQ(d.waitForExit(kTimeout), 2);
    EXPECT_NE(d.output().find("--dir needs a value"), std::string::npos) << d.output();
}

TEST(TroxdTest, BadConfigurationExitsBeforeWritingAnything) {
    const std::string base = tempDir();
    const std::string dir = base + "/host";
    const std::string config = base + "/bad.json";
    std::ofstream(config)
            << R"({"resources": [{"id": 1, "kind": "boost", "default": 9, "min": 0, "max": 5}]})";
    Daemon d({"--dir", dir, "--config", config});
    EXPECT_EQ(d.waitForExit(kTimeout), 1);
    EXPECT_NE(
            d.output().find("bad configuration: " + config + ": resources[0]: default is outside"),
            std::string::npos)
            << d.output();
    EXPECT_FALSE(exists(dir)) << "nothing is created for a configuration that cannot run";
}

TEST(TroxdTest, UnreadableConfigurationIsReported) {
    Daemon d({"--config", "/nonexistent/troxd.json"});
    EXPECT_EQ(d.waitForExit(kTimeout), 1);
    EXPECT_NE(d.output().find("cannot read /nonexistent/troxd.json"), std::string::npos);
}

TEST(TroxdTest, ServesWithTheDefaultConfigurationAndStopsCleanlyOnSigterm) {
    const std::string dir = tempDir() + "/host";
    Daemon d({"--dir", dir});
    ASSERT_TRUE(d.waitForOutput("serving vendor.vexal.hardware.trox.ITrox/default", kTimeout))
            << d.output();
    EXPECT_EQ(slurp(dir + "/manifest"), "vendor.vexal.hardware.trox.ITrox/default\n");
    struct stat st {};
    ASSERT_EQ(stat(dir.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u);
    const std::regex logcat(
            R"(\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} +\d+ +\d+ I troxd: service ready: 22 resources)");
    EXPECT_TRUE(std::regex_search(d.output(), logcat)) << d.output();
    ASSERT_EQ(kill(d.pid(), SIGTERM), 0);
    EXPECT_EQ(d.waitForExit(kTimeout), 0);
    EXPECT_NE(d.output().find("I troxd: stopping on SIGTERM"), std::string::npos) << d.output();
}

TEST(TroxdTest, SigintStopsItToo) {
    Daemon d({"--dir", tempDir()});
    ASSERT_TRUE(d.waitForOutput("serving", kTimeout)) << d.output();
    kill(d.pid(), SIGINT);
    EXPECT_EQ(d.waitForExit(kTimeout), 0);
}

constexpr char kSocketName[] = "vendor.vexal.hardware.trox.ITrox%2fdefault.sock";

bool isSocket(const std::string& path) {
    struct stat st {};
    return lstat(path.c_str(), &st) == 0 && S_ISSOCK(st.st_mode);
}

TEST(TroxdTest, ADirectoryAtTheSocketsNameIsAnErrorNotServing) {
    const std::string dir = tempDir();
    const std::string socket = dir + "/" + kSocketName;
    ASSERT_EQ(mkdir(socket.c_str(), 0700), 0);
    Daemon d({"--dir", dir});
    EXPECT_EQ(d.waitForExit(kTimeout), 1) << d.output();
    EXPECT_NE(d.output().find("troxd: cannot publish vendor.vexal.hardware.trox.ITrox/default"),
              std::string::npos)
            << d.output();
    EXPECT_EQ(d.output().find("serving"), std::string::npos) << d.output();
    struct stat st {};
    EXPECT_TRUE(lstat(socket.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) << "left as it was";
}

TEST(TroxdTest, ASecondDaemonOnTheDirectoryIsRefusedAndTheFirstKeepsServing) {
    struct Case {
        bool lockFileRemoved;  // then the live socket is what stops the second one
        std::string message;   // followed by the first one's pid
    };
    for (const Case& c :
         {Case{false, "troxd: another troxd (pid "}, Case{true, "is in use by pid "}}) {
        SCOPED_TRACE(c.message);
        const std::string dir = tempDir();
        Daemon first({"--dir", dir});
        ASSERT_TRUE(first.waitForOutput("serving", kTimeout)) << first.output();
        if (c.lockFileRemoved) {
            ASSERT_EQ(unlink((dir + "/troxd.pid").c_str()), 0);
        }
        Daemon second({"--dir", dir});
        EXPECT_EQ(second.waitForExit(kTimeout), 1) << second.output();
        EXPECT_NE(second.output().find(c.message + std::to_string(first.pid())), std::string::npos)
                << second.output();
        EXPECT_EQ(second.output().find("serving"), std::string::npos) << second.output();
        EXPECT_TRUE(isSocket(dir + "/" + kSocketName)) << "the refused daemon leaves the socket";
        EXPECT_EQ(kill(first.pid(), 0), 0) << "the first one still runs";
        ASSERT_EQ(kill(first.pid(), SIGTERM), 0);
        EXPECT_EQ(first.waitForExit(kTimeout), 0) << first.output();
        EXPECT_FALSE(isSocket(dir + "/" + kSocketName)) << "its socket goes with it";
        // Once it is gone the directory is free again.
        Daemon third({"--dir", dir});
        EXPECT_TRUE(third.waitForOutput("serving", kTimeout)) << third.output();
    }
}

TEST(DaemonPartsTest, ManifestGainsTheInstanceOnceAndKeepsOtherLines) {
    const std::string dir = tempDir();
    std::ofstream(dir + "/manifest") << "# services\nother.Service/default";
    ASSERT_EQ(troxd::ensureManifest(dir, "a.B/default"), "");
    ASSERT_EQ(troxd::ensureManifest(dir, "a.B/default"), "");
    EXPECT_EQ(slurp(dir + "/manifest"), "# services\nother.Service/default\na.B/default\n");
}

TEST(DaemonPartsTest, DirectoryMustBeADirectory) {
    const std::string dir = tempDir();
    std::ofstream(dir + "/file") << "x";
    EXPECT_NE(troxd::prepareDir(dir + "/file").find("is not a directory"), std::string::npos);
    EXPECT_NE(troxd::prepareDir(dir + "/no/such/parent").find("cannot create"), std::string::npos);
    EXPECT_EQ(troxd::prepareDir(dir + "/fresh"), "");
}

TEST(DaemonPartsTest, LogLineHasTheLogcatLayout) {
    const std::string line =
            troxd::formatLogLine(1795000000123LL, 42, 4242, ANDROID_LOG_WARN, "troxd", "hello");
    const std::regex layout(R"(\d\d-\d\d \d\d:\d\d:\d\d\.123    42  4242 W troxd: hello\n)");
    EXPECT_TRUE(std::regex_match(line, layout)) << line;
}

TEST(DaemonPartsTest, ArgumentsAreParsed) {
    troxd::Options o;
    std::vector<std::string> args{"troxd", "--dir=/x", "--config", "/c.json", "-v"};
    std::vector<char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    EXPECT_EQ(troxd::parseArgs(static_cast<int>(argv.size()), argv.data(), &o), "");
    EXPECT_EQ(o.dir, "/x");
    EXPECT_EQ(o.configPath, "/c.json");
    EXPECT_TRUE(o.verbose);
}

}  // namespace
