// pymctl --dir against a troxd started by the test: calls and callbacks cross processes.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <memory>

#include "../kit/SpawnProgram.h"
#include "ChildProcess.h"
#include "PymctlRunner.h"

using pymctl_test::Outcome;
using pymctl_test::runPymctl;
using ::testing::HasSubstr;
using vexal::testing::ChildProcess;

namespace {

constexpr auto kWait = std::chrono::seconds(10);

// pymctl running alongside the test, its standard output and error on one pipe read as it goes.
class Listener {
  public:
    explicit Listener(std::vector<std::string> argv) {
        int fds[2];
        if (pipe2(fds, O_CLOEXEC) != 0) return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, fds[1], STDERR_FILENO);
        argv.insert(argv.begin(), PYMCTL_PATH);
        if (vexal::testing::spawnProgram(&pid_, std::move(argv), &actions, environ) != 0) pid_ = -1;
        posix_spawn_file_actions_destroy(&actions);
        close(fds[1]);
        fd_ = fds[0];
    }
    ~Listener() {
        if (pid_ > 0) kill(pid_, SIGKILL);
        waitForExit();
        close(fd_);
    }
    // False once the timeout passed or the pipe closed without text.
    bool waitForOutput(const std::string& text) {
        const auto end = std::chrono::steady_clock::now() + kWait;
        while (output_.find(text) == std::string::npos) {
            pollfd p{fd_, POLLIN, 0};
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                    end - std::chrono::steady_clock::now());
            char buf[4096];
            const ssize_t n = left.count() > 0 && poll(&p, 1, static_cast<int>(left.count())) > 0
                                      ? read(fd_, buf, sizeof(buf))
                                      : 0;
            if (n <= 0) return false;
            output_.append(buf, static_cast<size_t>(n));
        }
        return true;
    }
    // The exit status once its output is read to the end.
    int waitForExit() {
        waitForOutput(std::string(1, '\0'));
        int status = 0;
        if (pid_ > 0 && waitpid(pid_, &status, 0) == pid_) pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    const std::string& output() const { return output_; }

  private:
    pid_t pid_ = -1;
    int fd_ = -1;
    std::string output_;
};

class PymctlDirMode : public ::testing::Test {
  protected:
    void SetUp() override {
        dir_ = ::testing::TempDir() + "/pymctl_troxd_XXXXXX";
        ASSERT_NE(mkdtemp(dir_.data()), nullptr);
        startDaemon();
    }
    void TearDown() override {
        daemon_.reset();
        std::filesystem::remove_all(dir_);
    }
    void startDaemon() {
        daemon_ =
                std::make_unique<ChildProcess>(std::vector<std::string>{TROXD_PATH, "--dir", dir_});
        ASSERT_TRUE(daemon_->waitForOutput("serving")) << daemon_->output();
    }
    void stopDaemon() {
        kill(daemon_->pid(), SIGTERM);
        EXPECT_EQ(daemon_->waitForExit(), 0);
    }
    Outcome run(std::vector<std::string> args) {
        args.insert(args.begin(), {"--dir", dir_});
        return runPymctl(args);
    }
    std::unique_ptr<Listener> listen(std::vector<std::string> args) {
        args.insert(args.begin(), {"--dir", dir_, "listen", "0x01010020", "--timeout"});
        auto listener = std::make_unique<Listener>(args);
        EXPECT_TRUE(listener->waitForOutput("listening on")) << listener->output();
        return listener;
    }

    std::string dir_;
    std::unique_ptr<ChildProcess> daemon_;
};

TEST_F(PymctlDirMode, StateLivesInTheDaemonAndDumpGoesToItsLog) {
    Outcome a = run({"acquire", "--action", "ACTION_LAUNCH", "--duration", "10000"});
    ASSERT_EQ(a.exitCode, 0) << a.err;
    EXPECT_EQ(run({"state", "0x01010020"}).out, "0x01010020 = 1804800\n");
    EXPECT_EQ(run({"release", "1"}).exitCode, 0);
    EXPECT_EQ(run({"state", "0x01010020"}).out, "0x01010020 = 710400\n");
    // A request until release ends with its client.
    ASSERT_EQ(run({"acquire", "-2", "0x01010020=1209600"}).exitCode, 0);
    EXPECT_EQ(run({"state", "0x01010020"}).out, "0x01010020 = 710400\n");
    EXPECT_EQ(run({"dump", "run-map"}).out, "dump run-map written to the service's log\n");
    EXPECT_TRUE(daemon_->waitForOutput("I troxd: dump run map: 0 live requests"))
            << daemon_->output();
}

TEST_F(PymctlDirMode, ListenSeesAChangeMadeByAnotherProcess) {
    auto listener = listen({"1500"});
    EXPECT_TRUE(daemon_->waitForOutput("I troxd: listener 1 registered for 1 resources (id form)"))
            << daemon_->output();
    ASSERT_EQ(run({"acquire", "--action", "ACTION_SWIPE_V", "--duration", "5000"}).exitCode, 0);
    EXPECT_EQ(listener->waitForExit(), 0) << listener->output();
    EXPECT_THAT(listener->output(), HasSubstr("\nchange: 0x01010020 = 1209600\n"));
}

TEST_F(PymctlDirMode, ListenSaysWhenTheServiceDiesOrFollowsItBack) {
    auto listener = listen({"20000"});
    stopDaemon();
    EXPECT_EQ(listener->waitForExit(), 1) << listener->output();
    EXPECT_THAT(listener->output(), HasSubstr("pymctl listen: the service died"));
    startDaemon();
    listener = listen({"8000", "--follow"});
    stopDaemon();
    ASSERT_TRUE(listener->waitForOutput("the service died; waiting for it to come back"))
            << listener->output();
    startDaemon();
    ASSERT_TRUE(listener->waitForOutput("the service is back; listening again"))
            << listener->output();
    ASSERT_EQ(run({"acquire", "--action", "ACTION_SWIPE_V", "--duration", "5000"}).exitCode, 0);
    EXPECT_TRUE(listener->waitForOutput("change: 0x01010020 = 1209600")) << listener->output();
    EXPECT_EQ(listener->waitForExit(), 0) << listener->output();
}

}  // namespace
