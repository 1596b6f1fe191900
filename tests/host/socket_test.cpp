#include "../kit/RawSocket.h"
#include "../kit/SpawnProgram.h"

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <binder/IPCThreadState.h>
#include <binder_host/service_control.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "../../host/binder/src/socket_frames.h"
#include "binder_test_util.h"
#include "socket_test_codes.h"

extern char** environ;

namespace {

using binder_impl::kHello, binder_impl::kJoin, binder_impl::kJoined, binder_impl::kRelease,
        binder_impl::kReply, binder_impl::kTransact;
using namespace binder_test;
using namespace vexal::testing;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr const char* kName = "test.vexal.IEcho/default";
constexpr const char* kOther = "test.vexal.IEcho/other";

struct DeathCounter {
    std::mutex mutex;
    std::condition_variable cv;
    int died = 0;
};

void onDied(void* cookie) {
    auto* counter = static_cast<DeathCounter*>(cookie);
    std::lock_guard<std::mutex> lock(counter->mutex);
    counter->died++;
    counter->cv.notify_all();
}

bool waitForDeaths(DeathCounter& counter, int count) {
    std::unique_lock<std::mutex> lock(counter.mutex);
    return counter.cv.wait_for(lock, 5s, [&] { return counter.died >= count; });
}

// Sends code with what write puts after the interface token.
binder_status_t call(AIBinder* binder, transaction_code_t code,
                     const std::function<void(AParcel*)>& write, ndk::ScopedAParcel* out,
                     binder_flags_t flags = 0) {
    AParcel* in = nullptr;
    if (binder_status_t s = AIBinder_prepareTransaction(binder, &in); s != STATUS_OK) return s;
    if (write) write(in);
    ndk::ScopedAParcel ignored;
    return AIBinder_transact(binder, code, &in, out != nullptr ? out->getR() : ignored.getR(),
                             flags);
}

binder_status_t callWithBinder(AIBinder* binder, transaction_code_t code, AIBinder* argument,
                               ndk::ScopedAParcel* out = nullptr) {
    return call(
            binder, code, [argument](AParcel* in) { AParcel_writeStrongBinder(in, argument); },
            out);
}

std::vector<int32_t> readInts(const AParcel* parcel) {
    std::vector<int32_t> values;
    AParcel_readInt32Array(parcel, &values, [](void* data, int32_t length, int32_t** buffer) {
        auto* v = static_cast<std::vector<int32_t>*>(data);
        v->resize(length < 0 ? 0 : static_cast<size_t>(length));
        *buffer = v->data();
        return true;
    });
    return values;
}

bool waitForRecorded(EchoState& state, size_t count) {
    std::unique_lock<std::mutex> lock(state.mutex);
    return state.cv.wait_for(lock, 5s, [&] { return state.received.size() >= count; });
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
        for (pid_t pid : children_) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
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

    pid_t spawnService(const char* instance, std::vector<std::string> extra = {}) {
        std::vector<std::string> env;
        for (char** e = environ; *e != nullptr; ++e) {
            if (strncmp(*e, "BINDER_HOST_DIR=", 16) != 0) env.emplace_back(*e);
        }
        env.push_back("BINDER_HOST_DIR=" + dir_);
        std::vector<char*> envp;
        for (std::string& e : env) envp.push_back(e.data());
        envp.push_back(nullptr);
        pid_t pid = 0;
        std::vector<std::string> argv{SOCKET_ECHO_SERVICE, instance};
        argv.insert(argv.end(), extra.begin(), extra.end());
        if (vexal::testing::spawnProgram(&pid, argv, nullptr, envp.data()) != 0) {
            return -1;
        }
        children_.push_back(pid);
        return pid;
    }

    void killChild(pid_t pid, int signal = SIGKILL, int* status = nullptr) {
        kill(pid, signal);
        int ignored = 0;
        waitpid(pid, status != nullptr ? status : &ignored, 0);
        children_.erase(std::find(children_.begin(), children_.end(), pid));
    }

    static ndk::SpAIBinder waitForEcho(const char* instance) {
        ndk::SpAIBinder binder(AServiceManager_waitForService(instance));
        if (binder.get() != nullptr) AIBinder_associateClass(binder.get(), echoClass());
        return binder;
    }

    // Lives until after TearDown, so late callbacks from the service still find it.
    EchoState& makeState() { return *states_.emplace_back(std::make_unique<EchoState>()); }

    std::string base_;
    std::string dir_;

  private:
    std::vector<pid_t> children_;
    std::vector<std::unique_ptr<EchoState>> states_;
};

TEST_F(SocketTest, CallsReachAServiceInAnotherProcess) {
    pid_t child = spawnService(kName);
    ASSERT_GT(child, 0);
    ndk::SpAIBinder echo = waitForEcho(kName);
    ASSERT_NE(nullptr, echo.get());
    EXPECT_TRUE(AIBinder_isRemote(echo.get()));
    EXPECT_TRUE(AIBinder_isAlive(echo.get()));
    EXPECT_EQ(STATUS_OK, AIBinder_ping(echo.get()));

    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), "over the socket", &reply));
    EXPECT_EQ("over the socket", reply);
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), std::string(100000, 'x'), &reply));
    EXPECT_EQ(100000u, reply->size());

    ndk::SpAIBinder again(AServiceManager_checkService(kName));
    EXPECT_EQ(echo.get(), again.get());
