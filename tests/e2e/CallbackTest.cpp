// Callback objects of this process called by troxd.
#include <unistd.h>

#include "E2eSupport.h"
#include "PymWrapper.h"
#include "halclient.h"

namespace vexal::e2e {
namespace {

std::string only(const std::optional<ResourceList>& call) {
    if (!call) return "no call";
    std::string text;
    for (const auto& r : *call) text += std::to_string(r.id) + "=" + r.value.value_or("-") + " ";
    return text;
}

TEST_F(E2eTest, ListenersSeeEveryChangeAndARequestCallbackComesExactlyOnce) {
    auto listener = std::make_shared<Recorder>();
    ResourceList watch{{kCluster1MinFreq, std::string()}};
    const int listening = troxHalclient::troxResListeningRegister(watch, 0, listener);
    ASSERT_GT(listening, 0);
    const int32_t launch =
            PymEventAcquireWrapper("QUARNE_ACTION_LAUNCH", "com.example.e2e", "launch", 0);
    ASSERT_GT(launch, 0);
    EXPECT_EQ(only(listener->waitForCall(1)), std::to_string(kCluster1MinFreq) + "=1804800 ");
    PymReleaseWapper(launch);
    EXPECT_EQ(only(listener->waitForCall(2)), std::to_string(kCluster1MinFreq) + "=710400 ");
    EXPECT_EQ(troxHalclient::troxResListeningUnRegister(listening), 0);

    auto answer = std::make_shared<Recorder>();
    ResourceList set{{kInputBoost, std::string("4")}};
    const int handle = troxHalclient::troxResCtlRequest(-1, 0, set, -1, -1, getpid(), answer);
    ASSERT_GT(handle, 0);
    EXPECT_EQ(only(answer->waitForCall(1)), std::to_string(kInputBoost) + "=4 ");
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
