// The in-process service manager (declarations, lookups, deaths, injected failures), calls
// through its proxies, and inputs the fuzz targets found.
#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <binder_host/service_control.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "../../host/binder/src/death.h"
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

std::future<ndk::SpAIBinder> waitInBackground() {
    return std::async(std::launch::async,
                      [] { return ndk::SpAIBinder(AServiceManager_waitForService(kName)); });
}

class ServiceTest : public testing::Test {
  protected:
    void TearDown() override { binder_host::resetServiceManager(); }

    // Publishes an echo object and returns a proxy to it with the class associated.
    ndk::SpAIBinder addEcho() {
        EXPECT_EQ(EX_NONE, AServiceManager_addService(newEcho(&state_).get(), kName));
        ndk::SpAIBinder proxy(AServiceManager_checkService(kName));
        EXPECT_TRUE(proxy.get() != nullptr && AIBinder_associateClass(proxy.get(), echoClass()));
        return proxy;
    }

    // Outlive the test body: services are only released by TearDown.
    EchoState state_;
    ndk::ScopedAIBinder_DeathRecipient recipient_{AIBinder_DeathRecipient_new(onDied)};
};

TEST_F(ServiceTest, OnlyDeclaredInstancesAreWaitedFor) {
    EXPECT_FALSE(AServiceManager_isDeclared(kName));
    EXPECT_EQ(nullptr, AServiceManager_waitForService(kName));

    binder_host::declareService(kName);
    EXPECT_TRUE(AServiceManager_isDeclared(kName));
    EXPECT_EQ(nullptr, AServiceManager_checkService(kName));
    auto released = waitInBackground();
    EXPECT_EQ(std::future_status::timeout, released.wait_for(50ms));
    binder_host::undeclareService(kName);
    ASSERT_EQ(std::future_status::ready, released.wait_for(5s));
    EXPECT_EQ(nullptr, released.get().get());

    binder_host::declareService(kName);
    auto waiter = waitInBackground();
    EXPECT_EQ(std::future_status::timeout, waiter.wait_for(100ms));
    ndk::SpAIBinder proxy = addEcho();
    ASSERT_EQ(std::future_status::ready, waiter.wait_for(5s));
    EXPECT_EQ(proxy, waiter.get());
}

TEST_F(ServiceTest, ManifestFileDeclaresInstances) {
    char dir[] = "/tmp/binder_host_testXXXXXX";
    ASSERT_NE(nullptr, mkdtemp(dir));
    std::ofstream(std::string(dir) + "/manifest")
            << "# comment\n  test.vexal.IEcho/default  \ntest.vexal.IEcho/second\n";
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
    std::filesystem::remove_all(dir);
}

TEST_F(ServiceTest, KillFiresEachLinkedRecipientOnceOffTheCallerThread) {
    ndk::SpAIBinder proxy = addEcho();
    AIBinder_DeathRecipient_setOnUnlinked(recipient_.get(), onUnlinked);
    AIBinder_DeathRecipient* deleted = AIBinder_DeathRecipient_new(onDied);
    DeathCounter first, second, unlinked, ofDeleted;
    for (DeathCounter* c : {&first, &second, &unlinked}) {
        ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(proxy.get(), recipient_.get(), c));
    }
    ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(proxy.get(), deleted, &ofDeleted));
    EXPECT_EQ(STATUS_OK, AIBinder_unlinkToDeath(proxy.get(), recipient_.get(), &unlinked));
    EXPECT_EQ(1, unlinked.unlinked.load());
    EXPECT_EQ(STATUS_NAME_NOT_FOUND,
              AIBinder_unlinkToDeath(proxy.get(), recipient_.get(), &unlinked));
    AIBinder_DeathRecipient_delete(deleted);

    ASSERT_TRUE(binder_host::killService(kName));
    // killService waited for the handlers: those linked heard it once, the others not at all.
    const auto deaths = [&] { return std::vector<int>{first.died, second.died, unlinked.died}; };
    EXPECT_EQ((std::vector<int>{1, 1, 0}), deaths());
    EXPECT_EQ(0, ofDeleted.died.load());
    EXPECT_EQ(1, first.unlinked.load());
    EXPECT_NE(std::this_thread::get_id(), first.thread);

    EXPECT_FALSE(AIBinder_isAlive(proxy.get()));
    std::optional<std::string> reply;
    EXPECT_EQ(STATUS_DEAD_OBJECT, callEcho(proxy.get(), "x", &reply));
    EXPECT_EQ(nullptr, AServiceManager_checkService(kName));
    EXPECT_EQ(STATUS_DEAD_OBJECT, AIBinder_linkToDeath(proxy.get(), recipient_.get(), &first));
    EXPECT_FALSE(binder_host::killService(kName));
    binder_host::drainNotifications();
    EXPECT_EQ((std::vector<int>{1, 1, 0}), deaths());
    EXPECT_EQ(0, state_.calls.load());
}