#pragma GCC diagnostic push  // deprecated on devices too, still part of the API under test
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    ndk::SpAIBinder got(AServiceManager_getService(kName));
#pragma GCC diagnostic pop
    EXPECT_EQ(echo.get(), got.get());

    ndk::ScopedAParcel out;
    ASSERT_EQ(STATUS_OK, call(echo.get(), kCallerIdentity, nullptr, &out));
    int32_t callingPid = 0, callingUid = 0, servicePid = 0;
    AParcel_readInt32(out.get(), &callingPid);
    AParcel_readInt32(out.get(), &callingUid);
    AParcel_readInt32(out.get(), &servicePid);
    EXPECT_EQ(getpid(), callingPid);
    EXPECT_EQ(static_cast<int32_t>(getuid()), callingUid);
    EXPECT_EQ(child, servicePid);

    EXPECT_EQ(STATUS_PERMISSION_DENIED, call(echo.get(), kFail, nullptr, nullptr));
}

TEST_F(SocketTest, OnewayCallsArriveInOrder) {
    ASSERT_GT(spawnService(kName), 0);
    ndk::SpAIBinder echo = waitForEcho(kName);
    ASSERT_NE(nullptr, echo.get());
    constexpr int32_t kCount = 300;
    for (int32_t i = 0; i < kCount; ++i) {
        ASSERT_EQ(STATUS_OK,
                  call(
                          echo.get(), kRecord, [i](AParcel* in) { AParcel_writeInt32(in, i); },
                          nullptr, FLAG_ONEWAY));
    }
    ndk::ScopedAParcel out;
    ASSERT_EQ(STATUS_OK, call(
                                 echo.get(), kWaitRecorded,
                                 [](AParcel* in) { AParcel_writeInt32(in, kCount); }, &out));
    std::vector<int32_t> expected(kCount);
    for (int32_t i = 0; i < kCount; ++i) expected[i] = i;
    EXPECT_EQ(expected, readInts(out.get()));
}

TEST_F(SocketTest, ServiceCallsBackWhileTheCallIsInFlight) {
    pid_t child = spawnService(kName);
    ndk::SpAIBinder echo = waitForEcho(kName);
    ASSERT_NE(nullptr, echo.get());
    EchoState& mine = makeState();
    ndk::SpAIBinder callback = newEcho(&mine);

    ndk::ScopedAParcel out;
    ASSERT_EQ(STATUS_OK, call(
                                 echo.get(), kCallBack,
                                 [&](AParcel* in) {
                                     AParcel_writeStrongBinder(in, callback.get());
                                     writeString(in, "nested");
                                 },
                                 &out));
    bool serviceSawProxy = false;
    std::optional<std::string> echoed;
    AParcel_readBool(out.get(), &serviceSawProxy);
    readString(out.get(), &echoed);
    EXPECT_TRUE(serviceSawProxy);
    EXPECT_EQ("nested", echoed);
    EXPECT_EQ(1, mine.calls.load());
    {
        std::lock_guard<std::mutex> lock(mine.mutex);
        EXPECT_EQ(child, mine.lastCallingPid);
    }

    ASSERT_EQ(STATUS_OK, call(
                                 echo.get(), kCallBackOneway,
                                 [&](AParcel* in) {
                                     AParcel_writeStrongBinder(in, callback.get());
                                     AParcel_writeInt32(in, 42);
                                 },
                                 nullptr));
    ASSERT_TRUE(waitForRecorded(mine, 1));
    std::lock_guard<std::mutex> lock(mine.mutex);
    EXPECT_EQ(std::vector<int32_t>{42}, mine.received);
}

