// troxd given bad configuration, arguments or host directories: a message, exit status 1 or 2,
// no crash, and nothing written (no directory, manifest or socket).
#include <dirent.h>
#include "../kit/SpawnProgram.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "../../sim/troxd/Daemon.h"

extern char** environ;

namespace {

constexpr uid_t kNobody = 65534;
constexpr auto kTimeout = std::chrono::seconds(20);

// troxd sits next to this test in the build tree: tests/sim/ and sim/.
std::string troxdPath() {
    char self[4096];
    const ssize_t n = readlink("/proc/self/exe", self, sizeof(self) - 1);
    if (n <= 0) return "troxd";
    std::string path(self, static_cast<size_t>(n));
    path.resize(path.rfind('/'));
    return path + "/../../sim/troxd";
}

std::string tempDir() {
    char tmpl[] = "/tmp/troxd-bad-XXXXXX";
    const char* d = mkdtemp(tmpl);
    return d ? d : "";
}

bool exists(const std::string& path) {
    struct stat st {};
    return lstat(path.c_str(), &st) == 0;
}

std::vector<std::string> entries(const std::string& dir) {
    std::vector<std::string> names;
    if (DIR* d = opendir(dir.c_str())) {
        while (dirent* e = readdir(d)) {
            const std::string name = e->d_name;
            if (name != "." && name != "..") names.push_back(name);
        }
        closedir(d);
    }
    return names;
}

struct Result {
    int status = -1;  // exit status, 128+signal, or -1 when it had to be killed
    std::string err;
};

// Runs troxd to its end with standard error captured. Root's power to write where permissions
// forbid can be taken away (root only).
enum class Override { kKeep, kDrop };

Result runTroxd(std::vector<std::string> args, Override dac = Override::kKeep,
                const std::vector<std::string>& env = {}) {
    args.insert(args.begin(), troxdPath());
    args = vexal::testing::withEmulator(std::move(args));
    std::vector<char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    std::vector<std::string> envStrings;
    for (char** e = environ; *e != nullptr; ++e) {
        if (std::string(*e).rfind("BINDER_HOST_DIR=", 0) != 0) envStrings.push_back(*e);
    }
    envStrings.insert(envStrings.end(), env.begin(), env.end());
    std::vector<char*> envp;
    for (auto& e : envStrings) envp.push_back(e.data());
    envp.push_back(nullptr);

    Result result;
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) return result;
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(fds[1], STDERR_FILENO);
        // Out of the bounding set, it is not given back when root executes troxd.
        if (dac == Override::kDrop && prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0) != 0) {
            _exit(126);
        }
        execvpe(argv[0], argv.data(), envp.data());  // the emulator, when there is one, is on PATH
        _exit(127);
    }
    close(fds[1]);
    const auto end = std::chrono::steady_clock::now() + kTimeout;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                end - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            // Still running: it accepted what it should have refused.
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
            close(fds[0]);
            return result;
        }
        pollfd p{fds[0], POLLIN, 0};
        if (poll(&p, 1, static_cast<int>(left.count())) <= 0) continue;
        char buf[4096];
        const ssize_t n = read(fds[0], buf, sizeof(buf));
        if (n <= 0) break;
        result.err.append(buf, static_cast<size_t>(n));
    }
    close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

class TroxdBadConfigTest : public ::testing::Test {
  protected:
    void SetUp() override {
        base_ = tempDir();
        ASSERT_FALSE(base_.empty());
        dir_ = base_ + "/host";
    }
    void TearDown() override {
        if (std::system(("rm -rf '" + base_ + "'").c_str()) != 0) ADD_FAILURE() << base_;
    }

    std::string writeConfig(const std::string& text) {
        const std::string path = base_ + "/troxd.json";
        std::ofstream(path) << text;
        return path;
    }
    // Exit 1 with the message, and the host directory never made.
    void expectRefused(const std::string& config, const std::string& message) {
        const Result r = runTroxd({"--dir", dir_, "--config", config});
        EXPECT_EQ(r.status, 1) << r.err;
        EXPECT_TRUE(contains(r.err, "troxd: bad configuration: ")) << r.err;
        EXPECT_TRUE(contains(r.err, message)) << r.err;
        EXPECT_FALSE(exists(dir_)) << "nothing is created for a configuration that cannot run";
    }

    std::string base_;
    std::string dir_;
};

TEST_F(TroxdBadConfigTest, MissingFile) {
    expectRefused(base_ + "/absent.json", "cannot read " + base_ + "/absent.json");
}

TEST_F(TroxdBadConfigTest, InvalidJson) {
    expectRefused(writeConfig(R"({"resources": [ {"id": 1,)"), "not valid JSON");
    expectRefused(writeConfig(""), "not valid JSON");
    expectRefused(writeConfig("\xff\xfe{}"), "not valid JSON");
}

