#include "LinkTestSupport.h"

namespace vexal::testing {
namespace {

using link::CallResult;

TEST_F(LinkTest, AReplacedPymConnectionReportsADeathOnlyOnce) {
    FakeTroxService service;
    // The client-class connection keeps the same binder proxy alive across the Event API's
    // reconnect, so a recipient left linked to it would fire a second time.
    ASSERT_EQ(troxInit(), CallResult::kOk);
    ASSERT_EQ(pym_get_trox_hal_and_link_to_death(), 0);
    link::resetConnection(pym::pymHalConnection());
    ASSERT_EQ(pym_get_trox_hal_and_link_to_death(), 0);

    service.kill();
    EXPECT_EQ(logs.linesWithTag(kPymTag),
              (Lines{{ANDROID_LOG_ERROR, kPymTag, "Trox HAL Service died"}}));
}

}  // namespace
}  // namespace vexal::testing