TEST_F(SocketTest, ServiceThreadCallsAKeptCallbackLater) {
    ASSERT_GT(spawnService(kName), 0);
    ndk::SpAIBinder echo = waitForEcho(kName);
    ASSERT_NE(nullptr, echo.get());
    EchoState& mine = makeState();
    ndk::SpAIBinder callback = newEcho(&mine);
    ASSERT_EQ(STATUS_OK, callWithBinder(echo.get(), kRemember, callback.get()));
    ASSERT_EQ(STATUS_OK, call(
                                 echo.get(), kNotifyLater,
                                 [](AParcel* in) { AParcel_writeInt32(in, 50); }, nullptr));
    ASSERT_TRUE(waitForRecorded(mine, 50));
    std::lock_guard<std::mutex> lock(mine.mutex);
    for (int32_t i = 0; i < 50; ++i) EXPECT_EQ(i, mine.received[i]);
}

TEST_F(SocketTest, ObjectsComingBackResolveToTheirOwner) {
    ASSERT_GT(spawnService(kName), 0);
    ndk::SpAIBinder echo = waitForEcho(kName);
    ASSERT_NE(nullptr, echo.get());

    ndk::ScopedAParcel out;
    ASSERT_EQ(STATUS_OK, call(echo.get(), kReturnSelf, nullptr, &out));
    ndk::SpAIBinder self;
    ASSERT_EQ(STATUS_OK, AParcel_readStrongBinder(out.get(), self.getR()));
    EXPECT_EQ(echo.get(), self.get());

    // What this process itself sees when its object goes through a parcel.
    EchoState& mine = makeState();
    ndk::SpAIBinder callback = newEcho(&mine);
    ndk::ScopedAParcel parcel(AParcel_create());
    ASSERT_EQ(STATUS_OK, AParcel_writeStrongBinder(parcel.get(), callback.get()));
    AParcel_setDataPosition(parcel.get(), 0);
    ndk::SpAIBinder here;
    ASSERT_EQ(STATUS_OK, AParcel_readStrongBinder(parcel.get(), here.getR()));

    ndk::ScopedAParcel back;
    ASSERT_EQ(STATUS_OK, callWithBinder(echo.get(), kReturnBinder, callback.get(), &back));
    ndk::SpAIBinder returned;
    ASSERT_EQ(STATUS_OK, AParcel_readStrongBinder(back.get(), returned.getR()));
    EXPECT_EQ(here.get(), returned.get());
    ASSERT_TRUE(AIBinder_associateClass(returned.get(), echoClass()));
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(returned.get(), "home", &reply));
    EXPECT_EQ("home", reply);
    std::lock_guard<std::mutex> lock(mine.mutex);
    EXPECT_EQ(getpid(), mine.lastCallingPid);
}

TEST_F(SocketTest, CallbackIsReleasedWhenTheServiceDropsIt) {
    ASSERT_GT(spawnService(kName), 0);
    ndk::SpAIBinder echo = waitForEcho(kName);
    ASSERT_NE(nullptr, echo.get());
    EchoState& mine = makeState();
    {
        ndk::SpAIBinder callback = newEcho(&mine);
        ASSERT_EQ(STATUS_OK, callWithBinder(echo.get(), kRemember, callback.get()));
    }
    EXPECT_FALSE(mine.destroyed.load());
    // The service's release reaches us before the reply does.
    ASSERT_EQ(STATUS_OK, call(echo.get(), kForget, nullptr, nullptr));
    EXPECT_TRUE(mine.destroyed.load());
}

