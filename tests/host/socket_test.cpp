// Calls, objects, deaths and restarts across processes over the socket transport.
#include <sys/stat.h>

#include <atomic>
#include <condition_variable>
#include <future>
#include <thread>

#include "socket_test_support.h"

namespace {

using namespace socket_test;

TEST_F(SocketTest, CallsReachAServiceInAnotherProcess) {
    ndk::SpAIBinder echo = startEcho();
    ASSERT_NE(nullptr, echo.get());
    EXPECT_TRUE(AIBinder_isRemote(echo.get()));
    EXPECT_EQ(STATUS_OK, AIBinder_ping(echo.get()));
    EXPECT_EQ(echo.get(), ndk::SpAIBinder(AServiceManager_checkService(kName)).get());
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), std::string(100000, 'x'), &reply));
    EXPECT_EQ(std::string(100000, 'x'), reply);
    EXPECT_EQ(STATUS_PERMISSION_DENIED, call(echo.get(), kFail, nullptr));

    ndk::ScopedAParcel out;
    ASSERT_EQ(STATUS_OK, call(echo.get(), kCallerIdentity, nullptr, &out));
    int32_t identity[3] = {};
    for (int32_t& value : identity) AParcel_readInt32(out.get(), &value);
    EXPECT_EQ(getpid(), identity[0]);
    EXPECT_EQ(static_cast<int32_t>(getuid()), identity[1]);
    EXPECT_EQ(children_.back()->pid(), identity[2]);
}

TEST_F(SocketTest, ServiceCallsBackInTheCallAndLaterFromItsOwnThread) {
    ndk::SpAIBinder echo = startEcho();
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
    EXPECT_EQ(children_.back()->pid(), lastCaller(mine));

    ASSERT_EQ(STATUS_OK, callWithBinder(echo.get(), kRemember, callback.get()));
    ASSERT_EQ(STATUS_OK, sendInt(echo.get(), kNotifyLater, 50));
    ASSERT_TRUE(waitForRecorded(mine, 50));
    std::lock_guard<std::mutex> lock(mine.mutex);
    for (int32_t i = 0; i < 50; ++i) EXPECT_EQ(i, mine.received[i]);
}

TEST_F(SocketTest, ObjectsComingBackResolveToTheirOwnerAndAreReleased) {
    ndk::SpAIBinder echo = startEcho();
    ASSERT_NE(nullptr, echo.get());
    ndk::ScopedAParcel out;
    ndk::SpAIBinder returned;
    ASSERT_EQ(STATUS_OK, callWithBinder(echo.get(), kReturnBinder, echo.get(), &out));
    ASSERT_EQ(STATUS_OK, AParcel_readStrongBinder(out.get(), returned.getR()));
    EXPECT_EQ(echo.get(), returned.get());

    EchoState& mine = makeState();
    {
        ndk::SpAIBinder callback = newEcho(&mine);
        ASSERT_EQ(STATUS_OK, callWithBinder(echo.get(), kReturnBinder, callback.get(), &out));
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
}

TEST_F(SocketTest, ObjectsOfAThirdProcessAreRefused) {
    ndk::SpAIBinder first = startEcho(kName);
    ndk::SpAIBinder second = startEcho(kOther);
    ASSERT_TRUE(first.get() != nullptr && second.get() != nullptr);
    EXPECT_NE(first.get(), second.get());
    EXPECT_EQ(STATUS_BAD_VALUE, callWithBinder(second.get(), kRemember, first.get()));
    std::optional<std::string> reply;
    EXPECT_EQ(STATUS_OK, callEcho(second.get(), "still fine", &reply));
    EXPECT_EQ(STATUS_OK, callEcho(first.get(), "still fine", &reply));
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
    ASSERT_NE(nullptr, echo.get());
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

TEST_F(SocketTest, RestartedServiceIsReachableAgain) {
    ndk::SpAIBinder before = startEcho();
    ASSERT_NE(nullptr, before.get());
    children_.clear();
    std::optional<std::string> reply;
    EXPECT_EQ(STATUS_DEAD_OBJECT, callEcho(before.get(), "gone", &reply));
    ndk::SpAIBinder after = startEcho();
    ASSERT_NE(nullptr, after.get());
    EXPECT_NE(before.get(), after.get());
    ASSERT_EQ(STATUS_OK, callEcho(after.get(), "back", &reply));
    EXPECT_EQ("back", reply);
    EXPECT_EQ(STATUS_DEAD_OBJECT, callEcho(before.get(), "gone", &reply));
}

TEST_F(SocketTest, WaitForServiceBlocksUntilTheSocketAnswers) {
    const auto start = Clock::now();
    EXPECT_EQ(nullptr, AServiceManager_waitForService("test.vexal.IEcho/nobody"));
    EXPECT_EQ(nullptr, AServiceManager_checkService(kName));
    EXPECT_LT(Clock::now() - start, 1s);
    EXPECT_TRUE(AServiceManager_isDeclared(kName));
    auto waiter = std::async(std::launch::async, [] { return waitForEcho(kName); });
    EXPECT_EQ(std::future_status::timeout, waiter.wait_for(100ms));
    spawnService(kName);
    ASSERT_EQ(std::future_status::ready, waiter.wait_for(10s));
    ndk::SpAIBinder echo = waiter.get();
    std::optional<std::string> reply;
    EXPECT_EQ(STATUS_OK, callEcho(echo.get(), "arrived", &reply));
}

TEST_F(SocketTest, TermStopsTheServiceCleanly) {
    ndk::SpAIBinder echo = startEcho();
    ASSERT_NE(nullptr, echo.get());
    EchoState& mine = makeState();
    ndk::SpAIBinder callback = newEcho(&mine);
    ASSERT_EQ(STATUS_OK, callWithBinder(echo.get(), kRemember, callback.get()));
    kill(children_.back()->pid(), SIGTERM);
    // Under the sanitizers a leak would make the exit status non-zero.
    EXPECT_EQ(0, children_.back()->waitForExit());
    EXPECT_FALSE(std::filesystem::exists(socketFile()));
    std::optional<std::string> reply;
    EXPECT_EQ(STATUS_DEAD_OBJECT, callEcho(echo.get(), "stopped", &reply));
}

TEST_F(SocketTest, ServesOwnServicesInProcessAndToOthers) {
    EchoState& mine = makeState();
    ASSERT_EQ(EX_NONE, AServiceManager_addService(newEcho(&mine).get(), kOther));
    EXPECT_TRUE(std::filesystem::exists(dir_ + "/test.vexal.IEcho%2fother.sock"));
    ndk::SpAIBinder here = waitForEcho(kOther);
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(here.get(), "in process", &reply));
    EXPECT_EQ(getpid(), lastCaller(mine));
}

// Only a private directory of our own is used; otherwise only in-process services remain, and
// nothing is put in the refused directory.
TEST_F(SocketTest, UsesOnlyAPrivateDirectoryOfItsOwn) {
    const std::string created = base_ + "/new";
    const mode_t saved = umask(0);
    EXPECT_TRUE(binder_host::setHostDirectory(created));
    umask(saved);
    struct stat st = {};
    ASSERT_EQ(0, stat(created.c_str(), &st));
    EXPECT_EQ(S_IFDIR | 0700u, st.st_mode & (S_IFMT | 0777));
    EXPECT_EQ(created, binder_host::hostDirectory());

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

}  // namespace
