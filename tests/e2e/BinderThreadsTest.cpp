// A client process that gave binder no thread, against troxd in another process. Its main does
// not start the pool (NO_BINDER_POOL): what troxd sends it must wait, as the driver holds it.
#include <android/binder_process.h>
#include <binder_host/service_control.h>

#include "E2eSupport.h"
#include "PymWrapper.h"
#include "halclient.h"

namespace vexal::e2e {
namespace {

TEST_F(E2eTest, CallbacksAndDeathNoticesWaitForTheProcessToGiveBinderAThread) {
    ASSERT_FALSE(ABinderProcess_isThreadPoolStarted());
    auto recorder = std::make_shared<Recorder>();
    ResourceList watch{{kCluster1MinFreq, std::string()}};
    ASSERT_GT(troxHalclient::troxResListeningRegister(watch, 0, recorder), 0);
    // Two-way calls need no thread of the caller's: the acquisition is answered.
    ASSERT_GT(PymEventAcquireWrapper("QUARNE_ACTION_LAUNCH", "com.example.e2e", "launch", 0), 0);

    ASSERT_TRUE(binder_host::waitForQueuedBinderWork(1, 5s)) << "troxd's callback never came in";
    EXPECT_FALSE(recorder->waitForCall(1, 0ms)) << "a callback ran on a thread binder never got";

    killTroxd();
    // The callback, then one death notice for each door's link.
    ASSERT_TRUE(binder_host::waitForQueuedBinderWork(3, 5s)) << "the death was not noticed";
    EXPECT_FALSE(recorder->waitForCall(1, 0ms));
    EXPECT_EQ(countLines(*capture_, kPymTag, kDied), 0u);
    EXPECT_EQ(countLines(*capture_, kClientTag, kDied), 0u);

    ABinderProcess_startThreadPool();
    EXPECT_EQ(describe(recorder->waitForCall(1)), std::to_string(kCluster1MinFreq) + "=1804800 ")
            << "the waiting callback did not arrive once the pool started";
    EXPECT_TRUE(waitForLines(*capture_, kPymTag, kDied, 1, 5s));
    EXPECT_TRUE(waitForLines(*capture_, kClientTag, kDied, 1, 5s));
    EXPECT_EQ(binder_host::queuedBinderWork(), 0u);
}

}  // namespace
}  // namespace vexal::e2e