TEST_F(ServiceTest, InjectedFailuresStopAtTheProxyUntilReset) {
    ndk::SpAIBinder proxy = addEcho();
    DeathCounter counter;
    binder_host::failNextLinkToDeath(STATUS_NO_MEMORY, 2);
    binder_host::failNextTransactions(STATUS_FAILED_TRANSACTION, 2);
    std::optional<std::string> reply;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(STATUS_NO_MEMORY, AIBinder_linkToDeath(proxy.get(), recipient_.get(), &counter));
        EXPECT_EQ(STATUS_FAILED_TRANSACTION,
                  i == 0 ? callEcho(proxy.get(), "a", &reply)
                         : sendInt(proxy.get(), kRecord, i, nullptr, FLAG_ONEWAY));
    }
    EXPECT_EQ(0, state_.calls.load()) << "failed calls never reach the service";
    EXPECT_EQ(STATUS_OK, AIBinder_linkToDeath(proxy.get(), recipient_.get(), &counter));
    EXPECT_EQ(STATUS_OK, callEcho(proxy.get(), "b", &reply));

    binder_host::failNextLinkToDeath(STATUS_DEAD_OBJECT);
    binder_host::failNextTransactions(STATUS_DEAD_OBJECT);
    binder_host::resetServiceManager();
    EXPECT_EQ(STATUS_OK, AIBinder_linkToDeath(proxy.get(), recipient_.get(), &counter));
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
    DeathCounter counter;
    ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(proxy.get(), recipient_.get(), &counter));
    EXPECT_EQ(STATUS_OK, call(proxy.get(), FIRST_CALL_TRANSACTION, nullptr));
    std::unique_lock<std::mutex> lock(counter.mutex);
    EXPECT_TRUE(counter.cv.wait_for(lock, 5s, [&] { return counter.died.load() == 1; }));
}

TEST_F(ServiceTest, ConcurrentClientsAndKill) {
    ndk::SpAIBinder proxy = addEcho();
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
                (callEcho(target, "c", &reply) == STATUS_OK ? ok : dead)++;
            }
        });
    }
    // Killed while the clients are calling, not before the first call landed or after the last.
    {
        std::unique_lock<std::mutex> lock(state_.mutex);
        EXPECT_TRUE(state_.cv.wait_for(lock, 5s, [&] { return state_.calls.load() > 0; }));
    }
    binder_host::killService(kName);
    for (auto& t : clients) t.join();
    EXPECT_EQ(200, ok.load() + dead.load());
    EXPECT_EQ(ok.load(), state_.calls.load());
}

// Calls through in-process proxies and reference counts.
using TransactTest = ServiceTest;

TEST_F(TransactTest, ProxyCallsReachTheServiceAndItsAnswer) {
    ndk::SpAIBinder proxy = addEcho();
    EXPECT_EQ(nullptr, AIBinder_getUserData(proxy.get()));
    EXPECT_EQ(proxy.get(), ndk::SpAIBinder(AServiceManager_checkService(kName)).get());
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(proxy.get(), "h\xc3\xa9llo \xf0\x9f\x98\x80", &reply));
    EXPECT_EQ("h\xc3\xa9llo \xf0\x9f\x98\x80", reply.value());
    ndk::ScopedAParcel out;
    EXPECT_EQ(STATUS_PERMISSION_DENIED, call(proxy.get(), kFail, nullptr, &out));
    EXPECT_EQ(nullptr, out.get());
    EXPECT_EQ(2, state_.calls.load());
    std::lock_guard<std::mutex> lock(state_.mutex);
    EXPECT_EQ(getpid(), state_.lastCallingPid);
}