TEST_F(SocketTest, ObjectsOfAThirdProcessAreRefused) {
    ASSERT_GT(spawnService(kName), 0);
    ASSERT_GT(spawnService(kOther), 0);
    ndk::SpAIBinder first = waitForEcho(kName);
    ndk::SpAIBinder second = waitForEcho(kOther);
    ASSERT_NE(nullptr, first.get());
    ASSERT_NE(nullptr, second.get());
    EXPECT_NE(first.get(), second.get());
    EXPECT_EQ(STATUS_BAD_VALUE, callWithBinder(second.get(), kRemember, first.get()));
    std::optional<std::string> reply;
    EXPECT_EQ(STATUS_OK, callEcho(second.get(), "still fine", &reply));
    EXPECT_EQ(STATUS_OK, callEcho(first.get(), "still fine", &reply));
}

TEST_F(SocketTest, KillMidTrafficFailsEveryCallAndFiresRecipientsOnce) {
    pid_t child = spawnService(kName);
    ndk::SpAIBinder echo = waitForEcho(kName);
    ASSERT_NE(nullptr, echo.get());
    DeathCounter first;
    DeathCounter second;
    ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(onDied));
    ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(echo.get(), recipient.get(), &first));
    ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(echo.get(), recipient.get(), &second));

    std::mutex mutex;
    std::condition_variable progress;
    int calls = 0;
    std::optional<Clock::time_point> killedAt;
    auto traffic = [&] {
        std::vector<binder_status_t> unexpected;
        Clock::duration lastCall{};
        for (;;) {
            std::optional<std::string> reply;
            const auto start = Clock::now();
            binder_status_t s = callEcho(echo.get(), "traffic", &reply);
            lastCall = Clock::now() - start;
            if (s == STATUS_DEAD_OBJECT) break;
            if (s != STATUS_OK) unexpected.push_back(s);
            std::lock_guard<std::mutex> lock(mutex);
            ++calls;
            progress.notify_all();
        }
        return std::make_pair(unexpected, lastCall);
    };
    std::vector<std::future<std::pair<std::vector<binder_status_t>, Clock::duration>>> workers;
    for (int i = 0; i < 4; ++i) workers.push_back(std::async(std::launch::async, traffic));
    auto blocked = std::async(std::launch::async,
                              [&] { return call(echo.get(), kBlock, nullptr, nullptr); });
    {
        std::unique_lock<std::mutex> lock(mutex);
        ASSERT_TRUE(progress.wait_for(lock, 5s, [&] { return calls >= 200; }));
    }
    kill(child, SIGKILL);
    killedAt = Clock::now();

    for (auto& worker : workers) {
        ASSERT_EQ(std::future_status::ready, worker.wait_for(5s));
        auto [unexpected, lastCall] = worker.get();
        EXPECT_TRUE(unexpected.empty());
        EXPECT_LT(lastCall, 3s);
    }
    ASSERT_EQ(std::future_status::ready, blocked.wait_for(5s));
    EXPECT_EQ(STATUS_DEAD_OBJECT, blocked.get());
    EXPECT_LT(Clock::now() - *killedAt, 5s);

    ASSERT_TRUE(waitForDeaths(first, 1));
    ASSERT_TRUE(waitForDeaths(second, 1));
    std::optional<std::string> reply;
    EXPECT_EQ(STATUS_DEAD_OBJECT, callEcho(echo.get(), "after", &reply));
    EXPECT_FALSE(AIBinder_isAlive(echo.get()));
    EXPECT_EQ(STATUS_DEAD_OBJECT, AIBinder_linkToDeath(echo.get(), recipient.get(), &first));
    binder_host::drainNotifications();
    EXPECT_EQ(1, first.died);
    EXPECT_EQ(1, second.died);
    killChild(child);
}

