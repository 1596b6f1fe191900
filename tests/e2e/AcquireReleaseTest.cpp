// Acquire and release through each door, the values read back being the service's model, and
// callback objects of this process called by troxd.
#include <unistd.h>

#include "E2eSupport.h"
#include "PymWrapper.h"
#include "halclient.h"
#include "pym.h"

namespace vexal::e2e {
namespace {

TEST_F(E2eTest, AcquisitionsOfBothDoorsMergeAndHoldUntilReleased) {
    const std::vector<int32_t> launchIds{kCluster1MinFreq, kGpuMinFreq};
    const Values defaults{"710400", "220000"};
    ASSERT_EQ(readPym(launchIds), defaults);
    const int32_t launch = PymEventAcquire(kActionLaunch, "com.example.e2e", "launch", 0, {});
    ASSERT_GT(launch, 0);
    // The other door reads the same model: nothing is kept on this side.
    EXPECT_EQ(readClient(launchIds), (Values{"1804800", "500000"}));
    ResourceList higher{{kCluster1MinFreq, std::string("2000000")}};
    const int handle = troxHalclient::troxResCtlRequest(0, higher, getpid());
    ASSERT_GT(handle, 0);
    EXPECT_EQ(readPym({kCluster1MinFreq}), Values{"2000000"});
    EXPECT_EQ(troxHalclient::troxResCtlRelease(handle), 0);
    EXPECT_EQ(readPym({kCluster1MinFreq}), Values{"1804800"});
    PymRelease(launch);
    EXPECT_EQ(readPym(launchIds), defaults);
}

TEST_F(E2eTest, ListenersSeeEveryChangeAndARequestCallbackComesExactlyOnce) {
    auto listener = std::make_shared<Recorder>();
    ResourceList watch{{kCluster1MinFreq, std::string()}};
    const int listening = troxHalclient::troxResListeningRegister(watch, 0, listener);
    ASSERT_GT(listening, 0);
    const int32_t launch =
            PymEventAcquireWrapper("QUARNE_ACTION_LAUNCH", "com.example.e2e", "launch", 0);
    ASSERT_GT(launch, 0);
    EXPECT_EQ(describe(listener->waitForCall(1)), std::to_string(kCluster1MinFreq) + "=1804800 ");
    PymReleaseWapper(launch);
    EXPECT_EQ(describe(listener->waitForCall(2)), std::to_string(kCluster1MinFreq) + "=710400 ");
    EXPECT_EQ(troxHalclient::troxResListeningUnRegister(listening), 0);

    auto answer = std::make_shared<Recorder>();
    ResourceList set{{kInputBoost, std::string("4")}};
    const int handle = troxHalclient::troxResCtlRequest(-1, 0, set, -1, -1, getpid(), answer);
    ASSERT_GT(handle, 0);
    EXPECT_EQ(describe(answer->waitForCall(1)), std::to_string(kInputBoost) + "=4 ");
    // Later changes of the same resource are not its business.
    EXPECT_EQ(troxHalclient::troxResCtlRelease(handle), 0);
    const int again = troxHalclient::troxResCtlRequest(0, set, getpid());
    ASSERT_GT(again, 0);
    EXPECT_EQ(troxHalclient::troxResCtlRelease(again), 0);
    EXPECT_FALSE(answer->waitForCall(2, 300ms)) << "the callback was called again";
    EXPECT_FALSE(listener->waitForCall(3, 0ms)) << "an unregistered listener was called";
}

}  // namespace
}  // namespace vexal::e2e
