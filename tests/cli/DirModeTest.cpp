// pymctl --dir against a troxd started by the test: calls and callbacks cross processes.
#include "../kit/SpawnProgram.h"

#include <fcntl.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "PymctlRunner.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <thread>

using pymctl_test::Outcome;
using pymctl_test::runPymctl;
using ::testing::HasSubstr;

namespace {

class PymctlDirMode : public ::testing::Test {
  protected:
    void SetUp() override {
        dir_ = ::testing::TempDir() + "/pymctl_troxd_XXXXXX";
        ASSERT_NE(mkdtemp(dir_.data()), nullptr);
        // The daemon's log is not what these tests look at.
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        const int spawned = vexal::testing::spawnProgram(&pid_, {TROXD_PATH, "--dir", dir_},
                                                         &actions, environ);
        posix_spawn_file_actions_destroy(&actions);
        ASSERT_EQ(spawned, 0);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (std::chrono::steady_clock::now() < deadline) {
            if (run({"init"}).exitCode == 0) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        FAIL() << "troxd did not come up in " << dir_;
    }

    void TearDown() override {
        if (pid_ > 0) {
            kill(pid_, SIGTERM);
            int status = 0;
            waitpid(pid_, &status, 0);
        }
        std::string cmd = "rm -rf '" + dir_ + "'";
        EXPECT_EQ(std::system(cmd.c_str()), 0);
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
    auto listener = std::async(std::launch::async, [this] {
        return run({"listen", "0x01010020", "--timeout", "1500"});
    });
    // Give the listener time to register before the change it should see.
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    ASSERT_EQ(run({"acquire", "--action", "ACTION_SWIPE_V", "--duration", "5000"}).exitCode, 0);
    Outcome l = listener.get();
    EXPECT_EQ(l.exitCode, 0) << l.err;
    EXPECT_THAT(l.out, HasSubstr("change: 0x01010020 = 1209600"));
}

TEST_F(PymctlDirMode, DumpGoesToTheDaemonsLog) {
    Outcome d = run({"dump", "run-map"});
    EXPECT_EQ(d.exitCode, 0) << d.err;
    EXPECT_EQ(d.out, "dump run-map written to the service's log\n");
}

}  // namespace
