// Calls, objects, deaths and the wire of the socket transport, with echo services run in their
// own processes: bad frames, the HELLO, channels joining a connection, the service's binder
// threads.
#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <binder_host/service_control.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "../../host/binder/src/socket_frames.h"
#include "../kit/ChildProcess.h"
#include "../kit/RawSocket.h"
#include "binder_test_util.h"

namespace {

using namespace binder_test;
using namespace vexal::testing;
using namespace std::chrono_literals;
using binder_impl::kHello, binder_impl::kJoin, binder_impl::kJoined, binder_impl::kRelease,
        binder_impl::kReply, binder_impl::kTransact;

constexpr const char* kName = "test.vexal.IEcho/default";
constexpr const char* kOther = "test.vexal.IEcho/other";

binder_status_t callWithBinder(AIBinder* binder, transaction_code_t code, AIBinder* argument,
                               ndk::ScopedAParcel* out = nullptr) {
    return call(
            binder, code, [argument](AParcel* in) { AParcel_writeStrongBinder(in, argument); },
            out);
}

pid_t lastCaller(EchoState& state) {
    std::lock_guard<std::mutex> lock(state.mutex);
    return state.lastCallingPid;
}

class SocketTest : public testing::Test {
  protected:
    void SetUp() override {
        char base[] = "/tmp/binder_socket_testXXXXXX";
        ASSERT_NE(nullptr, mkdtemp(base));
        base_ = base;
        dir_ = base_ + "/dir";
        ASSERT_TRUE(binder_host::setHostDirectory(dir_));
        std::ofstream(dir_ + "/manifest") << kName << "\n" << kOther << "\n";
    }

    void TearDown() override {
        children_.clear();
        binder_host::resetServiceManager();
        binder_host::setHostDirectory("");
        std::filesystem::remove_all(base_);
        // Calls from the service may still be finishing on binder threads.
        for (auto& state : states_) {
            std::unique_lock<std::mutex> lock(state->mutex);
            EXPECT_TRUE(state->cv.wait_for(lock, 5s, [&] { return state->destroyed.load(); }));
        }
    }

    // Where the service published as kName listens.
    std::string socketFile() const { return dir_ + "/test.vexal.IEcho%2fdefault.sock"; }

    ChildProcess& spawnService(const char* instance, std::vector<std::string> extra = {}) {
        std::vector<std::string> argv{SOCKET_ECHO_SERVICE, instance};
        argv.insert(argv.end(), extra.begin(), extra.end());
        return *children_.emplace_back(std::make_unique<ChildProcess>(
                argv, ChildProcess::Options{{"BINDER_HOST_DIR=" + dir_}}));
    }

    static ndk::SpAIBinder waitForEcho(const char* instance) {
        ndk::SpAIBinder binder(AServiceManager_waitForService(instance));
        if (binder.get() != nullptr) AIBinder_associateClass(binder.get(), echoClass());
        return binder;
    }

    // Starts the service; a proxy to it with the echo class associated.
    ndk::SpAIBinder startEcho(const char* instance = kName, std::vector<std::string> extra = {}) {
        spawnService(instance, std::move(extra));
        ndk::SpAIBinder echo = waitForEcho(instance);
        EXPECT_NE(nullptr, echo.get()) << "no " << instance;
        return echo;
    }

    // Lives until after TearDown, so late callbacks from the service still find it.
    EchoState& makeState() { return *states_.emplace_back(std::make_unique<EchoState>()); }

    std::string base_, dir_;
    std::vector<std::unique_ptr<ChildProcess>> children_;

