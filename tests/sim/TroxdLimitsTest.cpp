// troxd against clients that exhaust or abuse its socket: it keeps serving the others, bounds
// what one client costs, and logs why it refused. Limits are set in troxd's process only.
#include "../kit/ChildProcess.h"
#include "../kit/RawSocket.h"

#include <aidl/vendor/vexal/hardware/trox/ITrox.h>

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <binder_host/service_control.h>
#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "../../host/binder/src/socket_frames.h"

namespace {

using aidl::vendor::vexal::hardware::trox::ITrox;
using vexal::testing::ChildProcess;
using namespace vexal::testing;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr const char* kName = "vendor.vexal.hardware.trox.ITrox/default";
using binder_impl::kHello, binder_impl::kTransact, binder_impl::kReply;

// A two-way call with an empty parcel: the service answers it (STATUS_BAD_TYPE, no token).
std::vector<uint8_t> transactFrame(uint64_t transaction, uint64_t ref) {
    std::vector<uint8_t> body(32, 0);
    memcpy(body.data(), &transaction, 8);
    memcpy(body.data() + 8, &ref, 8);
    return rawFrame(kTransact, body);
}

// A socket that got its HELLO (and the service's ref), or -1 when the service closed it first.
int connectRaw(const std::string& path, uint64_t* ref = nullptr) {
    const int fd = connectUnix(path);
    if (fd < 0) return -1;
    uint32_t type = 0;
    std::vector<uint8_t> body;
    if (!readRawFrame(fd, &type, &body) || type != kHello || body.size() < 8) {
        close(fd);
        return -1;
    }
    if (ref != nullptr) memcpy(ref, body.data(), 8);
    return fd;
}

long rssKiB(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
    }
    return -1;
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
        service_.reset();
        std::filesystem::remove_all(base_);
    }

    // troxd serving in this test's directory, with BINDER_HOST_* limits and resource limits.
    ChildProcess& start(std::vector<std::string> env,
                        const ChildProcess::Options::Limits& limits = {}) {
        env.push_back("BINDER_HOST_DIR=" + dir_);
        service_ =
                std::make_unique<ChildProcess>(std::vector<std::string>{TROXD_PATH, "--dir", dir_},
                                               ChildProcess::Options{env, limits});
        EXPECT_TRUE(service_->waitForOutput("serving " + std::string(kName))) << service_->output();
        return *service_;
    }
    std::string socketFile() const {
        return dir_ + "/vendor.vexal.hardware.trox.ITrox%2fdefault.sock";
    }

    static std::shared_ptr<ITrox> waitForTrox() {
        return ITrox::fromBinder(ndk::SpAIBinder(AServiceManager_waitForService(kName)));
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
};

TEST_F(TroxdLimitsTest, ConnectionCapRefusesExtraSocketsAndServesTheRest) {
    ChildProcess& service = start({"BINDER_HOST_MAX_CONNECTIONS=8"});
    std::shared_ptr<ITrox> trox = waitForTrox();
    ASSERT_NE(nullptr, trox);
    ASSERT_TRUE(served(trox));

    const size_t held = holdUntilRefused(64);
    std::cout << "[ figure ] sockets held beside the test's own at a cap of 8: " << held << "\n";
    EXPECT_LT(held, 8u) << "the cap never refused";
    EXPECT_GE(held, 5u) << "refused below the cap";
    EXPECT_TRUE(service.waitForOutput("the limit (BINDER_HOST_MAX_CONNECTIONS)"))
            << service.output();
    EXPECT_TRUE(served(trox));

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
    ChildProcess& service = start({}, {{RLIMIT_NOFILE, 64}});
    std::shared_ptr<ITrox> trox = waitForTrox();
    ASSERT_NE(nullptr, trox);
    ASSERT_TRUE(served(trox));

    const size_t held = holdUntilRefused(256);
    std::cout << "[ figure ] sockets held at RLIMIT_NOFILE 64: " << held << "\n";
    EXPECT_LT(held, 64u) << "the descriptor limit never bit";
    EXPECT_TRUE(service.waitForOutput("accept failed: Too many open files")) << service.output();
    EXPECT_TRUE(served(trox)) << "an open connection stopped being served";

    closeHeld();
    const auto closed = Clock::now();
    // A fresh connection, from lookup to answer.
    trox.reset();
    binder_host::resetServiceManager();
    bool answered = false;
    while (!answered && Clock::now() < closed + 10s) {
        // Not waitForService: a listener that stopped accepting must fail the test, not hang it.
        answered = served(ITrox::fromBinder(ndk::SpAIBinder(AServiceManager_checkService(kName))));
        if (!answered) binder_host::resetServiceManager();
    }
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - closed);
    std::cout << "[ figure ] recovered after the clients left in " << took.count() << " ms\n";
    RecordProperty("recovery_ms", static_cast<int>(took.count()));
    EXPECT_TRUE(answered) << service.output();
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
    ChildProcess& service = start({}, {{RLIMIT_STACK, kStack}, {RLIMIT_AS, 16 * kStack}});
    std::shared_ptr<ITrox> trox = waitForTrox();
    ASSERT_NE(nullptr, trox);
    ASSERT_TRUE(served(trox));
    // Each socket takes a thread (and its stack) until none can be made.
    holdUntilRefused(64);
    EXPECT_TRUE(service.waitForOutput("no thread for the connection")) << service.output();
    EXPECT_TRUE(served(trox)) << service.output();
    EXPECT_TRUE(service.running()) << "troxd ended";
}

