// pymctl --dir against a troxd started by the test: calls and callbacks cross processes.
#include <gmock/gmock.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <memory>

#include "ChildProcess.h"
#include "PymctlRunner.h"

using pymctl_test::Outcome;
using pymctl_test::runPymctl;
using ::testing::HasSubstr;
using vexal::testing::ChildProcess;

namespace {

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
    // pymctl listening alongside the test, its standard output and error read as they come.
    std::unique_ptr<ChildProcess> listen(std::vector<std::string> args) {
        args.insert(args.begin(),
                    {PYMCTL_PATH, "--dir", dir_, "listen", "0x01010020", "--timeout"});
        ChildProcess::Options options;
        options.withStdout = true;
        auto listener = std::make_unique<ChildProcess>(args, options);
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
