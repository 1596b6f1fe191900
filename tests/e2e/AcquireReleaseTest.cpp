// Acquire and release through each door; the values read back are the service's model.
#include <unistd.h>

#include "E2eSupport.h"
#include "PymWrapper.h"
#include "halclient.h"
#include "pym.h"

namespace vexal::e2e {
namespace {

TEST_F(E2eTest, AcquisitionsOfBothDoorsMergeAndHoldUntilReleased) {
    const std::vector<int32_t> launchIds{kCluster1MinFreq, kCluster2MinFreq, kMembusMinFreq,
                                         kGpuMinFreq};
    const Values defaults{"710400", "844800", "547000", "220000"};
    ASSERT_EQ(readPym(launchIds), defaults);
    const int32_t launch = PymEventAcquire(kActionLaunch, "com.example.e2e", "launch", 0, {});
    ASSERT_GT(launch, 0);
    // The other door reads the same model: nothing is kept on this side.
    EXPECT_EQ(readClient(launchIds), (Values{"1804800", "2400000", "1555000", "500000"}));
    ResourceList higher{{kCluster1MinFreq, std::string("2000000")}};
    const int handle = troxHalclient::troxResCtlRequest(0, higher, getpid());
    ASSERT_GT(handle, 0);
    EXPECT_EQ(readPym({kCluster1MinFreq}), Values{"2000000"});
    EXPECT_EQ(troxHalclient::troxResCtlRelease(handle), 0);
    EXPECT_EQ(readPym({kCluster1MinFreq}), Values{"1804800"});
    PymRelease(launch);
    EXPECT_EQ(readPym(launchIds), defaults);

    const int32_t set = PymResAcquire({{kInputBoost, std::string("7")}}, 0, "e2e", 0);
    ASSERT_GT(set, 0);
    EXPECT_EQ(readPym({kInputBoost}), Values{"7"});
    PymRelease(set);

    EXPECT_EQ(PymEventAcquireWrapper("QUARNE_NO_SUCH_ACTION", "com.example.e2e", "x", 0), -1);
    const int32_t touch =
            PymEventAcquireWrapper("QUARNE_ACTION_TOUCH_BOOST", "com.example.e2e", "touch", 0);
    ASSERT_GT(touch, 0);
    EXPECT_EQ(readPym({kCluster0MinFreq, kInputBoost}), (Values{"1209600", "2"}));
    PymReleaseWapper(touch);
    EXPECT_EQ(readClient({kCluster0MinFreq, kInputBoost}), (Values{"300000", "0"}));
}

}  // namespace
}  // namespace vexal::e2e
