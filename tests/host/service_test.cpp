#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <binder_host/service_control.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <cstdio>
#include <future>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "binder_test_util.h"

namespace {

using namespace binder_test;
using namespace std::chrono_literals;

constexpr const char* kName = "test.vexal.IEcho/default";

struct DeathCounter {
    std::atomic<int> died{0};
    std::atomic<int> unlinked{0};
    std::mutex mutex;
    std::condition_variable cv;
    std::thread::id thread;
};

void onDied(void* cookie) {
    auto* counter = static_cast<DeathCounter*>(cookie);
    std::lock_guard<std::mutex> lock(counter->mutex);
    counter->thread = std::this_thread::get_id();
    counter->died++;
    counter->cv.notify_all();
}

void onUnlinked(void* cookie) {
    static_cast<DeathCounter*>(cookie)->unlinked++;
}

class ServiceTest : public testing::Test {
  protected:
    void TearDown() override { binder_host::resetServiceManager(); }

    // Outlives the test body: services are only released by TearDown.
    EchoState& makeState() { return *states_.emplace_back(std::make_unique<EchoState>()); }

  private:
    std::vector<std::unique_ptr<EchoState>> states_;

  protected:
    ndk::SpAIBinder addEcho(EchoState* state) {
        ndk::SpAIBinder local = newEcho(state);
        EXPECT_EQ(EX_NONE, AServiceManager_addService(local.get(), kName));
        ndk::SpAIBinder proxy(AServiceManager_checkService(kName));
        if (proxy.get() != nullptr) AIBinder_associateClass(proxy.get(), echoClass());
        return proxy;
    }
};

TEST_F(ServiceTest, NotDeclaredAnswersNullAtOnce) {
    EXPECT_FALSE(AServiceManager_isDeclared(kName));
    EXPECT_EQ(nullptr, AServiceManager_checkService(kName));
    EXPECT_EQ(nullptr, AServiceManager_waitForService(kName));
#pragma GCC diagnostic push  // deprecated on devices too, still part of the API under test
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    EXPECT_EQ(nullptr, AServiceManager_getService(kName));
#pragma GCC diagnostic pop
}

TEST_F(ServiceTest, DeclaredNotRunningWaitsUntilAdded) {
    binder_host::declareService(kName);
    EXPECT_TRUE(AServiceManager_isDeclared(kName));
    EXPECT_EQ(nullptr, AServiceManager_checkService(kName));

    auto waiter = std::async(std::launch::async,
                             [] { return ndk::SpAIBinder(AServiceManager_waitForService(kName)); });
    EXPECT_EQ(std::future_status::timeout, waiter.wait_for(100ms));

    EchoState& state = makeState();
    ndk::SpAIBinder local = newEcho(&state);
    ASSERT_EQ(EX_NONE, AServiceManager_addService(local.get(), kName));
    ASSERT_EQ(std::future_status::ready, waiter.wait_for(5s));
    ndk::SpAIBinder proxy = waiter.get();
    ASSERT_NE(nullptr, proxy.get());
    EXPECT_TRUE(AIBinder_isRemote(proxy.get()));
}

TEST_F(ServiceTest, UndeclaringReleasesWaiters) {
    binder_host::declareService(kName);
    auto waiter = std::async(std::launch::async,
                             [] { return ndk::SpAIBinder(AServiceManager_waitForService(kName)); });
    EXPECT_EQ(std::future_status::timeout, waiter.wait_for(50ms));
    binder_host::undeclareService(kName);
    ASSERT_EQ(std::future_status::ready, waiter.wait_for(5s));
    EXPECT_EQ(nullptr, waiter.get().get());
}

TEST_F(ServiceTest, RunningWithoutDeclarationIsFoundButNotDeclared) {
    EchoState& state = makeState();
    ndk::SpAIBinder proxy = addEcho(&state);
    ASSERT_NE(nullptr, proxy.get());
    EXPECT_FALSE(AServiceManager_isDeclared(kName));
    ndk::SpAIBinder waited(AServiceManager_waitForService(kName));
    EXPECT_EQ(proxy, waited);
}

TEST_F(ServiceTest, ManifestFileDeclaresInstances) {
    char dir[] = "/tmp/binder_host_testXXXXXX";
    ASSERT_NE(nullptr, mkdtemp(dir));
    const std::string manifest = std::string(dir) + "/manifest";
    FILE* file = fopen(manifest.c_str(), "w");
    ASSERT_NE(nullptr, file);
    fputs("# comment\n  test.vexal.IEcho/default  \ntest.vexal.IEcho/second\n", file);
    fclose(file);
    setenv("BINDER_HOST_DIR", dir, 1);
    EXPECT_TRUE(AServiceManager_isDeclared("test.vexal.IEcho/default"));
    EXPECT_FALSE(AServiceManager_isDeclared("test.vexal.IEcho/third"));
    std::set<std::string> seen;
    AServiceManager_forEachDeclaredInstance("test.vexal.IEcho", &seen, [](const char* i, void* c) {
        static_cast<std::set<std::string>*>(c)->insert(i);
    });
    EXPECT_EQ((std::set<std::string>{"default", "second"}), seen);
    unsetenv("BINDER_HOST_DIR");
    EXPECT_FALSE(AServiceManager_isDeclared("test.vexal.IEcho/default"));
    remove(manifest.c_str());
    rmdir(dir);
}

TEST_F(ServiceTest, KillFiresEachRecipientOnceOffTheCallerThread) {
    EchoState& state = makeState();
    ndk::SpAIBinder proxy = addEcho(&state);
    ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(onDied));
    AIBinder_DeathRecipient_setOnUnlinked(recipient.get(), onUnlinked);
    DeathCounter first;
    DeathCounter second;
    ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(proxy.get(), recipient.get(), &first));
    ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(proxy.get(), recipient.get(), &second));

    ASSERT_TRUE(binder_host::killService(kName));
    // killService waited for the handlers.
    EXPECT_EQ(1, first.died.load());
    EXPECT_EQ(1, second.died.load());
    EXPECT_EQ(1, first.unlinked.load());
    EXPECT_NE(std::this_thread::get_id(), first.thread);

    EXPECT_FALSE(AIBinder_isAlive(proxy.get()));
    EXPECT_EQ(STATUS_DEAD_OBJECT, AIBinder_ping(proxy.get()));
    std::optional<std::string> reply;
    EXPECT_EQ(STATUS_DEAD_OBJECT, callEcho(proxy.get(), "x", &reply));
    EXPECT_EQ(nullptr, AServiceManager_checkService(kName));
    EXPECT_EQ(STATUS_DEAD_OBJECT, AIBinder_linkToDeath(proxy.get(), recipient.get(), &first));
    EXPECT_FALSE(binder_host::killService(kName));
    EXPECT_EQ(1, first.died.load());
    EXPECT_EQ(0, state.calls.load());
}