TEST_F(TroxdLimitsTest, AnnouncedFrameSizeCostsNoMemoryAndTimesOut) {
    ChildProcess& service = start({"BINDER_HOST_FRAME_TIMEOUT_MS=1000"});
    std::shared_ptr<ITrox> trox = waitForTrox();
    ASSERT_NE(nullptr, trox);
    ASSERT_TRUE(served(trox));

    constexpr size_t kClients = 50;
    const std::vector<uint8_t> header = [] {
        std::vector<uint8_t> bytes = rawFrame(kTransact, {});
        const uint32_t announced = 16u << 20;
        memcpy(bytes.data(), &announced, 4);
        return bytes;
    }();
    ASSERT_EQ(kClients, holdUntilRefused(kClients));
    // Measured with the connections (and their threads) already there: only the headers count.
    const long before = rssKiB(service.pid());
    ASSERT_GT(before, 0);
    for (int fd : held_) ASSERT_TRUE(sendExact(fd, header.data(), header.size()));
    // The service has read every header once nothing of ours is left unread.
    const auto deadline = Clock::now() + 10s;
    for (int fd : held_) {
        int unread = 1;
        while (ioctl(fd, SIOCOUTQ, &unread) == 0 && unread > 0 && Clock::now() < deadline) {
            std::this_thread::sleep_for(1ms);
        }
        ASSERT_EQ(0, unread) << "a header was never read";
    }
    const long after = rssKiB(service.pid());
    std::cout << "[ figure ] service RSS with " << kClients << " idle clients " << before
              << " KiB, once each announced a 16 MiB frame " << after << " KiB\n";
    RecordProperty("rss_growth_kib", static_cast<int>(after - before));
    EXPECT_LT(after - before, 16 * 1024) << "bodies are allocated before their bytes arrive";

    for (int fd : held_) ASSERT_TRUE(closedByPeer(fd)) << "a half-sent frame was kept open";
    EXPECT_TRUE(service.waitForOutput("left a frame unfinished")) << service.output();
    EXPECT_TRUE(served(trox));
}

TEST_F(TroxdLimitsTest, SilentSocketIsDroppedAfterTheHandshakeDeadline) {
    ChildProcess& service = start({"BINDER_HOST_HANDSHAKE_TIMEOUT_MS=300"});
    std::shared_ptr<ITrox> trox = waitForTrox();
    ASSERT_NE(nullptr, trox);
    const int silent = connectUnix(socketFile());
    ASSERT_GE(silent, 0);
    held_.push_back(silent);
    EXPECT_TRUE(service.waitForOutput("did not take its HELLO within 300 ms")) << service.output();
    EXPECT_TRUE(closedByPeer(silent));
    // A client that read its HELLO is no silent one, however long it then waits.
    EXPECT_TRUE(served(trox));
}

TEST_F(TroxdLimitsTest, ClientThatNeverReadsIsDroppedWhileOthersAreServed) {
    ChildProcess& service =
            start({"BINDER_HOST_MAX_QUEUED_CALLS=64", "BINDER_HOST_REPLY_TIMEOUT_MS=1000"});
    std::shared_ptr<ITrox> trox = waitForTrox();
    ASSERT_NE(nullptr, trox);
    const long rssBefore = rssKiB(service.pid());
    uint64_t ref = 0;
    const int flooder = connectRaw(socketFile(), &ref);
    ASSERT_GE(flooder, 0);
    held_.push_back(flooder);
    const int other = connectRaw(socketFile());
    ASSERT_GE(other, 0);
    held_.push_back(other);

    // Another client on its shared stream, as the pool threads serve it.
    std::atomic<bool> floodOver{false};
    std::atomic<int> answers{0};
    std::atomic<int> failed{0};
    std::atomic<long> slowestMs{0};
    std::thread bystander([&] {
        for (uint64_t id = 1; !floodOver || answers < 5; ++id) {
            const auto sent = Clock::now();
            const std::vector<uint8_t> call = transactFrame(id, ref);
            uint32_t type = 0;
            std::vector<uint8_t> body;
            uint64_t answered = 0;
            const bool replied = sendExact(other, call.data(), call.size()) &&
                                 readRawFrame(other, &type, &body) && type == kReply &&
                                 body.size() >= 8;
            if (replied) memcpy(&answered, body.data(), 8);
            if (answered != id) {
                ++failed;
                return;
            }
            ++answers;
            const long ms = static_cast<long>(
                    std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - sent)
                            .count());
            if (ms > slowestMs) slowestMs = ms;
        }
    });

    timeval limit{10, 0};
    setsockopt(flooder, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit));
    size_t sent = 0;
    bool dropped = false;
    int sendError = 0;
    while (sent < 200000) {
        const std::vector<uint8_t> call = transactFrame(sent + 1, ref);
        if (!sendExact(flooder, call.data(), call.size())) {
            sendError = errno;
            dropped = sendError == EPIPE || sendError == ECONNRESET;
            break;
        }
        ++sent;
    }
    floodOver = true;
    bystander.join();
    std::cout << "[ figure ] the service " << (dropped ? "dropped" : "kept")
              << " the non-reading client after " << sent << " calls; the other client got "
              << answers << " answers, the slowest in " << slowestMs << " ms\n";
    const long rssAfter = rssKiB(service.pid());
    std::cout << "[ figure ] troxd RSS before the flood " << rssBefore << " KiB, after it "
              << rssAfter << " KiB\n";
    EXPECT_LT(rssAfter - rssBefore, 16 * 1024) << "the unread replies piled up";
    EXPECT_TRUE(dropped) << "sent " << sent << " calls, errno " << sendError;
    EXPECT_EQ(0, failed.load());
    EXPECT_GE(answers.load(), 5);
    EXPECT_TRUE(service.waitForOutput("dropping the connection")) << service.output();
    EXPECT_TRUE(served(trox));
}

}  // namespace
