// Calls, objects, deaths and restarts across processes over the socket transport.
#include "socket_test_support.h"

namespace {

using namespace socket_test;
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
