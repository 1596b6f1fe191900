// Callback objects of this process called by troxd.
#include <unistd.h>

#include "E2eSupport.h"
#include "PymWrapper.h"
#include "halclient.h"
#include "pym.h"

namespace vexal::e2e {
namespace {

using ResourceList = std::list<PymClient::Resource>;

TEST_F(E2eTest, ListenerSeesTheChangesOfAnAcquisition) {
    auto recorder = std::make_shared<Recorder>();
    ResourceList watch{{kCluster1MinFreq, std::string()}};
    const int listener = troxHalclient::troxResListeningRegister(watch, 0, recorder);
    ASSERT_GT(listener, 0);

    const int32_t handle =
            PymEventAcquireWrapper("QUARNE_ACTION_LAUNCH", "com.example.e2e", "launch", 0);
    ASSERT_GT(handle, 0);
    const auto boosted = recorder->waitForCall(1);
    ASSERT_TRUE(boosted) << "no change reached the listener";
    ASSERT_EQ(boosted->size(), 1u);
    EXPECT_EQ(boosted->front().id, kCluster1MinFreq);
    EXPECT_EQ(boosted->front().value, "1804800");

    PymReleaseWapper(handle);
    const auto restored = recorder->waitForCall(2);
    ASSERT_TRUE(restored) << "the release did not reach the listener";
    ASSERT_EQ(restored->size(), 1u);
    EXPECT_EQ(restored->front().id, kCluster1MinFreq);
    EXPECT_EQ(restored->front().value, "710400");
    EXPECT_EQ(troxHalclient::troxResListeningUnRegister(listener), 0);
}

TEST_F(E2eTest, RequestCallbackArrivesExactlyOnce) {
    auto recorder = std::make_shared<Recorder>();
    ResourceList set{{kInputBoost, std::string("4")}};
    const int handle = troxHalclient::troxResCtlRequest(-1, 0, set, -1, -1, getpid(), recorder);
    ASSERT_GT(handle, 0);
    const auto answer = recorder->waitForCall(1);
    ASSERT_TRUE(answer) << "the request's callback never came";
    ASSERT_EQ(answer->size(), 1u);
    EXPECT_EQ(answer->front().id, kInputBoost);
    EXPECT_EQ(answer->front().value, "4");

    // Later changes of the same resource are not its business.
    EXPECT_EQ(troxHalclient::troxResCtlRelease(handle), 0);
    const int again = troxHalclient::troxResCtlRequest(0, set, getpid());
    ASSERT_GT(again, 0);
    EXPECT_EQ(troxHalclient::troxResCtlRelease(again), 0);
    EXPECT_FALSE(recorder->waitForCall(2, 300ms)) << "the callback was called again";
    EXPECT_EQ(recorder->calls(), 1u);
}

}  // namespace
}  // namespace vexal::e2e