  private:
    std::vector<std::unique_ptr<EchoState>> states_;
};

TEST_F(SocketTest, CallsAndCallbacksCrossTheProcessBoundary) {
    ndk::SpAIBinder echo = startEcho();
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), std::string(100000, 'x'), &reply));
    EXPECT_EQ(std::string(100000, 'x'), reply);
    EXPECT_EQ(STATUS_PERMISSION_DENIED, call(echo.get(), kFail, nullptr));
    ndk::ScopedAParcel out;
    ASSERT_EQ(STATUS_OK, call(echo.get(), kCallerIdentity, nullptr, &out));
    std::vector<int32_t> identity(3);  // as the service sees the caller, then its own pid
    for (int32_t& value : identity) AParcel_readInt32(out.get(), &value);
    EXPECT_EQ((std::vector<int32_t>{getpid(), static_cast<int32_t>(getuid()),
                                    children_.back()->pid()}),
              identity);

    // The service calls back while our call is in flight, then later from a thread of its own.
    EchoState& mine = makeState();
    ndk::SpAIBinder callback = newEcho(&mine);
    ASSERT_EQ(STATUS_OK, call(
                                 echo.get(), kCallBack,
                                 [&](AParcel* in) {
                                     AParcel_writeStrongBinder(in, callback.get());
                                     writeString(in, "nested");
                                 },
                                 &out));
    readString(out.get(), &reply);
    EXPECT_EQ("nested", reply);
    EXPECT_EQ(children_.back()->pid(), lastCaller(mine));
    ASSERT_EQ(STATUS_OK, callWithBinder(echo.get(), kRemember, callback.get()));
    ASSERT_EQ(STATUS_OK, sendInt(echo.get(), kNotifyLater, 50));
    std::vector<int32_t> expected(50);
    for (int32_t i = 0; i < 50; ++i) expected[i] = i;
    std::unique_lock<std::mutex> lock(mine.mutex);
    EXPECT_TRUE(mine.cv.wait_for(lock, 5s, [&] { return mine.received.size() >= 50; }));
    EXPECT_EQ(expected, mine.received) << "one-way calls arrive in order";
}

TEST_F(SocketTest, ObjectsResolveToTheirOwnerAndStayInTheirProcesses) {
    ndk::SpAIBinder echo = startEcho();
    ndk::ScopedAParcel out;
    ndk::SpAIBinder returned;
    ASSERT_EQ(STATUS_OK, callWithBinder(echo.get(), kReturnBinder, echo.get(), &out));
    ASSERT_EQ(STATUS_OK, AParcel_readStrongBinder(out.get(), returned.getR()));
    EXPECT_EQ(echo.get(), returned.get());

    EchoState& mine = makeState();
    {
        ndk::SpAIBinder callback = newEcho(&mine);
        ASSERT_EQ(STATUS_OK, callWithBinder(echo.get(), kReturnBinder, callback.get(), &out));
        returned.set(nullptr);
        ASSERT_EQ(STATUS_OK, AParcel_readStrongBinder(out.get(), returned.getR()));
        ASSERT_TRUE(AIBinder_associateClass(returned.get(), echoClass()));
        std::optional<std::string> reply;
        ASSERT_EQ(STATUS_OK, callEcho(returned.get(), "home", &reply));
        EXPECT_EQ(getpid(), lastCaller(mine));
        ASSERT_EQ(STATUS_OK, callWithBinder(echo.get(), kRemember, callback.get()));
        returned.set(nullptr);
        out = ndk::ScopedAParcel();
    }
    EXPECT_FALSE(mine.destroyed.load());
    // The service's release reaches us before the reply does.
    ASSERT_EQ(STATUS_OK, call(echo.get(), kForget, nullptr));
    EXPECT_TRUE(mine.destroyed.load());

    ndk::SpAIBinder other = startEcho(kOther);
    EXPECT_NE(echo.get(), other.get());
    EXPECT_EQ(STATUS_BAD_VALUE, callWithBinder(other.get(), kRemember, echo.get()));
    std::optional<std::string> reply;
    EXPECT_EQ(STATUS_OK, callEcho(other.get(), "still fine", &reply));
    EXPECT_EQ(STATUS_OK, callEcho(echo.get(), "still fine", &reply));
}

// Counts deaths or answered calls.
struct Counter {
    std::mutex mutex;
    std::condition_variable cv;
    int count = 0;
};

void bump(void* cookie) {
    auto* counter = static_cast<Counter*>(cookie);
    std::lock_guard<std::mutex> lock(counter->mutex);
    counter->count++;
    counter->cv.notify_all();
}

