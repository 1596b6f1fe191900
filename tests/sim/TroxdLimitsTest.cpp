// troxd against clients that exhaust or abuse its socket: it keeps serving the others, bounds
// what one client costs, and logs why it refused. Limits are set in troxd's process only.
#include "../kit/ChildProcess.h"
#include "../kit/RawSocket.h"

#include <aidl/vendor/vexal/hardware/trox/ITrox.h>
#include <android/binder_manager.h>
#include <binder_host/service_control.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <thread>

#include "../../host/binder/src/socket_frames.h"

namespace {

using aidl::vendor::vexal::hardware::trox::ITrox;
using vexal::testing::ChildProcess;
using namespace vexal::testing;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr const char* kName = "vendor.vexal.hardware.trox.ITrox/default";
using binder_impl::kHello, binder_impl::kTransact;

// A two-way call with an empty parcel: the service answers it (STATUS_BAD_TYPE, no token).
std::vector<uint8_t> transactFrame(uint64_t transaction, uint64_t ref) {
    std::vector<uint8_t> body(32, 0);
    memcpy(body.data(), &transaction, 8);
    memcpy(body.data() + 8, &ref, 8);
    return rawFrame(kTransact, body);
}

// A socket that got its HELLO (and the service's ref), or -1 when the service closed it first.
int connectRaw(const std::string& path, uint64_t* ref = nullptr) {
    std::vector<uint8_t> body;
    const int fd = connectGreeted(path, kHello, &body);
    if (fd < 0 || body.size() < 8) {
        if (fd >= 0) close(fd);
        return -1;
    }
    if (ref != nullptr) memcpy(ref, body.data(), 8);
    return fd;
}

class TroxdLimitsTest : public testing::Test {
  protected:
    void SetUp() override {
        char base[] = "/tmp/binder_limits_testXXXXXX";
        ASSERT_NE(nullptr, mkdtemp(base));
        base_ = base;
        dir_ = base_ + "/dir";
        ASSERT_TRUE(binder_host::setHostDirectory(dir_));
    }
    void TearDown() override {
        for (int fd : held_) close(fd);
        binder_host::resetServiceManager();
        binder_host::setHostDirectory("");
        trox_.reset();
        service_.reset();
        std::filesystem::remove_all(base_);
    }

    // troxd serving in this test's directory, with BINDER_HOST_* limits and resource limits;
    // true once trox_ got an answer from it.
    bool start(std::vector<std::string> env, const ChildProcess::Options::Limits& limits = {}) {
        env.push_back("BINDER_HOST_DIR=" + dir_);
        service_ =
                std::make_unique<ChildProcess>(std::vector<std::string>{TROXD_PATH, "--dir", dir_},
                                               ChildProcess::Options{env, limits});
        EXPECT_TRUE(service_->waitForOutput("serving " + std::string(kName))) << service_->output();
        trox_ = ITrox::fromBinder(ndk::SpAIBinder(AServiceManager_waitForService(kName)));
        return served(trox_);
    }
    std::string socketFile() const {
        return dir_ + "/vendor.vexal.hardware.trox.ITrox%2fdefault.sock";
    }

    // A call that reaches the service and comes back with its answer.
    static bool served(const std::shared_ptr<ITrox>& trox) {
        std::string value;
        return trox != nullptr && trox->troxPropertyGet("vendor.limits.probe", &value).isOk();
    }

    // Raw sockets until the service closes one without a HELLO; how many it took.
    size_t holdUntilRefused(size_t atMost) {
        while (held_.size() < atMost) {
            const int fd = connectRaw(socketFile());
            if (fd < 0) return held_.size();
            held_.push_back(fd);
        }
        return held_.size();
    }
    void closeHeld() {
        for (int fd : held_) close(fd);
        held_.clear();
    }

