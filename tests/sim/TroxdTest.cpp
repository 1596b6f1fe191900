// troxd as a program: it serves, stops on a signal, keeps one daemon per directory, and refuses
// bad arguments (exit 2), configuration and host directories (exit 1) with a message, leaving
// the directory as it was.
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>

#include "ChildProcess.h"

namespace {

constexpr auto kTimeout = std::chrono::seconds(20);
constexpr char kSocketName[] = "vendor.vexal.hardware.trox.ITrox%2fdefault.sock";

class Troxd : public vexal::testing::ChildProcess {
  public:
    explicit Troxd(std::vector<std::string> args, Options options = {})
        : ChildProcess(withProgram(std::move(args)), options) {}

  private:
    static std::vector<std::string> withProgram(std::vector<std::string> args) {
        args.insert(args.begin(), TROXD_PATH);
        return args;
    }
};

mode_t typeOf(const std::string& path) {
    struct stat st {};
    return lstat(path.c_str(), &st) == 0 ? st.st_mode & S_IFMT : 0;
}

std::set<std::string> entries(const std::string& dir) {
    std::set<std::string> names;
    std::error_code ec;
    for (const auto& e : std::filesystem::directory_iterator(dir, ec)) names.insert(e.path());
    return names;
}

std::string slurp(const std::string& path) {
    std::ifstream in(path);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

class TroxdTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char tmpl[] = "/tmp/troxd-test-XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        base_ = tmpl;
    }
    void TearDown() override { std::filesystem::remove_all(base_); }

    std::string file(const std::string& name, const std::string& text) {
        std::ofstream(base_ + "/" + name) << text;
        return base_ + "/" + name;
    }
    std::string dir(const std::string& name, mode_t mode = 0700) {
        const std::string path = base_ + "/" + name;
        EXPECT_EQ(mkdir(path.c_str(), 0700), 0);
        EXPECT_EQ(chmod(path.c_str(), mode), 0);
        return path;
    }

    // troxd ends with status and message and leaves hostDir as it was, absent or not.
    void expectRefused(const std::vector<std::string>& args, int status, const std::string& message,
                       const std::string& hostDir, const Troxd::Options& options = {}) {
        const mode_t type = typeOf(hostDir);
        const std::set<std::string> before = entries(hostDir);
        Troxd troxd(args, options);
        EXPECT_EQ(troxd.waitForExit(kTimeout), status) << troxd.output();
        EXPECT_NE(troxd.output().find(message), std::string::npos) << troxd.output();
        EXPECT_EQ(troxd.output().find("serving"), std::string::npos) << troxd.output();
        EXPECT_EQ(typeOf(hostDir), type);
        EXPECT_EQ(entries(hostDir), before) << "no manifest, socket or temporary file is left";
    }

    std::string base_;
};

TEST_F(TroxdTest, BadArgumentsExitTwoWithTheUsage) {
    for (const std::vector<std::string>& args : {std::vector<std::string>{"--bogus"},
                                                 {"--dir"},
                                                 {"--dir="},
                                                 {"--config="},
                                                 {"--config", ""},
                                                 {"serve"},
                                                 {"--dir", base_, "--verbose=1"},
                                                 {"--config-limit", "10"},
                                                 {"--config-limit", "1k"},
                                                 {"--config-limit=-5"},
                                                 {"-"}}) {
        expectRefused(args, 2, "usage: troxd", base_);
    }
    expectRefused({"--bogus"}, 2, "troxd: unknown argument '--bogus'", base_);
}

TEST_F(TroxdTest, BadConfigurationExitsOneBeforeTheDirectoryIsMade) {
    const std::string host = base_ + "/host";
    const std::string bad = "troxd: bad configuration: ";
    const std::string big = file("big.json", std::string(2048, ' ') + "{}");
    const std::string outside =
            file("outside.json", R"({"resources": [{"id": 1, "kind": "boost", "default": 9,
                                                    "min": 0, "max": 5}]})");
    const std::string conf = dir("conf.d");
    const std::pair<std::vector<std::string>, std::string> cases[] = {
            {{"--config", base_ + "/absent.json"}, bad + "cannot read " + base_ + "/absent.json"},
            {{"--config", file("cut.json", R"({"resources": [ {"id": 1,)")}, "not valid JSON"},
            {{"--config", file("empty.json", "")}, "not valid JSON"},
            {{"--config", outside}, bad + outside + ": resources[0]: default is outside"},
            {{"--config", conf}, bad + conf},
            {{"--config", "/dev/zero"}, bad + "/dev/zero: larger than the limit of 1048576 bytes"},
            {{"--config", big, "--config-limit", "1024"},
             bad + big + ": larger than the limit of 1024 bytes"},
            // Under the limit the same file is taken as far as its size goes.
            {{"--config", big, "--config-limit", "4096"}, "resources: missing section"}};
    for (const auto& [args, message] : cases) {
        std::vector<std::string> all = {"--dir", host};
        all.insert(all.end(), args.begin(), args.end());
        expectRefused(all, 1, message, host);
    }
}