TEST_F(SocketTest, KillMidTrafficFailsEveryCallAndFiresRecipientsOnce) {
    ndk::SpAIBinder echo = startEcho();
    Counter deaths[2];
    ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(bump));
    for (Counter& c : deaths) {
        ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(echo.get(), recipient.get(), &c));
    }
    Counter answered;
    // Concurrent callers, each expecting its own reply, until the service dies.
    auto traffic = [&](int worker) {
        std::vector<binder_status_t> unexpected;
        for (int i = 0;; ++i) {
            const std::string text = std::to_string(worker) + "/" + std::to_string(i);
            std::optional<std::string> reply;
            binder_status_t s = callEcho(echo.get(), text, &reply);
            if (s == STATUS_DEAD_OBJECT) return unexpected;
            if (s != STATUS_OK || reply != text) unexpected.push_back(s);
            bump(&answered);
        }
    };
    std::vector<std::future<std::vector<binder_status_t>>> workers;
    for (int i = 0; i < 8; ++i) workers.push_back(std::async(std::launch::async, traffic, i));
    auto blocked =
            std::async(std::launch::async, [&] { return call(echo.get(), kBlock, nullptr); });
    {
        std::unique_lock<std::mutex> lock(answered.mutex);
        ASSERT_TRUE(answered.cv.wait_for(lock, 5s, [&] { return answered.count >= 1000; }));
    }
    kill(children_.back()->pid(), SIGKILL);

    for (auto& worker : workers) {
        ASSERT_EQ(std::future_status::ready, worker.wait_for(5s));
        EXPECT_EQ(std::vector<binder_status_t>{}, worker.get());
    }
    ASSERT_EQ(std::future_status::ready, blocked.wait_for(5s));
    EXPECT_EQ(STATUS_DEAD_OBJECT, blocked.get());
    std::optional<std::string> reply;
    EXPECT_EQ(STATUS_DEAD_OBJECT, callEcho(echo.get(), "after", &reply));
    EXPECT_FALSE(AIBinder_isAlive(echo.get()));
    EXPECT_EQ(STATUS_DEAD_OBJECT, AIBinder_linkToDeath(echo.get(), recipient.get(), &deaths[0]));
    binder_host::drainNotifications();
    for (Counter& c : deaths) EXPECT_EQ(1, c.count);
}

TEST_F(SocketTest, WaitForServiceBlocksUntilTheSocketAnswers) {
    EXPECT_EQ(nullptr, AServiceManager_waitForService("test.vexal.IEcho/nobody"));
    EXPECT_EQ(nullptr, AServiceManager_checkService(kName));
    EXPECT_TRUE(AServiceManager_isDeclared(kName));
    auto waiter = std::async(std::launch::async, [] { return waitForEcho(kName); });
    EXPECT_EQ(std::future_status::timeout, waiter.wait_for(100ms));
    spawnService(kName);
    ASSERT_EQ(std::future_status::ready, waiter.wait_for(10s));
    ndk::SpAIBinder echo = waiter.get();
    std::optional<std::string> reply;
    EXPECT_EQ(STATUS_OK, callEcho(echo.get(), "arrived", &reply));

    // TERM stops it cleanly: under the sanitizers a leak would make the exit status non-zero.
    EchoState& mine = makeState();
    ndk::SpAIBinder callback = newEcho(&mine);
    ASSERT_EQ(STATUS_OK, callWithBinder(echo.get(), kRemember, callback.get()));
    kill(children_.back()->pid(), SIGTERM);
    EXPECT_EQ(0, children_.back()->waitForExit());
    EXPECT_FALSE(std::filesystem::exists(socketFile()));
    EXPECT_EQ(STATUS_DEAD_OBJECT, callEcho(echo.get(), "stopped", &reply));
}