// Neither codes outside the user range nor a token near the echo service's "test.vexal.IEcho"
// but not it reach the service.
TEST_F(TransactTest, CallsTheServiceCannotTakeNeverReachIt) {
    ndk::SpAIBinder proxy = addEcho();
    for (transaction_code_t code : {0u, 0x01000000u, 0xffffffffu}) {
        AParcel* in = nullptr;
        ASSERT_EQ(STATUS_OK, AIBinder_prepareTransaction(proxy.get(), &in));
        AParcel* out = reinterpret_cast<AParcel*>(0x1);
        EXPECT_EQ(STATUS_UNKNOWN_TRANSACTION, AIBinder_transact(proxy.get(), code, &in, &out, 0))
                << code;
        EXPECT_EQ(nullptr, in);
        EXPECT_EQ(nullptr, out);
    }
    const std::string body = "74006500 73007400 2e007600 65007800 61006c00 2e004900 45006300 ";
    for (const std::string& token : {
                 "0f000000 " + body + "68000000",           // a prefix
                 "10000000 " + body + "6800f300 00000000",  // not ASCII
                 "10000000 " + body + "68006f00 41000000",  // no NUL
                 std::string("ffffffff"),                   // null
                 std::string(),                             // nothing
         }) {
        AParcel* in = parcelOf(unhex(token)).release();
        ndk::ScopedAParcel out;
        EXPECT_EQ(STATUS_BAD_TYPE, AIBinder_transact(proxy.get(), kEcho, &in, out.getR(), 0))
                << token;
    }
    EXPECT_EQ(0, state_.calls.load());
}

TEST_F(TransactTest, OneWayCallsReturnAtOnceAndArriveInOrder) {
    ndk::SpAIBinder proxy = addEcho();
    EchoState& s = state_;
    ndk::ScopedAParcel out;
    ASSERT_EQ(STATUS_OK, call(proxy.get(), kBlock, nullptr, &out, FLAG_ONEWAY));
    EXPECT_TRUE(out.get() == nullptr || AParcel_getDataSize(out.get()) == 0);
    for (int32_t i = 0; i < 200; ++i) {
        ASSERT_EQ(STATUS_OK, sendInt(proxy.get(), kRecord, i, nullptr, FLAG_ONEWAY));
    }
    std::unique_lock<std::mutex> lock(s.mutex);
    // The blocking call reached the service on another thread and is still held there.
    ASSERT_TRUE(s.cv.wait_for(lock, 5s, [&] { return s.blockedCallStarted; }));
    EXPECT_FALSE(s.released);
    s.released = true;
    s.cv.notify_all();
    ASSERT_TRUE(s.cv.wait_for(lock, 5s, [&] { return s.received.size() == 200; }));
    for (int32_t i = 0; i < 200; ++i) EXPECT_EQ(i, s.received[static_cast<size_t>(i)]);
}

// Inputs the fuzz targets found.
using FuzzRegressionTest = ServiceTest;

// fuzz_trox_reply: a service failing call after call made the library drop its connection and
// link a fresh recipient (deleting the old one) every time; the deleted links stayed on the
// service's object, growing without bound and taking minutes to free at exit.
TEST_F(FuzzRegressionTest, DeletedRecipientsDoNotPileUpOnALiveObject) {
    binder_impl::DeathLinkList list;
    int owner = 0;
    for (int i = 0; i < 1000; ++i) {
        auto state = std::make_shared<binder_impl::RecipientState>(onDied);
        ASSERT_EQ(list.add({state, nullptr, reinterpret_cast<const AIBinder*>(&owner)}), STATUS_OK);
        state->deleted = true;  // what AIBinder_DeathRecipient_delete does
    }
    auto live = std::make_shared<binder_impl::RecipientState>(onDied);
    ASSERT_EQ(list.add({live, nullptr, reinterpret_cast<const AIBinder*>(&owner)}), STATUS_OK);
    const std::vector<binder_impl::DeathLink> left = list.markDead();
    ASSERT_EQ(left.size(), 1u);
    EXPECT_EQ(left[0].recipient, live);
    EXPECT_TRUE(list.markDead().empty()) << "a death is told once";
}

// The same pattern through the public calls: only the recipient still alive hears the death.
TEST_F(FuzzRegressionTest, RelinkingAfterEachFailureStillDeliversOneDeath) {
    ndk::SpAIBinder proxy = addEcho();
    DeathCounter counter;
    AIBinder_DeathRecipient* recipient = nullptr;
    for (int i = 0; i < 20000; ++i) {
        if (recipient != nullptr) AIBinder_DeathRecipient_delete(recipient);
        recipient = AIBinder_DeathRecipient_new(onDied);
        ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(proxy.get(), recipient, &counter));
    }
    ASSERT_TRUE(binder_host::killService(kName));
    binder_host::drainNotifications();
    EXPECT_EQ(1, counter.died.load());
    AIBinder_DeathRecipient_delete(recipient);
}

}  // namespace