TEST_F(SocketTest, RestartedServiceIsReachableAgain) {
    pid_t child = spawnService(kName);
    ndk::SpAIBinder before = waitForEcho(kName);
    ASSERT_NE(nullptr, before.get());
    killChild(child);
    std::optional<std::string> reply;
    EXPECT_EQ(STATUS_DEAD_OBJECT, callEcho(before.get(), "gone", &reply));

    ASSERT_GT(spawnService(kName), 0);
    ndk::SpAIBinder after = waitForEcho(kName);
    ASSERT_NE(nullptr, after.get());
    EXPECT_NE(before.get(), after.get());
    EXPECT_TRUE(AIBinder_isAlive(after.get()));
    ASSERT_EQ(STATUS_OK, callEcho(after.get(), "back", &reply));
    EXPECT_EQ("back", reply);
    EXPECT_EQ(STATUS_DEAD_OBJECT, callEcho(before.get(), "gone", &reply));
}

TEST_F(SocketTest, BadFramesCloseOnlyTheirConnection) {
    ASSERT_GT(spawnService(kName), 0);
    ndk::SpAIBinder echo = waitForEcho(kName);
    ASSERT_NE(nullptr, echo.get());
    const std::string path = socketFile();

    const std::vector<std::vector<uint8_t>> garbage = {
            rawFrame(kTransact, {}, 0xffffffffu),             // beyond the size cap
            rawFrame(0xdead, std::vector<uint8_t>(8)),        // unknown frame type
            rawFrame(kTransact, std::vector<uint8_t>(20)),    // transaction cut short
            rawFrame(kRelease, std::vector<uint8_t>(12, 7)),  // release of nothing we hold
    };
    for (const auto& bytes : garbage) {
        int fd = connectUnix(path);
        ASSERT_GE(fd, 0);
        ASSERT_EQ(static_cast<ssize_t>(bytes.size()),
                  send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL));
        EXPECT_TRUE(closedByPeer(fd));
        close(fd);
    }
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), "unharmed", &reply));
    EXPECT_EQ("unharmed", reply);
}

struct Hello {
    uint64_t ref = 0;
    std::string descriptor;
    uint64_t key = 0;
};

// Reads the HELLO the service greets every socket with.
std::optional<Hello> readHello(int fd) {
    uint32_t type = 0;
    std::vector<uint8_t> body;
    if (!readRawFrame(fd, &type, &body) || type != kHello || body.size() < 12) return std::nullopt;
    Hello hello;
    uint32_t length = 0;
    memcpy(&hello.ref, body.data(), 8);
    memcpy(&length, body.data() + 8, 4);
    if (body.size() != 12 + length + 8) return std::nullopt;
    hello.descriptor.assign(reinterpret_cast<const char*>(body.data() + 12), length);
    memcpy(&hello.key, body.data() + 12 + length, 8);
    return hello;
}

std::vector<uint8_t> joinFrame(uint64_t key) {
    std::vector<uint8_t> body(8);
    memcpy(body.data(), &key, 8);
    return rawFrame(kJoin, body);
}

bool sendBytes(int fd, const std::vector<uint8_t>& bytes) {
    return sendExact(fd, bytes.data(), bytes.size());
}