// Only a private directory of our own is used (troxd's tests see it made so); otherwise only
// in-process services remain, and nothing is put in the refused directory.
TEST_F(SocketTest, RefusesADirectoryOpenToOthers) {
    const std::string shared = base_ + "/shared";
    ASSERT_EQ(0, mkdir(shared.c_str(), 0700));
    ASSERT_EQ(0, chmod(shared.c_str(), 0770));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(binder_host::setHostDirectory(shared));
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, log.find("refused")) << log;
    EXPECT_EQ("", binder_host::hostDirectory());
    EchoState& state = makeState();
    ASSERT_EQ(EX_NONE, AServiceManager_addService(newEcho(&state).get(), kName));
    EXPECT_NE(nullptr, ndk::SpAIBinder(AServiceManager_checkService(kName)).get());
    EXPECT_EQ(nullptr, AServiceManager_waitForService(kOther));
    EXPECT_TRUE(std::filesystem::is_empty(shared));
}

// The wire, spoken directly.
bool sendBytes(int fd, const std::vector<uint8_t>& bytes) {
    return sendExact(fd, bytes.data(), bytes.size());
}

// A connection to path that read the HELLO the service greets every socket with (its body into
// *hello when given) and, given a key, asked to join the connection it names; -1 if a step failed.
int greeted(const std::string& path, std::vector<uint8_t>* hello = nullptr,
            std::optional<uint64_t> join = {}) {
    const int fd = connectGreeted(path, kHello, hello);
    if (fd < 0 || !join.has_value()) return fd;
    std::vector<uint8_t> body(8);
    memcpy(body.data(), &*join, 8);
    if (sendBytes(fd, rawFrame(kJoin, body))) return fd;
    close(fd);
    return -1;
}

// A channel the service admitted into the connection key names, or -1.
int joined(const std::string& path, uint64_t key) {
    const int fd = greeted(path, nullptr, key);
    uint32_t type = 0;
    std::vector<uint8_t> body;
    if (fd >= 0 && readRawFrame(fd, &type, &body) && type == kJoined && body.empty()) return fd;
    if (fd >= 0) close(fd);
    return -1;
}

TEST_F(SocketTest, BadFramesCloseOnlyTheirConnection) {
    ndk::SpAIBinder echo = startEcho();
    for (const auto& bytes : {
                 rawFrame(kTransact, {}, binder_impl::kMaxFrame + 1),  // beyond the size cap
                 rawFrame(0xdead, std::vector<uint8_t>(8)),            // unknown frame type
                 rawFrame(kTransact, std::vector<uint8_t>(20)),        // transaction cut short
                 rawFrame(kRelease, std::vector<uint8_t>(12, 7)),      // release of nothing we hold
         }) {
        const int fd = connectUnix(socketFile());
        ASSERT_GE(fd, 0);
        ASSERT_TRUE(sendBytes(fd, bytes));
        EXPECT_TRUE(closedByPeer(fd)) << hex(bytes);
        close(fd);
    }
    // Refused for its announced length, not after waiting for a body that never comes.
    EXPECT_TRUE(children_.back()->waitForOutput("frame of 16777217 bytes from pid " +
                                                std::to_string(getpid()) + " exceeds the limit"))
            << children_.back()->output();
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), "unharmed", &reply));
    EXPECT_EQ("unharmed", reply);
}

