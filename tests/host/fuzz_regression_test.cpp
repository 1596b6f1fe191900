// Inputs the fuzz targets found, kept as tests.
#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <binder_host/service_control.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <vector>

#include "../../host/binder/src/death.h"
#include "binder_test_util.h"

namespace {

using namespace binder_test;

constexpr const char* kName = "test.vexal.IEcho/default";

std::atomic<int> gDied{0};
void countDeath(void*) {
    ++gDied;
}

// fuzz_trox_reply: a service failing call after call made the library drop its connection and
// link a fresh recipient (deleting the old one) every time; the deleted links stayed on the
// service's object, growing without bound and taking minutes to free at exit.
TEST(FuzzRegressionTest, DeletedRecipientsDoNotPileUpOnALiveObject) {
    binder_impl::DeathLinkList list;
    int owner = 0;
    for (int i = 0; i < 1000; ++i) {
        auto state = std::make_shared<binder_impl::RecipientState>(countDeath);
        ASSERT_EQ(list.add({state, nullptr, reinterpret_cast<const AIBinder*>(&owner)}), STATUS_OK);
        state->deleted = true;  // what AIBinder_DeathRecipient_delete does
    }
    auto live = std::make_shared<binder_impl::RecipientState>(countDeath);
    ASSERT_EQ(list.add({live, nullptr, reinterpret_cast<const AIBinder*>(&owner)}), STATUS_OK);
    const std::vector<binder_impl::DeathLink> left = list.markDead();
    ASSERT_EQ(left.size(), 1u);
    EXPECT_EQ(left[0].recipient, live);
    EXPECT_TRUE(list.markDead().empty()) << "a death is told once";
}

// The same pattern through the public calls: only the recipient still alive hears the death.
TEST(FuzzRegressionTest, RelinkingAfterEachFailureStillDeliversOneDeath) {
    binder_host::resetServiceManager();
    EchoState state;
    ndk::SpAIBinder service = newEcho(&state);
    ASSERT_EQ(AServiceManager_addService(service.get(), kName), STATUS_OK);
    ndk::SpAIBinder proxy(AServiceManager_checkService(kName));
    ASSERT_NE(proxy.get(), nullptr);
    gDied = 0;
    AIBinder_DeathRecipient* recipient = nullptr;
    for (int i = 0; i < 20000; ++i) {
        if (recipient != nullptr) AIBinder_DeathRecipient_delete(recipient);
        recipient = AIBinder_DeathRecipient_new(countDeath);
        ASSERT_EQ(AIBinder_linkToDeath(proxy.get(), recipient, nullptr), STATUS_OK);
    }
    ASSERT_TRUE(binder_host::killService(kName));
    binder_host::drainNotifications();
    EXPECT_EQ(gDied.load(), 1);
    AIBinder_DeathRecipient_delete(recipient);
    proxy.set(nullptr);
    binder_host::resetServiceManager();
}

}  // namespace