TEST_F(SocketTest, ChannelsJoinOnlyAConnectionOfTheSameProcess) {
    ASSERT_GT(spawnService(kName), 0);
    ndk::SpAIBinder echo = waitForEcho(kName);
    ASSERT_NE(nullptr, echo.get());
    const std::string path = socketFile();

    const int owner = connectUnix(path);
    ASSERT_GE(owner, 0);
    const std::optional<Hello> hello = readHello(owner);
    ASSERT_TRUE(hello.has_value());
    EXPECT_EQ("test.vexal.IEcho", hello->descriptor);
    ASSERT_NE(0u, hello->key);

    // Another process that learned the key still cannot join.
    pid_t stranger = 0;
    ASSERT_EQ(0,
              vexal::testing::spawnProgram(
                      &stranger, {SOCKET_ECHO_SERVICE, "--join", path, std::to_string(hello->key)},
                      nullptr, environ));
    int status = -1;
    ASSERT_EQ(stranger, waitpid(stranger, &status, 0));
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(0, WEXITSTATUS(status)) << "1: a foreign JOIN was accepted, 2: it could not ask";

    // A key nobody was given.
    const int guesser = connectUnix(path);
    ASSERT_GE(guesser, 0);
    ASSERT_TRUE(readHello(guesser).has_value());
    ASSERT_TRUE(sendBytes(guesser, joinFrame(hello->key ^ 1)));
    EXPECT_TRUE(closedByPeer(guesser));
    close(guesser);

    // The same process joins; the channel answers a call with the frames sent before it.
    const int channel = connectUnix(path);
    ASSERT_GE(channel, 0);
    ASSERT_TRUE(readHello(channel).has_value());
    ASSERT_TRUE(sendBytes(channel, joinFrame(hello->key)));
    uint32_t type = 0;
    std::vector<uint8_t> body;
    ASSERT_TRUE(readRawFrame(channel, &type, &body));
    EXPECT_EQ(kJoined, type);
    EXPECT_TRUE(body.empty());

    // transaction 7 to the service with an empty parcel: no interface token
    std::vector<uint8_t> transact(8 + 8 + 4 + 4 + 4 + 4);
    const uint64_t transaction = 7;
    const uint32_t code = 0x00abcdef;
    memcpy(transact.data(), &transaction, 8);
    memcpy(transact.data() + 8, &hello->ref, 8);
    memcpy(transact.data() + 16, &code, 4);
    ASSERT_TRUE(sendBytes(channel, rawFrame(kTransact, transact)));
    ASSERT_TRUE(readRawFrame(channel, &type, &body));
    EXPECT_EQ(kReply, type);
    ASSERT_EQ(8u + 8u + 4u + 4u + 4u, body.size());
    uint64_t repliedTo = 0;
    uint64_t framesBefore = 0;
    int32_t replyStatus = 0;
    memcpy(&repliedTo, body.data(), 8);
    memcpy(&framesBefore, body.data() + 8, 8);
    memcpy(&replyStatus, body.data() + 16, 4);
    EXPECT_EQ(transaction, repliedTo);
    EXPECT_EQ(1u, framesBefore) << "only the HELLO went out on the owner's socket";
    EXPECT_EQ(STATUS_BAD_TYPE, replyStatus);

    // One-way calls have no place on a channel: the connection goes, the service stays.
    const uint32_t oneway = FLAG_ONEWAY;
    memcpy(transact.data() + 20, &oneway, 4);
    ASSERT_TRUE(sendBytes(channel, rawFrame(kTransact, transact)));
    EXPECT_TRUE(closedByPeer(channel));
    EXPECT_TRUE(closedByPeer(owner));
    close(channel);
    close(owner);
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), "unharmed", &reply));
    EXPECT_EQ("unharmed", reply);
}

// A service that gave binder no thread answers nothing: the call waits, as the driver holds it,
// until the service starts its pool.
TEST_F(SocketTest, CallsWaitUntilTheServiceGivesBinderAThread) {
    const pid_t service = spawnService(kName, {"--pool-on-sigusr1"});
    ASSERT_GT(service, 0);
    ndk::SpAIBinder echo = waitForEcho(kName);
    ASSERT_NE(nullptr, echo.get());
    auto answer = std::async(std::launch::async, [&echo] {
        std::optional<std::string> reply;
        const binder_status_t status = callEcho(echo.get(), "held", &reply);
        return status == STATUS_OK ? reply.value_or("<null>") : "status " + std::to_string(status);
    });
    const std::string queued = dir_ + "/queued";
    const auto deadline = Clock::now() + 10s;
    while (!std::filesystem::exists(queued) && Clock::now() < deadline) {
        std::this_thread::sleep_for(2ms);
    }
    const bool reached = std::filesystem::exists(queued);
    const bool answeredEarly = answer.wait_for(0s) != std::future_status::timeout;
    // Before any assertion: the caller's thread must not be left waiting.
    ASSERT_EQ(0, kill(service, SIGUSR1));
    EXPECT_TRUE(reached) << "the call never reached the service";
    EXPECT_FALSE(answeredEarly) << "answered by a thread the service never gave binder";
    EXPECT_EQ("held", answer.get());
}