TEST_F(SocketTest, ChannelsJoinOnlyAConnectionOfTheSameProcess) {
    ndk::SpAIBinder echo = startEcho();
    std::vector<uint8_t> hello;
    const int first = greeted(socketFile(), &hello);
    ASSERT_GE(first, 0);
    ASSERT_EQ(36u, hello.size());
    // The service's ref, its descriptor, and the key to join its connection with.
    EXPECT_EQ("10000000 74657374 2e766578 616c2e49 4563686f",
              hex(std::vector<uint8_t>(hello.begin() + 8, hello.begin() + 28)));
    uint64_t key = 0;
    memcpy(&key, hello.data() + 28, 8);
    ASSERT_NE(0u, key);

    // Another process that learned the key still cannot join.
    ChildProcess stranger({SOCKET_ECHO_SERVICE, "--join", socketFile(), std::to_string(key)});
    EXPECT_EQ(0, stranger.waitForExit()) << "1: a foreign JOIN was accepted, 2: it could not ask";
    // Nor can a key nobody was given.
    const int guesser = greeted(socketFile(), nullptr, key ^ 1);
    ASSERT_GE(guesser, 0);
    EXPECT_TRUE(closedByPeer(guesser));
    close(guesser);

    // The same process joins; the channel answers a call with the frames sent before it.
    const int channel = joined(socketFile(), key);
    ASSERT_GE(channel, 0);
    // Transaction 7 to the service with an empty parcel: no interface token.
    std::vector<uint8_t> transact = unhex("07000000 00000000");
    transact.insert(transact.end(), hello.begin(), hello.begin() + 8);
    for (uint8_t byte : unhex("efcdab00 00000000 00000000 00000000")) transact.push_back(byte);
    ASSERT_TRUE(sendBytes(channel, rawFrame(kTransact, transact)));
    uint32_t type = 0;
    std::vector<uint8_t> body;
    ASSERT_TRUE(readRawFrame(channel, &type, &body));
    EXPECT_EQ(kReply, type);
    // The transaction, 1 frame before (only the HELLO went out on the owner's socket),
    // STATUS_BAD_TYPE, no objects and an empty parcel.
    EXPECT_EQ("07000000 00000000 01000000 00000000 01000080 00000000 00000000", hex(body));

    // One-way calls have no place on a channel: the connection goes, the service stays.
    transact[20] = FLAG_ONEWAY;
    ASSERT_TRUE(sendBytes(channel, rawFrame(kTransact, transact)));
    EXPECT_TRUE(closedByPeer(channel));
    EXPECT_TRUE(closedByPeer(first));
    close(channel);
    close(first);
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), "unharmed", &reply));
    EXPECT_EQ("unharmed", reply);
}

TEST_F(SocketTest, ChannelsStayWithinTheServicesThreadLimit) {
    ndk::SpAIBinder echo = startEcho();
    std::vector<uint8_t> hello;
    const int first = greeted(socketFile(), &hello);
    ASSERT_GE(first, 0);
    uint64_t key = 0;
    memcpy(&key, hello.data() + 28, 8);
    // Nothing has called the service yet, so no channel of the proxy holds a thread.
    std::vector<int> channels;
    for (int fd = 0; channels.size() < 40 && (fd = joined(socketFile(), key)) >= 0;) {
        channels.push_back(fd);
    }
    EXPECT_EQ(17u, channels.size());
    // A refused channel leaves the caller on the shared stream, not without an answer.
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), "while full", &reply));
    EXPECT_EQ("while full", reply);

    close(channels.back());
    channels.back() = -1;
    const auto deadline = std::chrono::steady_clock::now() + 5s;
    while (channels.back() < 0 && std::chrono::steady_clock::now() < deadline) {
        channels.back() = joined(socketFile(), key);
        if (channels.back() < 0) std::this_thread::sleep_for(10ms);  // not yet: try again soon
    }
    EXPECT_GE(channels.back(), 0) << "a closed channel did not give its thread back";
    for (int fd : channels) close(fd);
    close(first);
}

// A service that gave binder no thread answers nothing: the call waits, as the driver holds it,
// until the service starts its pool.
TEST_F(SocketTest, CallsWaitUntilTheServiceGivesBinderAThread) {
    ndk::SpAIBinder echo = startEcho(kName, {"--pool-on-sigusr1"});
    auto answer = std::async(std::launch::async, [&echo] {
        std::optional<std::string> reply;
        const binder_status_t status = callEcho(echo.get(), "held", &reply);
        return status == STATUS_OK ? reply.value_or("<null>") : "status " + std::to_string(status);
    });
    const bool reached = children_.back()->waitForOutput("queued");
    const bool answeredEarly = answer.wait_for(0s) != std::future_status::timeout;
    // Before any assertion: the caller's thread must not be left waiting.
    ASSERT_EQ(0, kill(children_.back()->pid(), SIGUSR1));
    EXPECT_TRUE(reached) << "the call never reached the service";
    EXPECT_FALSE(answeredEarly) << "answered by a thread the service never gave binder";
    EXPECT_EQ("held", answer.get());
}

}  // namespace
