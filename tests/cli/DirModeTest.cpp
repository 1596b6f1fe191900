// pymctl --dir against a troxd started by the test: calls and callbacks cross processes.
#include "../kit/SpawnProgram.h"

#include <fcntl.h>
#include <poll.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "PymctlRunner.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

using pymctl_test::Outcome;
using pymctl_test::runPymctl;
using ::testing::HasSubstr;

namespace {

// A program of the build running alongside the test, its standard output and error on one pipe
// read as it goes.
class Running {
  public:
    explicit Running(std::vector<std::string> argv) {
        int fds[2];
        if (pipe2(fds, O_CLOEXEC) != 0) return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, fds[1], STDERR_FILENO);
        if (vexal::testing::spawnProgram(&pid_, std::move(argv), &actions, environ) != 0) {
            pid_ = -1;
        }
        posix_spawn_file_actions_destroy(&actions);
        close(fds[1]);
        fd_ = fds[0];
    }
    ~Running() {
        if (pid_ > 0 && !reaped_) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        if (fd_ >= 0) close(fd_);
    }

    bool waitForOutput(const std::string& text, std::chrono::milliseconds timeout) {
        const auto end = std::chrono::steady_clock::now() + timeout;
        while (output_.find(text) == std::string::npos) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                    end - std::chrono::steady_clock::now());
            if (left.count() <= 0 || fd_ < 0) return false;
            pollfd p{fd_, POLLIN, 0};
            if (poll(&p, 1, static_cast<int>(left.count())) <= 0) continue;
            char buf[4096];
            const ssize_t n = read(fd_, buf, sizeof(buf));
            if (n <= 0) {
                close(fd_);
                fd_ = -1;
                return output_.find(text) != std::string::npos;
            }
            output_.append(buf, static_cast<size_t>(n));
        }
        return true;
    }

    // Exit status once it has ended and its output is read to the end; -1 after the timeout.
    int waitForExit(std::chrono::milliseconds timeout) {
        const auto end = std::chrono::steady_clock::now() + timeout;
        waitForOutput(std::string(1, '\0'), timeout);  // reads until the pipe closes
        int status = 0;
        while (waitpid(pid_, &status, WNOHANG) != pid_) {
            if (std::chrono::steady_clock::now() >= end) return -1;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        reaped_ = true;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    pid_t pid() const { return pid_; }
    const std::string& output() const { return output_; }

  private:
    pid_t pid_ = -1;
    int fd_ = -1;
    bool reaped_ = false;
    std::string output_;
};

constexpr auto kWait = std::chrono::seconds(10);

class PymctlDirMode : public ::testing::Test {
  protected:
    void SetUp() override {
        dir_ = ::testing::TempDir() + "/pymctl_troxd_XXXXXX";
        ASSERT_NE(mkdtemp(dir_.data()), nullptr);
        startDaemon();
    }

    void TearDown() override {
        stopDaemon();
        std::string cmd = "rm -rf '" + dir_ + "'";
        EXPECT_EQ(std::system(cmd.c_str()), 0);
    }

    void startDaemon() {
        // The daemon's log is not what these tests look at.
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        const int spawned =
                vexal::testing::spawnProgram(&pid_, {TROXD_PATH, "--dir", dir_}, &actions, environ);
        posix_spawn_file_actions_destroy(&actions);
        ASSERT_EQ(spawned, 0);
        const auto deadline = std::chrono::steady_clock::now() + kWait;
        while (std::chrono::steady_clock::now() < deadline) {
            if (run({"init"}).exitCode == 0) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        FAIL() << "troxd did not come up in " << dir_;
    }

    void stopDaemon() {
        if (pid_ <= 0) return;
        kill(pid_, SIGTERM);
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
    }

    std::vector<std::string> pymctl(std::vector<std::string> args) {
        args.insert(args.begin(), {PYMCTL_PATH, "--dir", dir_});
        return args;
    }

    Outcome run(std::vector<std::string> args) {
        args.insert(args.begin(), {"--dir", dir_});
        return runPymctl(args);
    }

    std::string dir_;
    pid_t pid_ = -1;
};

TEST_F(PymctlDirMode, StateSurvivesBetweenInvocations) {
    Outcome a = run({"acquire", "--action", "ACTION_LAUNCH", "--duration", "10000"});
    ASSERT_EQ(a.exitCode, 0) << a.err;
    Outcome s = run({"state", "0x01010020"});
    EXPECT_EQ(s.out, "0x01010020 = 1804800\n");
    EXPECT_EQ(run({"release", "1"}).exitCode, 0);
    EXPECT_EQ(run({"state", "0x01010020"}).out, "0x01010020 = 710400\n");
}

TEST_F(PymctlDirMode, ListenSeesAChangeMadeByAnotherProcess) {
    Running listener(pymctl({"listen", "0x01010020", "--timeout", "1500"}));
    ASSERT_TRUE(listener.waitForOutput("listening on", kWait)) << listener.output();
    ASSERT_EQ(run({"acquire", "--action", "ACTION_SWIPE_V", "--duration", "5000"}).exitCode, 0);
    EXPECT_EQ(listener.waitForExit(kWait), 0) << listener.output();
    EXPECT_THAT(listener.output(), HasSubstr("change: 0x01010020 = 1209600"));
}

TEST_F(PymctlDirMode, RequestsUntilReleaseEndWithTheirClient) {
    struct Case {
        std::vector<std::string> duration;
        std::string after;  // the value once the acquiring pymctl has exited
    };
    for (const Case& c : {Case{{}, "0x01010020 = 710400\n"},
                          Case{{"--duration", "20000"}, "0x01010020 = 1209600\n"}}) {
        std::vector<std::string> args = {"acquire", "-2", "0x01010020=1209600"};
        args.insert(args.end(), c.duration.begin(), c.duration.end());
        Outcome a = run(args);
        ASSERT_EQ(a.exitCode, 0) << a.err;
        EXPECT_EQ(run({"state", "0x01010020"}).out, c.after) << a.out;
    }
}

TEST_F(PymctlDirMode, ASecondDaemonIsRefusedAndTheFirstStillAnswers) {
    Running second({TROXD_PATH, "--dir", dir_});
    EXPECT_EQ(second.waitForExit(kWait), 1) << second.output();
    EXPECT_THAT(second.output(), HasSubstr("already serves"));
    Outcome s = run({"state", "0x01010020"});
    EXPECT_EQ(s.exitCode, 0) << s.err;
    EXPECT_EQ(s.out, "0x01010020 = 710400\n");
}

TEST_F(PymctlDirMode, ListenSaysWhenTheServiceDiesOrFollowsItBack) {
    {
        Running listener(pymctl({"listen", "0x01010020", "--timeout", "20000"}));
        ASSERT_TRUE(listener.waitForOutput("listening on", kWait)) << listener.output();
        stopDaemon();
        EXPECT_EQ(listener.waitForExit(kWait), 1) << listener.output();
        EXPECT_THAT(listener.output(), HasSubstr("pymctl listen: the service died"));
    }
    startDaemon();
    Running listener(pymctl({"listen", "0x01010020", "--timeout", "8000", "--follow"}));
    ASSERT_TRUE(listener.waitForOutput("listening on", kWait)) << listener.output();
    stopDaemon();
    ASSERT_TRUE(listener.waitForOutput("the service died; waiting for it to come back", kWait))
            << listener.output();
    startDaemon();
    ASSERT_TRUE(listener.waitForOutput("the service is back; listening again", kWait))
            << listener.output();
    ASSERT_EQ(run({"acquire", "--action", "ACTION_SWIPE_V", "--duration", "5000"}).exitCode, 0);
    EXPECT_TRUE(listener.waitForOutput("change: 0x01010020 = 1209600", kWait)) << listener.output();
    EXPECT_EQ(listener.waitForExit(kWait), 0) << listener.output();
}

TEST_F(PymctlDirMode, DumpGoesToTheDaemonsLog) {
    Outcome d = run({"dump", "run-map"});
    EXPECT_EQ(d.exitCode, 0) << d.err;
    EXPECT_EQ(d.out, "dump run-map written to the service's log\n");
}

}  // namespace
