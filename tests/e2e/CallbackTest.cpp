// Callback objects of this process called by troxd.
#include <unistd.h>

#include "E2eSupport.h"
#include "PymWrapper.h"
#include "halclient.h"

namespace vexal::e2e {
namespace {

void expectOnly(const std::optional<ResourceList>& call, int32_t id, const std::string& value) {
    ASSERT_TRUE(call) << "no callback came";
    ASSERT_EQ(call->size(), 1u);
    EXPECT_EQ(call->front().id, id);
    EXPECT_EQ(call->front().value, value);
}

TEST_F(E2eTest, ListenerSeesTheChangesOfAnAcquisition) {
    auto recorder = std::make_shared<Recorder>();
    ResourceList watch{{kCluster1MinFreq, std::string()}};
    const int listener = troxHalclient::troxResListeningRegister(watch, 0, recorder);
    ASSERT_GT(listener, 0);
    const int32_t handle =
            PymEventAcquireWrapper("QUARNE_ACTION_LAUNCH", "com.example.e2e", "launch", 0);
    ASSERT_GT(handle, 0);
    expectOnly(recorder->waitForCall(1), kCluster1MinFreq, "1804800");
    PymReleaseWapper(handle);
    expectOnly(recorder->waitForCall(2), kCluster1MinFreq, "710400");
    EXPECT_EQ(troxHalclient::troxResListeningUnRegister(listener), 0);
}

TEST_F(E2eTest, RequestCallbackArrivesExactlyOnce) {
    auto recorder = std::make_shared<Recorder>();
    ResourceList set{{kInputBoost, std::string("4")}};
    const int handle = troxHalclient::troxResCtlRequest(-1, 0, set, -1, -1, getpid(), recorder);
    ASSERT_GT(handle, 0);
    expectOnly(recorder->waitForCall(1), kInputBoost, "4");

    // Later changes of the same resource are not its business.
    EXPECT_EQ(troxHalclient::troxResCtlRelease(handle), 0);
    const int again = troxHalclient::troxResCtlRequest(0, set, getpid());
    ASSERT_GT(again, 0);
    EXPECT_EQ(troxHalclient::troxResCtlRelease(again), 0);
    EXPECT_FALSE(recorder->waitForCall(2, 300ms)) << "the callback was called again";
}

}  // namespace
}  // namespace vexal::e2e