TEST_F(ServiceTest, ReAddedServiceGivesFreshLiveProxy) {
    EchoState& state = makeState();
    ndk::SpAIBinder local = newEcho(&state);
    ASSERT_EQ(EX_NONE, AServiceManager_addService(local.get(), kName));
    ndk::SpAIBinder dead(AServiceManager_checkService(kName));
    ASSERT_TRUE(binder_host::killService(kName));
    EXPECT_FALSE(state.destroyed.load());

    ASSERT_EQ(EX_NONE, AServiceManager_addService(local.get(), kName));
    ndk::SpAIBinder fresh(AServiceManager_checkService(kName));
    ASSERT_NE(nullptr, fresh.get());
    EXPECT_NE(dead, fresh);
    EXPECT_TRUE(AIBinder_isAlive(fresh.get()));
    EXPECT_FALSE(AIBinder_isAlive(dead.get()));
    ASSERT_TRUE(AIBinder_associateClass(fresh.get(), echoClass()));
    std::optional<std::string> reply;
    EXPECT_EQ(STATUS_OK, callEcho(fresh.get(), "again", &reply));
    EXPECT_EQ("again", reply.value_or(""));
}

TEST_F(ServiceTest, UnlinkAndDeleteStopNotifications) {
    EchoState& state = makeState();
    ndk::SpAIBinder proxy = addEcho(&state);
    DeathCounter unlinkedCounter;
    DeathCounter deletedCounter;
    ndk::ScopedAIBinder_DeathRecipient kept(AIBinder_DeathRecipient_new(onDied));
    AIBinder_DeathRecipient_setOnUnlinked(kept.get(), onUnlinked);
    AIBinder_DeathRecipient* deleted = AIBinder_DeathRecipient_new(onDied);

    ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(proxy.get(), kept.get(), &unlinkedCounter));
    ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(proxy.get(), deleted, &deletedCounter));
    EXPECT_EQ(STATUS_OK, AIBinder_unlinkToDeath(proxy.get(), kept.get(), &unlinkedCounter));
    EXPECT_EQ(1, unlinkedCounter.unlinked.load());
    EXPECT_EQ(STATUS_NAME_NOT_FOUND,
              AIBinder_unlinkToDeath(proxy.get(), kept.get(), &unlinkedCounter));
    AIBinder_DeathRecipient_delete(deleted);

    ASSERT_TRUE(binder_host::killService(kName));
    EXPECT_EQ(0, unlinkedCounter.died.load());
    EXPECT_EQ(0, deletedCounter.died.load());
}

TEST_F(ServiceTest, LinkToDeathErrors) {
    EchoState& state = makeState();
    ndk::SpAIBinder local = newEcho(&state);
    ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(onDied));
    DeathCounter counter;
    EXPECT_EQ(STATUS_INVALID_OPERATION,
              AIBinder_linkToDeath(local.get(), recipient.get(), &counter));

    ndk::SpAIBinder proxy = addEcho(&state);
    binder_host::failNextLinkToDeath(STATUS_NO_MEMORY, 2);
    EXPECT_EQ(STATUS_NO_MEMORY, AIBinder_linkToDeath(proxy.get(), recipient.get(), &counter));
    EXPECT_EQ(STATUS_NO_MEMORY, AIBinder_linkToDeath(proxy.get(), recipient.get(), &counter));
    EXPECT_EQ(STATUS_OK, AIBinder_linkToDeath(proxy.get(), recipient.get(), &counter));

    binder_host::failNextLinkToDeath(STATUS_DEAD_OBJECT);
    binder_host::resetServiceManager();
    EXPECT_EQ(STATUS_OK, AIBinder_linkToDeath(proxy.get(), recipient.get(), &counter));
}