// Every channel costs the service a thread: no more join than its binder threads may number
// (the pool's first thread, the joined main thread and 15 started on demand by default), and a
// channel that closes makes room again.
TEST_F(SocketTest, ChannelsStayWithinTheServicesThreadLimit) {
    ASSERT_GT(spawnService(kName), 0);
    ndk::SpAIBinder echo = waitForEcho(kName);
    ASSERT_NE(nullptr, echo.get());
    const std::string path = socketFile();
    const int owner = connectUnix(path);
    ASSERT_GE(owner, 0);
    const std::optional<Hello> hello = readHello(owner);
    ASSERT_TRUE(hello.has_value());

    // Nothing has called the service yet, so no channel of the proxy holds a thread.
    auto join = [&]() -> int {
        const int fd = connectUnix(path);
        uint32_t type = 0;
        std::vector<uint8_t> body;
        if (fd < 0 || !readHello(fd).has_value() || !sendBytes(fd, joinFrame(hello->key)) ||
            !readRawFrame(fd, &type, &body) || type != kJoined) {
            if (fd >= 0) close(fd);
            return -1;
        }
        return fd;
    };
    std::vector<int> joined;
    for (int i = 0; i < 40; ++i) {
        const int fd = join();
        if (fd < 0) break;
        joined.push_back(fd);
    }
    EXPECT_EQ(17u, joined.size());
    EXPECT_EQ(-1, join()) << "a channel beyond the limit was admitted";
    // A refused channel leaves the caller on the shared stream, not without an answer.
    std::optional<std::string> refused;
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), "while full", &refused));
    EXPECT_EQ("while full", refused);

    close(joined.back());
    joined.pop_back();
    int again = -1;
    const auto deadline = Clock::now() + 5s;
    while (again < 0 && Clock::now() < deadline) {
        again = join();
        if (again < 0) std::this_thread::sleep_for(10ms);
    }
    EXPECT_GE(again, 0) << "a closed channel did not give its thread back";
    if (again >= 0) close(again);
    for (int fd : joined) close(fd);
    close(owner);

    // Calls still work, on a channel or not.
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), "after", &reply));
    EXPECT_EQ("after", reply);
}

TEST_F(SocketTest, ConcurrentCallersEachGetTheirOwnReply) {
    ASSERT_GT(spawnService(kName), 0);
    ndk::SpAIBinder echo = waitForEcho(kName);
    ASSERT_NE(nullptr, echo.get());
    constexpr int kThreads = 12;
    constexpr int kCalls = 150;
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kCalls; ++i) {
                const std::string text = std::to_string(t) + "/" + std::to_string(i);
                std::optional<std::string> reply;
                if (callEcho(echo.get(), text, &reply) != STATUS_OK || reply != text) ++wrong;
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(0, wrong.load());
}

TEST_F(SocketTest, WaitForServiceBlocksUntilTheSocketAnswers) {
    const auto start = Clock::now();
    EXPECT_EQ(nullptr, AServiceManager_waitForService("test.vexal.IEcho/nobody"));
    EXPECT_EQ(nullptr, AServiceManager_checkService(kName));
    EXPECT_LT(Clock::now() - start, 1s);
    EXPECT_TRUE(AServiceManager_isDeclared(kName));

    auto waiter = std::async(std::launch::async, [] { return waitForEcho(kName); });
    EXPECT_EQ(std::future_status::timeout, waiter.wait_for(100ms));
    ASSERT_GT(spawnService(kName), 0);
    ASSERT_EQ(std::future_status::ready, waiter.wait_for(10s));
    ndk::SpAIBinder echo = waiter.get();
    ASSERT_NE(nullptr, echo.get());
    std::optional<std::string> reply;
    EXPECT_EQ(STATUS_OK, callEcho(echo.get(), "arrived", &reply));
}

