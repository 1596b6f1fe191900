// Acquire and release through each door; the values read back are the service's model.
#include <unistd.h>

#include "E2eSupport.h"
#include "PymWrapper.h"
#include "halclient.h"
#include "pym.h"

namespace vexal::e2e {
namespace {

using Values = std::vector<std::string>;
using ResourceList = std::list<PymClient::Resource>;

const std::vector<int32_t> kLaunchIds{kCluster1MinFreq, kCluster2MinFreq, kMembusMinFreq,
                                      kGpuMinFreq};
const Values kLaunchDefaults{"710400", "844800", "547000", "220000"};
const Values kLaunchBoosted{"1804800", "2400000", "1555000", "500000"};

TEST_F(E2eTest, EventApiAcquisitionBoostsUntilReleased) {
    ASSERT_EQ(readPym(kLaunchIds), kLaunchDefaults);
    const int32_t handle = PymEventAcquire(kActionLaunch, "com.example.e2e", "launch", 0, {});
    ASSERT_GT(handle, 0);
    EXPECT_EQ(readPym(kLaunchIds), kLaunchBoosted);
    // The other door reads the same model: nothing is kept on this side.
    EXPECT_EQ(readClient(kLaunchIds), kLaunchBoosted);
    PymRelease(handle);
    EXPECT_EQ(readPym(kLaunchIds), kLaunchDefaults);
}

TEST_F(E2eTest, EventApiResourceAcquisitionSetsTheGivenValue) {
    const int32_t handle = PymResAcquire({{kInputBoost, std::string("7")}}, 0, "e2e", 0);
    ASSERT_GT(handle, 0);
    EXPECT_EQ(readPym({kInputBoost}), Values{"7"});
    PymRelease(handle);
    EXPECT_EQ(readPym({kInputBoost}), Values{"0"});
}

TEST_F(E2eTest, WrapperAcquiresAConfiguredActionByName) {
    EXPECT_EQ(PymEventAcquireWrapper("QUARNE_NO_SUCH_ACTION", "com.example.e2e", "x", 0), -1);
    const int32_t handle =
            PymEventAcquireWrapper("QUARNE_ACTION_TOUCH_BOOST", "com.example.e2e", "touch", 0);
    ASSERT_GT(handle, 0);
    EXPECT_EQ(readPym({kCluster0MinFreq, kInputBoost}), (Values{"1209600", "2"}));
    PymReleaseWapper(handle);
    EXPECT_EQ(readPym({kCluster0MinFreq, kInputBoost}), (Values{"300000", "0"}));
}

TEST_F(E2eTest, ClientClassControlIsReadBackThroughBothDoors) {
    ResourceList set{{kCluster1MinCores, std::string("3")}, {kGpuMinFreq, std::string("650000")}};
    const int handle = troxHalclient::troxResCtlRequest(0, set, getpid());
    ASSERT_GT(handle, 0);
    EXPECT_EQ(readClient({kCluster1MinCores, kGpuMinFreq}), (Values{"3", "650000"}));
    EXPECT_EQ(readPym({kCluster1MinCores, kGpuMinFreq}), (Values{"3", "650000"}));
    EXPECT_EQ(troxHalclient::troxResCtlRelease(handle), 0);
    EXPECT_EQ(readClient({kCluster1MinCores, kGpuMinFreq}), (Values{"0", "220000"}));
}

TEST_F(E2eTest, HoldersFromBothDoorsMergeAndTheLastReleaseRestores) {
    const int32_t launch =
            PymEventAcquireWrapper("QUARNE_ACTION_LAUNCH", "com.example.e2e", "l", 0);
    ASSERT_GT(launch, 0);
    ResourceList higher{{kCluster1MinFreq, std::string("2000000")}};
    const int handle = troxHalclient::troxResCtlRequest(0, higher, getpid());
    ASSERT_GT(handle, 0);
    EXPECT_EQ(readClient({kCluster1MinFreq}), Values{"2000000"});
    EXPECT_EQ(troxHalclient::troxResCtlRelease(handle), 0);
    EXPECT_EQ(readClient({kCluster1MinFreq}), Values{"1804800"});
    PymReleaseWapper(launch);
    EXPECT_EQ(readClient({kCluster1MinFreq}), Values{"710400"});
}

}  // namespace
}  // namespace vexal::e2e
