// The library's own doors against the reference service, in one process.
#include "PymWrapper.h"
#include "SimTestSupport.h"
#include "pym.h"

namespace sim::testing {
namespace {

class LibraryTest : public ServiceTest {};

std::string read(int32_t id) {
    std::vector<PymClient::Resource> r{{id, std::string()}};
    if (PymMutiResStateRequest(r) != 1 || !r[0].value) return "<none>";
    return *r[0].value;
}

TEST_F(LibraryTest, AcquisitionsByWrapperOneWayAndRuleSetAndRestore) {
    const int32_t h = PymEventAcquireWrapper("QUARNE_ACTION_LAUNCH", "com.example", "demo", 0);
    ASSERT_GT(h, 0);
    EXPECT_EQ(read(kBig), "800");
    EXPECT_EQ(read(kLittle), "300");
    PymReleaseWapper(h);
    EXPECT_EQ(read(kBig), "100");
    auto served = listen({entry(kBig)});
    const int32_t oneWay = PymEventAcquireOneWay(6, "com.example", "swipe", 0, {});
    ASSERT_GE(oneWay, 0);
    ASSERT_TRUE(served->waitForCall(1));
    EXPECT_EQ(read(kBig), "400");
    PymRelease(oneWay);
    EXPECT_EQ(read(kBig), "100");
    EXPECT_EQ(pymRuleCtl(102, 1, {}), 0);
    EXPECT_EQ(read(kBig), "600");
    EXPECT_EQ(pymRuleCtl(102, 0, {}), 0);
    EXPECT_EQ(read(kBig), "100");
}

}  // namespace
}  // namespace sim::testing