TEST_F(TroxdBadConfigTest, OverTheSizeLimitIsRefusedBeforeItIsRead) {
    const std::string big = base_ + "/big.json";
    std::ofstream(big) << std::string(2048, ' ') << "{}";
    struct Case {
        std::vector<std::string> args;
        std::string message;
    };
    for (const Case& c :
         {Case{{"--config", "/dev/zero"}, "/dev/zero: larger than the limit of 1048576 bytes"},
          Case{{"--config", big, "--config-limit", "1024"},
               big + ": larger than the limit of 1024 bytes"}}) {
        std::vector<std::string> args = {"--dir", dir_};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const auto start = std::chrono::steady_clock::now();
        const Result r = runTroxd(args);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
        EXPECT_EQ(r.status, 1) << r.err;
        EXPECT_TRUE(contains(r.err, "troxd: bad configuration: " + c.message)) << r.err;
        EXPECT_FALSE(exists(dir_));
    }
    // Under the limit the same file is taken as far as its size goes.
    const Result r = runTroxd({"--dir", dir_, "--config", big, "--config-limit", "4096"});
    EXPECT_TRUE(contains(r.err, "resources: missing section")) << r.err;
}

TEST_F(TroxdBadConfigTest, DirectoryInsteadOfFile) {
    const std::string config = base_ + "/conf.d";
    ASSERT_EQ(mkdir(config.c_str(), 0700), 0);
    const Result r = runTroxd({"--dir", dir_, "--config", config});
    EXPECT_EQ(r.status, 1) << r.err;
    EXPECT_TRUE(contains(r.err, "bad configuration: " + config)) << r.err;
    EXPECT_FALSE(exists(dir_));
}

TEST_F(TroxdBadConfigTest, WrongTypes) {
    const std::string resource = R"({"id": 1, "kind": "boost", "min": 0, "max": 5, "default": 0})";
    expectRefused(writeConfig("[1, 2]"), "the configuration must be a JSON object");
    expectRefused(writeConfig(R"({"resources": "cpu"})"), "resources: expected an array");
    expectRefused(writeConfig(R"({"resources": [7]})"), "resources[0]: expected an object");
    expectRefused(writeConfig(R"({"resources": [{"id": true, "kind": "boost", "min": 0,
                                                 "max": 5, "default": 0}]})"),
                  "resources[0].id: expected an integer");
    expectRefused(writeConfig(R"({"resources": [{"id": 1, "kind": 3.5, "min": 0, "max": 5,
                                                 "default": 0}]})"),
                  "resources[0].kind: expected a text");
    expectRefused(writeConfig(R"({"resources": [{"id": 1, "kind": "boost", "min": "low",
                                                 "max": 5, "default": 0}]})"),
                  "'low' is not an integer");
    expectRefused(writeConfig(R"({"resources": [{"id": 99999999999, "kind": "boost", "min": 0,
                                                 "max": 5, "default": 0}]})"),
                  "id out of 32-bit range");
    expectRefused(
            writeConfig(R"({"resources": [)" + resource + R"(], "history": {"enabled": "yes"}})"),
            "history.enabled: expected true or false");
    expectRefused(writeConfig(R"({"resources": [)" + resource + R"(], "properties": {"k": [1]}})"),
                  "properties.k: expected a text");
    expectRefused(writeConfig(R"({"resources": [)" + resource + R"(], "actions": [{"id": 1,
                                  "settings": {"resource": 1}}]})"),
                  "actions[0].settings: expected an array of settings");
    expectRefused(writeConfig(R"({"resources": [)" + resource + R"(], "features": [1]})"),
                  "features: expected an object");
}

class TroxdBadDirTest : public ::testing::Test {
  protected:
    void SetUp() override {
        base_ = tempDir();
        ASSERT_FALSE(base_.empty());
    }
    void TearDown() override {
        if (std::system(("rm -rf '" + base_ + "'").c_str()) != 0) ADD_FAILURE() << base_;
    }

    // A host directory troxd must refuse: exit 1, the message, and it stays as it was.
    void expectRefused(const std::string& dir, const std::string& message,
                       Override dac = Override::kKeep) {
        const std::vector<std::string> before = entries(dir);
        const Result r = runTroxd({"--dir", dir}, dac);
        EXPECT_EQ(r.status, 1) << r.err;
        EXPECT_TRUE(contains(r.err, "troxd: ")) << r.err;
        EXPECT_TRUE(contains(r.err, message)) << r.err;
        EXPECT_FALSE(contains(r.err, "serving")) << r.err;
        EXPECT_EQ(entries(dir), before) << "no manifest, socket or temporary file is left";
    }

    std::string base_;
};

TEST_F(TroxdBadDirTest, OpenToGroupOrOthers) {
    for (mode_t mode : {0750, 0705, 0777, 0701}) {
        const std::string dir = base_ + "/mode" + std::to_string(mode);
        ASSERT_EQ(mkdir(dir.c_str(), 0700), 0);
        ASSERT_EQ(chmod(dir.c_str(), mode), 0);
        expectRefused(dir, "gives access to group or others");
    }
}

