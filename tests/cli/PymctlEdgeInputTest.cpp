// pymctl at the edges BadInputTest does not reach: configuration files with the wrong shape,
// host directories it must refuse, and bytes that are not text. Never a crash; a non-zero exit
// and one line on standard error for anything refused.
#include "../kit/SpawnProgram.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr uid_t kNobody = 65534;

// pymctl sits in cli/ of the same build tree as this test's tests/cli/.
std::string pymctlPath() {
    char self[4096];
    const ssize_t n = readlink("/proc/self/exe", self, sizeof(self) - 1);
    if (n <= 0) return "pymctl";
    std::string path(self, static_cast<size_t>(n));
    path.resize(path.rfind('/'));
    return path + "/../../cli/pymctl";
}

struct Result {
    int exitCode = -1;  // -1: ended by a signal or killed
    std::string out;
    std::string err;
    size_t errLines() const {
        size_t lines = 0;
        for (char c : err) lines += c == '\n';
        return lines;
    }
};

Result run(std::vector<std::string> args) {
    args.insert(args.begin(), pymctlPath());
    args = vexal::testing::withEmulator(std::move(args));
    std::vector<char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    int out[2];
    int err[2];
    Result r;
    if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) return r;
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(out[1], STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    close(out[1]);
    close(err[1]);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    bool outOpen = true;
    bool errOpen = true;
    while ((outOpen || errOpen) && std::chrono::steady_clock::now() < end) {
        pollfd p[2] = {{outOpen ? out[0] : -1, POLLIN, 0}, {errOpen ? err[0] : -1, POLLIN, 0}};
        if (poll(p, 2, 100) <= 0) continue;
        char buf[4096];
        for (int i = 0; i < 2; ++i) {
            if (p[i].revents == 0) continue;
            const ssize_t n = read(p[i].fd, buf, sizeof(buf));
            if (n <= 0) {
                (i == 0 ? outOpen : errOpen) = false;
            } else {
                (i == 0 ? r.out : r.err).append(buf, static_cast<size_t>(n));
            }
        }
    }
    if (outOpen || errOpen) kill(pid, SIGKILL);
    close(out[0]);
    close(err[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (WIFEXITED(status)) r.exitCode = WEXITSTATUS(status);
    return r;
}

class PymctlEdgeInputTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char tmpl[] = "/tmp/pymctl-edge-XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        base_ = tmpl;
    }
    void TearDown() override {
        if (std::system(("rm -rf '" + base_ + "'").c_str()) != 0) ADD_FAILURE() << base_;
    }
    std::string file(const std::string& name, const std::string& text) {
        const std::string path = base_ + "/" + name;
        std::ofstream(path) << text;
        return path;
    }
    void expectUsageError(const std::vector<std::string>& args, const std::string& message) {
        const Result r = run(args);
        EXPECT_EQ(r.exitCode, 2) << r.err;
        EXPECT_EQ(r.errLines(), 1u) << r.err;
        EXPECT_NE(r.err.find(message), std::string::npos) << r.err;
        EXPECT_EQ(r.out, "");
    }

    std::string base_;
};

TEST_F(PymctlEdgeInputTest, ConfigurationWithTheWrongShape) {
    expectUsageError({"--config", file("types.json", R"({"resources": "cpu"})"), "init"},
                     "resources: expected an array");
    expectUsageError({"--config", file("ids.json", R"({"resources": [{"id": [1]}]})"), "init"},
                     "resources[0].id: expected an integer");
    expectUsageError({"--config", file("broken.json", R"({"resources": [)"), "init"},
                     "not valid JSON");
    expectUsageError({"--config", file("empty.json", ""), "init"}, "not valid JSON");
    expectUsageError({"--config", base_, "init"}, "cannot use configuration " + base_);
}

TEST_F(PymctlEdgeInputTest, HostDirectoryOpenToGroupOrOthersIsRefused) {
    for (mode_t mode : {0750, 0707, 0711}) {
        const std::string dir = base_ + "/open" + std::to_string(mode);
        ASSERT_EQ(mkdir(dir.c_str(), 0700), 0);
        ASSERT_EQ(chmod(dir.c_str(), mode), 0);
        expectUsageError({"--dir", dir, "init"}, "is refused");
    }
}

TEST_F(PymctlEdgeInputTest, HostDirectoryOfAnotherUserIsRefused) {
    std::string dir = "/";
    if (geteuid() == 0) {
        dir = base_ + "/theirs";
        ASSERT_EQ(mkdir(dir.c_str(), 0700), 0);
        ASSERT_EQ(chown(dir.c_str(), kNobody, kNobody), 0);
    }
    expectUsageError({"--dir", dir, "init"}, "is refused");
}

TEST_F(PymctlEdgeInputTest, HostDirectoryTooLongForASocketFailsCleanly) {
    const std::string dir = base_ + "/" + std::string(90, 'd');
    ASSERT_EQ(mkdir(dir.c_str(), 0700), 0);
    const Result r = run({"--dir", dir, "init"});
    EXPECT_GT(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.errLines(), 1u) << r.err;
}

TEST_F(PymctlEdgeInputTest, BytesThatAreNotTextNeverCrashIt) {
    const std::string bad = "\xff\xfe\xc3";
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"acquire", "1", bad + "=1"},
          {"acquire", "1", "0x10=" + bad},
          {"prop", "get", bad},
          {"prop", "set", bad, bad},
          {"actions", bad},
          {bad},
          {"--" + bad},
          {"acquire", "--action", bad},
          {"acquire", "1", "0x10=" + std::string(100000, 'v')}}) {
        const Result r = run(args);
        EXPECT_GE(r.exitCode, 0) << "ended by a signal: " << r.err;
        if (r.exitCode != 0) {
            EXPECT_EQ(r.errLines(), 1u) << r.err;
        }
    }
}

}  // namespace
