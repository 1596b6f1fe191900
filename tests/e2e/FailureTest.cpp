// troxd failing one call on purpose: a failed call is no death, and the next call reconnects.
#include <unistd.h>

#include "E2eSupport.h"
#include "halclient.h"
#include "pym.h"

namespace vexal::e2e {
namespace {

TEST_F(E2eTest, InjectedFailureFailsOneCallOfEitherDoorAndTheNextReconnects) {
    ASSERT_EQ(troxHalclient::troxPropertySet("sim.fault.fail_next", "1"), 0);
    EXPECT_EQ(PymEventAcquire(kActionLaunch, "com.example.e2e", "fault", 0, {}), -1);
    EXPECT_EQ(countLines(*capture_, kPymTag,
                         "PymEventAcquire() failed : trox HAL service not available"),
              1u);
    const int32_t handle = PymEventAcquire(kActionLaunch, "com.example.e2e", "fault", 0, {});
    EXPECT_GT(handle, 0);
    EXPECT_EQ(readPym({kCluster1MinFreq}), Values{"1804800"});
    PymRelease(handle);

    ASSERT_EQ(troxHalclient::troxPropertySet("sim.fault.fail_next", "1"), 0);
    ResourceList set{{kInputBoost, std::string("5")}};
    EXPECT_EQ(troxHalclient::troxResCtlRequest(0, set, getpid()), -1);
    EXPECT_EQ(countLines(*capture_, kClientTag,
                         "troxResCtlRequest() failed: trox HAL service not available"),
              1u);
    const int again = troxHalclient::troxResCtlRequest(0, set, getpid());
    EXPECT_GT(again, 0);
    EXPECT_EQ(readClient({kInputBoost}), Values{"5"});
    EXPECT_EQ(troxHalclient::troxResCtlRelease(again), 0);
    EXPECT_EQ(readPym({kCluster1MinFreq, kInputBoost}), (Values{"710400", "0"}));
    EXPECT_EQ(countLines(*capture_, kPymTag, kDied), 0u) << "a failed call is not a death";
    EXPECT_EQ(countLines(*capture_, kClientTag, kDied), 0u) << "a failed call is not a death";
}

}  // namespace
}  // namespace vexal::e2e