    std::string base_;
    std::string dir_;
    std::vector<int> held_;
    std::unique_ptr<ChildProcess> service_;
    std::shared_ptr<ITrox> trox_;
};

TEST_F(TroxdLimitsTest, ConnectionCapRefusesExtraSocketsAndServesTheRest) {
    ASSERT_TRUE(start({"BINDER_HOST_MAX_CONNECTIONS=8"}));

    const size_t held = holdUntilRefused(64);
    EXPECT_LT(held, 8u) << "the cap never refused";
    EXPECT_GE(held, 5u) << "refused below the cap";
    EXPECT_TRUE(service_->waitForOutput("the limit (BINDER_HOST_MAX_CONNECTIONS)"))
            << service_->output();
    EXPECT_TRUE(served(trox_));

    // A closed socket makes room once the service has seen it go.
    close(held_.back());
    held_.pop_back();
    int again = -1;
    const auto deadline = Clock::now() + 10s;
    while (again < 0 && Clock::now() < deadline) again = connectRaw(socketFile());
    EXPECT_GE(again, 0) << "a closed socket did not give its place back";
    if (again >= 0) held_.push_back(again);
}

TEST_F(TroxdLimitsTest, AcceptsAgainOnceDescriptorsAreFree) {
    ASSERT_TRUE(start({}, {{RLIMIT_NOFILE, 64}}));

    const size_t held = holdUntilRefused(256);
    EXPECT_LT(held, 64u) << "the descriptor limit never bit";
    EXPECT_TRUE(service_->waitForOutput("accept failed: Too many open files"))
            << service_->output();
    EXPECT_TRUE(served(trox_)) << "an open connection stopped being served";

    closeHeld();
    const auto closed = Clock::now();
    // A fresh connection, from lookup to answer.
    trox_.reset();
    binder_host::resetServiceManager();
    bool answered = false;
    while (!answered && Clock::now() < closed + 10s) {
        // Not waitForService: a listener that stopped accepting must fail the test, not hang it.
        answered = served(ITrox::fromBinder(ndk::SpAIBinder(AServiceManager_checkService(kName))));
        if (!answered) binder_host::resetServiceManager();
    }
    EXPECT_TRUE(answered) << service_->output();
}

// With little address space left, a connection that gets no thread is closed; the service lives.
TEST_F(TroxdLimitsTest, NoThreadForAConnectionRefusesOnlyThatOne) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer's shadow memory needs more address space than the limit";
#endif
    if (std::getenv("VEXAL_TEST_EMULATOR") != nullptr) {
        GTEST_SKIP() << "the emulator reserves the guest's address space up front";
    }
    constexpr rlim_t kStack = 8u << 20;
    ASSERT_TRUE(start({}, {{RLIMIT_STACK, kStack}, {RLIMIT_AS, 16 * kStack}}));
    // Each socket takes a thread (and its stack) until none can be made.
    holdUntilRefused(64);
    EXPECT_TRUE(service_->waitForOutput("no thread for the connection")) << service_->output();
    EXPECT_TRUE(served(trox_)) << service_->output();
    EXPECT_TRUE(service_->running()) << "troxd ended";
}

TEST_F(TroxdLimitsTest, SilentSocketIsDroppedAfterTheHandshakeDeadline) {
    ASSERT_TRUE(start({"BINDER_HOST_HANDSHAKE_TIMEOUT_MS=300"}));
    const int silent = connectUnix(socketFile());
    ASSERT_GE(silent, 0);
    held_.push_back(silent);
    EXPECT_TRUE(service_->waitForOutput("did not take its HELLO within 300 ms"))
            << service_->output();
    EXPECT_TRUE(closedByPeer(silent));
    // A client that read its HELLO is no silent one, however long it then waits.
    EXPECT_TRUE(served(trox_));
}

TEST_F(TroxdLimitsTest, ClientThatNeverReadsIsDroppedWhileOthersAreServed) {
    ASSERT_TRUE(start({"BINDER_HOST_MAX_QUEUED_CALLS=64", "BINDER_HOST_REPLY_TIMEOUT_MS=1000"}));
    uint64_t ref = 0;
    const int flooder = connectRaw(socketFile(), &ref);
    ASSERT_GE(flooder, 0);
    held_.push_back(flooder);
    // Another client keeps calling while the flood goes on.
    std::atomic<bool> floodOver{false};
    std::atomic<int> answers{0};
    std::atomic<int> failed{0};
    std::thread bystander([&] {
        for (int n = 0; !floodOver || n < 5; ++n) ++(served(trox_) ? answers : failed);
    });
    timeval limit{10, 0};
    setsockopt(flooder, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit));
    size_t sent = 0;
    int sendError = 0;
    for (; sent < 200000; ++sent) {
        const std::vector<uint8_t> call = transactFrame(sent + 1, ref);
        if (!sendExact(flooder, call.data(), call.size())) {
            sendError = errno;
            break;
        }
    }
    floodOver = true;
    bystander.join();
    EXPECT_TRUE(sendError == EPIPE || sendError == ECONNRESET)
            << "sent " << sent << " calls, errno " << sendError;
    EXPECT_GE(answers.load(), 5);
    EXPECT_EQ(failed.load(), 0);
    EXPECT_TRUE(service_->waitForOutput("dropping the connection")) << service_->output();
    EXPECT_TRUE(served(trox_));
}

}  // namespace