TEST_F(TroxdBadDirTest, OpenDirectoryFromTheEnvironmentToo) {
    const std::string dir = base_ + "/env";
    ASSERT_EQ(mkdir(dir.c_str(), 0755), 0);
    ASSERT_EQ(chmod(dir.c_str(), 0755), 0);
    const Result r = runTroxd({}, Override::kKeep, {"BINDER_HOST_DIR=" + dir});
    EXPECT_EQ(r.status, 1) << r.err;
    EXPECT_TRUE(contains(r.err, "refusing " + dir + ": mode 755")) << r.err;
    EXPECT_TRUE(entries(dir).empty());
}

TEST_F(TroxdBadDirTest, OwnedBySomeoneElse) {
    if (geteuid() != 0) {
        expectRefused("/", "belongs to another user");
        return;
    }
    const std::string dir = base_ + "/theirs";
    ASSERT_EQ(mkdir(dir.c_str(), 0700), 0);
    ASSERT_EQ(chown(dir.c_str(), kNobody, kNobody), 0);
    expectRefused(dir, "refusing " + dir + ": it belongs to another user");
}

TEST_F(TroxdBadDirTest, Unwritable) {
    const std::string dir = base_ + "/readonly";
    ASSERT_EQ(mkdir(dir.c_str(), 0500), 0);
    // Root writes anywhere unless it gives that up. (Running troxd as another user instead fails
    // when that user cannot reach the build tree, as in a checkout under /root.)
    const Override dac = geteuid() == 0 ? Override::kDrop : Override::kKeep;
    expectRefused(dir, "cannot write " + dir + "/manifest.tmp.", dac);
}

TEST_F(TroxdBadDirTest, ManifestThatCannotBeReplaced) {
    const std::string dir = base_ + "/host";
    ASSERT_EQ(mkdir(dir.c_str(), 0700), 0);
    ASSERT_EQ(mkdir((dir + "/manifest").c_str(), 0700), 0);
    expectRefused(dir, "cannot replace " + dir + "/manifest");
}

TEST_F(TroxdBadDirTest, SymbolicLinkToADirectory) {
    const std::string target = base_ + "/real";
    ASSERT_EQ(mkdir(target.c_str(), 0700), 0);
    const std::string link = base_ + "/link";
    ASSERT_EQ(symlink(target.c_str(), link.c_str()), 0);
    expectRefused(link, "refusing " + link + ": it is a symbolic link");
    expectRefused(link + "/", "it is a symbolic link");
}

TEST_F(TroxdBadDirTest, NotADirectory) {
    const std::string file = base_ + "/file";
    std::ofstream(file) << "x";
    const Result r = runTroxd({"--dir", file});
    EXPECT_EQ(r.status, 1) << r.err;
    EXPECT_TRUE(contains(r.err, file + " is not a directory")) << r.err;
}

TEST_F(TroxdBadDirTest, MissingParent) {
    const std::string dir = base_ + "/no/such/host";
    const Result r = runTroxd({"--dir", dir});
    EXPECT_EQ(r.status, 1) << r.err;
    EXPECT_TRUE(contains(r.err, "cannot create " + dir)) << r.err;
    EXPECT_FALSE(exists(base_ + "/no"));
}

TEST_F(TroxdBadDirTest, PathTooLongForASocket) {
    const std::string dir = base_ + "/" + std::string(90, 'd');
    const Result r = runTroxd({"--dir", dir});
    EXPECT_EQ(r.status, 1) << r.err;
    EXPECT_TRUE(contains(r.err, "the socket path would be")) << r.err;
    EXPECT_FALSE(exists(dir)) << "checked before anything is created";
}

TEST(TroxdBadArgumentsTest, EmptyValuesAndStrayWords) {
    for (const std::vector<std::string>& args : {std::vector<std::string>{"--dir="},
                                                 {"--config="},
                                                 {"--config", ""},
                                                 {"serve"},
                                                 {"--dir", "/tmp", "--verbose=1"},
                                                 {"--config-limit", "10"},
                                                 {"--config-limit", "1k"},
                                                 {"--config-limit=-5"},
                                                 {"-"}}) {
        const Result r = runTroxd(args);
        EXPECT_EQ(r.status, 2) << args[0] << ": " << r.err;
        EXPECT_TRUE(contains(r.err, "usage: troxd")) << r.err;
    }
}

TEST(DaemonDirTest, PrepareDirRefusesGroupOrOtherAccess) {
    const std::string base = tempDir();
    ASSERT_EQ(chmod(base.c_str(), 0770), 0);
    EXPECT_TRUE(contains(troxd::prepareDir(base), "mode 770 gives access to group or others"));
    ASSERT_EQ(chmod(base.c_str(), 0700), 0);
    EXPECT_EQ(troxd::prepareDir(base), "");
    rmdir(base.c_str());
}

TEST(DaemonDirTest, SocketPathLimit) {
    const std::string instance = "vendor.vexal.hardware.trox.ITrox/default";
    // After the directory: "/", 42 characters once the slash is escaped, ".sock"; 107 fit.
    EXPECT_EQ(troxd::checkSocketPath(std::string(59, 'd'), instance), "");
    EXPECT_NE(troxd::checkSocketPath(std::string(60, 'd'), instance), "");
}

}  // namespace