TEST_F(ServiceTest, InjectedTransactionFailuresStopAtTheProxy) {
    EchoState& state = makeState();
    ndk::SpAIBinder proxy = addEcho(&state);
    auto oneway = [&] {
        AParcel* in = nullptr;
        AParcel* out = nullptr;
        EXPECT_EQ(STATUS_OK, AIBinder_prepareTransaction(proxy.get(), &in));
        AParcel_writeInt32(in, 7);
        binder_status_t status = AIBinder_transact(proxy.get(), kRecord, &in, &out, FLAG_ONEWAY);
        AParcel_delete(out);
        return status;
    };
    std::optional<std::string> reply;
    binder_host::failNextTransactions(STATUS_FAILED_TRANSACTION, 2);
    EXPECT_EQ(STATUS_FAILED_TRANSACTION, callEcho(proxy.get(), "a", &reply));
    EXPECT_EQ(STATUS_FAILED_TRANSACTION, oneway());
    EXPECT_EQ(0, state.calls.load()) << "failed calls never reach the service";
    EXPECT_EQ(STATUS_OK, callEcho(proxy.get(), "b", &reply));
    EXPECT_EQ(reply, "b");

    binder_host::failNextTransactions(STATUS_DEAD_OBJECT);
    binder_host::resetServiceManager();
    EXPECT_EQ(STATUS_OK, callEcho(proxy.get(), "c", &reply)) << "a reset clears armed failures";
}

// A service that kills its own registration while serving a call.
binder_status_t killSelf(AIBinder*, transaction_code_t, const AParcel*, AParcel*) {
    return binder_host::killService(kName) ? STATUS_OK : STATUS_NAME_NOT_FOUND;
}

TEST_F(ServiceTest, KillFromInsideATransactionDoesNotWait) {
    static const AIBinder_Class* clazz = AIBinder_Class_define(
            "test.vexal.ISuicidal", [](void* a) { return a; }, [](void*) {}, killSelf);
    ndk::SpAIBinder local(AIBinder_new(clazz, nullptr));
    ASSERT_EQ(EX_NONE, AServiceManager_addService(local.get(), kName));
    ndk::SpAIBinder proxy(AServiceManager_checkService(kName));
    ASSERT_TRUE(AIBinder_associateClass(proxy.get(), clazz));
    ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(onDied));
    DeathCounter counter;
    ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(proxy.get(), recipient.get(), &counter));

    AParcel* in = nullptr;
    ASSERT_EQ(STATUS_OK, AIBinder_prepareTransaction(proxy.get(), &in));
    ndk::ScopedAParcel out;
    EXPECT_EQ(STATUS_OK,
              AIBinder_transact(proxy.get(), FIRST_CALL_TRANSACTION, &in, out.getR(), 0));
    std::unique_lock<std::mutex> lock(counter.mutex);
    EXPECT_TRUE(counter.cv.wait_for(lock, 5s, [&] { return counter.died.load() == 1; }));
}

TEST_F(ServiceTest, ConcurrentClientsAndKill) {
    EchoState& state = makeState();
    ndk::SpAIBinder proxy = addEcho(&state);
    std::vector<std::thread> clients;
    std::atomic<int> ok{0};
    std::atomic<int> dead{0};
    for (int t = 0; t < 4; ++t) {
        clients.emplace_back([&] {
            for (int i = 0; i < 50; ++i) {
                ndk::SpAIBinder mine(AServiceManager_checkService(kName));
                AIBinder* target = mine.get() != nullptr ? mine.get() : proxy.get();
                AIBinder_associateClass(target, echoClass());
                std::optional<std::string> reply;
                binder_status_t s = callEcho(target, "c", &reply);
                (s == STATUS_OK ? ok : dead)++;
            }
        });
    }
    // Killed while the clients are calling, not before the first call or after the last.
    const auto deadline = std::chrono::steady_clock::now() + 5s;
    while (state.calls.load() == 0 && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(1ms);
    }
    binder_host::killService(kName);
    for (auto& t : clients) t.join();
    EXPECT_EQ(200, ok.load() + dead.load());
    EXPECT_EQ(ok.load(), state.calls.load());
}

TEST(ThreadPool, StartIsIdempotent) {
    EXPECT_TRUE(ABinderProcess_setThreadPoolMaxThreadCount(4));
    ABinderProcess_startThreadPool();
    ABinderProcess_startThreadPool();
    EXPECT_TRUE(ABinderProcess_isThreadPoolStarted());
}

}  // namespace