TEST_F(TroxdTest, BadHostDirectoryIsRefusedAndLeftAsItWas) {
    for (const std::string mode : {"750", "705", "777", "701"}) {
        const std::string open = dir("mode" + mode, std::stoi(mode, nullptr, 8));
        expectRefused({"--dir", open}, 1,
                      "troxd: refusing " + open + ": mode " + mode +
                              " gives access to group or "
                              "others (chmod 700)",
                      open);
    }
    const std::string env = dir("env", 0755);
    expectRefused({}, 1, "refusing " + env + ": mode 755", env,
                  Troxd::Options{{"BINDER_HOST_DIR=" + env}});
    std::string theirs = "/";
    if (geteuid() == 0) {
        theirs = dir("theirs");
        ASSERT_EQ(chown(theirs.c_str(), 65534, 65534), 0);
    }
    expectRefused({"--dir", theirs}, 1, "refusing " + theirs + ": it belongs to another user",
                  theirs);
    const std::string manifest = dir("manifest");
    dir("manifest/manifest");
    expectRefused({"--dir", manifest}, 1, "cannot replace " + manifest + "/manifest", manifest);
    dir("socket");
    const std::string socket = dir("socket/" + std::string(kSocketName));
    expectRefused({"--dir", base_ + "/socket"}, 1,
                  "troxd: cannot publish vendor.vexal.hardware.trox.ITrox/default", socket);
    const std::string link = base_ + "/link";
    ASSERT_EQ(symlink(dir("real").c_str(), link.c_str()), 0);
    expectRefused({"--dir", link}, 1, "refusing " + link + ": it is a symbolic link", link);
    expectRefused({"--dir", link + "/"}, 1, "it is a symbolic link", link);
    const std::string plain = file("file", "x");
    expectRefused({"--dir", plain}, 1, plain + " is not a directory", plain);
    expectRefused({"--dir", base_ + "/no/such/host"}, 1, "cannot create " + base_ + "/no/such/host",
                  base_ + "/no");
    const std::string tooLong = base_ + "/" + std::string(90, 'd');
    expectRefused({"--dir", tooLong}, 1, "the socket path would be", tooLong);
}

class TroxdBadDirTest : public TroxdTest {};

TEST_F(TroxdBadDirTest, Unwritable) {
    const std::string readonly = dir("readonly", 0500);
    // Root writes anywhere unless it gives that up, so as root troxd runs without
    // CAP_DAC_OVERRIDE. (Running it as another user instead fails when that user cannot reach the
    // build tree, as in a checkout under /root.)
    Troxd::Options options;
    if (geteuid() == 0) options.dropCapabilities = {CAP_DAC_OVERRIDE};
    expectRefused({"--dir", readonly}, 1, "cannot write " + readonly + "/manifest.tmp.", readonly,
                  options);
}

TEST_F(TroxdTest, ServesWithTheDefaultConfigurationAndStopsCleanlyOnASignal) {
    for (int signal : {SIGTERM, SIGINT}) {
        const std::string host = base_ + "/host" + std::to_string(signal);
        Troxd troxd({"--dir", host});
        ASSERT_TRUE(
                troxd.waitForOutput("serving vendor.vexal.hardware.trox.ITrox/default", kTimeout))
                << troxd.output();
        EXPECT_EQ(slurp(host + "/manifest"), "vendor.vexal.hardware.trox.ITrox/default\n");
        struct stat st {};
        ASSERT_EQ(stat(host.c_str(), &st), 0);
        EXPECT_EQ(st.st_mode & 0777, 0700u);
        EXPECT_EQ(typeOf(host + "/" + kSocketName), S_IFSOCK);
        const std::regex logcat(
                R"(\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} +\d+ +\d+ I troxd: service ready: 22 resources)");
        EXPECT_TRUE(std::regex_search(troxd.output(), logcat)) << troxd.output();
        ASSERT_EQ(kill(troxd.pid(), signal), 0);
        EXPECT_EQ(troxd.waitForExit(kTimeout), 0);
        EXPECT_NE(troxd.output().find(std::string("I troxd: stopping on ") +
                                      (signal == SIGTERM ? "SIGTERM" : "SIGINT")),
                  std::string::npos)
                << troxd.output();
        EXPECT_EQ(typeOf(host + "/" + kSocketName), 0u) << "its socket goes with it";
    }
}

TEST_F(TroxdTest, ASecondDaemonOnTheDirectoryIsRefusedAndTheFirstKeepsServing) {
    struct Case {
        bool lockFileRemoved;  // then the live socket is what stops the second one
        std::string message;   // followed by the first one's pid
    };
    for (const Case& c :
         {Case{false, "troxd: another troxd (pid "}, Case{true, "is in use by pid "}}) {
        SCOPED_TRACE(c.message);
        const std::string host = dir("host" + std::to_string(c.lockFileRemoved));
        std::ofstream(host + "/manifest") << "# services\nother.Service/default";
        Troxd first({"--dir", host});
        ASSERT_TRUE(first.waitForOutput("serving", kTimeout)) << first.output();
        if (c.lockFileRemoved) {
            ASSERT_EQ(unlink((host + "/troxd.pid").c_str()), 0);
        }
        // The refused one leaves the first one's socket.
        expectRefused({"--dir", host}, 1, c.message + std::to_string(first.pid()),
                      host + "/" + kSocketName);
        EXPECT_TRUE(first.running());
        ASSERT_EQ(kill(first.pid(), SIGTERM), 0);
        EXPECT_EQ(first.waitForExit(kTimeout), 0) << first.output();
        // Once it is gone the directory is free again, and its manifest names the service once.
        Troxd third({"--dir", host});
        EXPECT_TRUE(third.waitForOutput("serving", kTimeout)) << third.output();
        EXPECT_EQ(slurp(host + "/manifest"),
                  "# services\nother.Service/default\nvendor.vexal.hardware.trox.ITrox/default\n");
    }
}

}  // namespace