TEST_F(SocketTest, TermStopsTheServiceCleanly) {
    pid_t child = spawnService(kName);
    ndk::SpAIBinder echo = waitForEcho(kName);
    ASSERT_NE(nullptr, echo.get());
    EchoState& mine = makeState();
    ndk::SpAIBinder callback = newEcho(&mine);
    ASSERT_EQ(STATUS_OK, callWithBinder(echo.get(), kRemember, callback.get()));
    int status = 0;
    killChild(child, SIGTERM, &status);
    // Under the sanitizers a leak would make the exit status non-zero.
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(0, WEXITSTATUS(status));
    EXPECT_FALSE(std::filesystem::exists(socketFile()));
    std::optional<std::string> reply;
    EXPECT_EQ(STATUS_DEAD_OBJECT, callEcho(echo.get(), "stopped", &reply));
}

TEST_F(SocketTest, ServesOwnServicesInProcessAndToOthers) {
    EchoState& mine = makeState();
    ndk::SpAIBinder local = newEcho(&mine);
    ASSERT_EQ(EX_NONE, AServiceManager_addService(local.get(), kOther));
    EXPECT_TRUE(std::filesystem::exists(dir_ + "/test.vexal.IEcho%2fother.sock"));
    ndk::SpAIBinder here(AServiceManager_checkService(kOther));
    ASSERT_NE(nullptr, here.get());
    ASSERT_TRUE(AIBinder_associateClass(here.get(), echoClass()));
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(here.get(), "in process", &reply));
    std::lock_guard<std::mutex> lock(mine.mutex);
    EXPECT_EQ(getpid(), mine.lastCallingPid);
}

class SocketDirTest : public testing::Test {
  protected:
    void SetUp() override {
        char base[] = "/tmp/binder_socket_dirXXXXXX";
        ASSERT_NE(nullptr, mkdtemp(base));
        base_ = base;
    }
    void TearDown() override {
        binder_host::resetServiceManager();
        binder_host::setHostDirectory("");
        std::filesystem::remove_all(base_);
    }
    std::string base_;
};

TEST_F(SocketDirTest, CreatesAMissingDirectoryPrivate) {
    const std::string dir = base_ + "/new";
    const mode_t saved = umask(0);
    const bool usable = binder_host::setHostDirectory(dir);
    umask(saved);
    ASSERT_TRUE(usable);
    struct stat st = {};
    ASSERT_EQ(0, stat(dir.c_str(), &st));
    EXPECT_TRUE(S_ISDIR(st.st_mode));
    EXPECT_EQ(0700u, st.st_mode & 0777);
    EXPECT_EQ(dir, binder_host::hostDirectory());
}

TEST_F(SocketDirTest, RefusesADirectoryOpenToTheGroup) {
    const std::string dir = base_ + "/shared";
    ASSERT_EQ(0, mkdir(dir.c_str(), 0700));
    ASSERT_EQ(0, chmod(dir.c_str(), 0770));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(binder_host::setHostDirectory(dir));
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, log.find("refused")) << log;
    EXPECT_EQ("", binder_host::hostDirectory());

    // Only in-process services remain, and nothing is put in the refused directory.
    EchoState state;
    ndk::SpAIBinder local = newEcho(&state);
    ASSERT_EQ(EX_NONE, AServiceManager_addService(local.get(), kName));
    ndk::SpAIBinder proxy(AServiceManager_checkService(kName));
    EXPECT_NE(nullptr, proxy.get());
    EXPECT_EQ(nullptr, AServiceManager_checkService(kOther));
    EXPECT_EQ(nullptr, AServiceManager_waitForService(kOther));
    EXPECT_TRUE(std::filesystem::is_empty(dir));
    proxy = ndk::SpAIBinder();
    binder_host::resetServiceManager();
}

TEST_F(SocketDirTest, RefusesADirectoryOwnedBySomeoneElse) {
    if (geteuid() != 0) GTEST_SKIP() << "needs root to give the directory away";
    const std::string dir = base_ + "/theirs";
    ASSERT_EQ(0, mkdir(dir.c_str(), 0700));
    ASSERT_EQ(0, chown(dir.c_str(), 65534, 65534));
    EXPECT_FALSE(binder_host::setHostDirectory(dir));
    EXPECT_EQ("", binder_host::hostDirectory());
}

}  // namespace
