#include "LinkTestSupport.h"

#include <binder_host/service_control.h>

#include <chrono>

namespace vexal::testing {
namespace {

using link::CallResult;

TEST_F(LinkTest, PymConnectsWithoutLogging) {
    FakeTroxService service;
    EXPECT_EQ(pym_get_trox_hal_and_link_to_death(), 0);
    EXPECT_EQ(pymInitCall(), CallResult::kOk);
    EXPECT_EQ(service.fake().lastCall().method, "trox_init");
    EXPECT_TRUE(logs.linesWithTag(kPymTag).empty());
}

TEST_F(LinkTest, PymNotDeclaredFailsWithBothLines) {
    FakeTroxService service(FakeTroxService::Start::kNotDeclared);
    EXPECT_FALSE(pym::connectPymHal());
    EXPECT_EQ(logs.linesWithTag(kPymTag),
              (std::vector<LogLine>{{ANDROID_LOG_ERROR, kPymTag,
                                     "Trox is not declared, AServiceManager_isDeclared:0"},
                                    {ANDROID_LOG_ERROR, kPymTag,
                                     "pym_get_trox_hal_and_link_to_death error:-1"}}));
}

TEST_F(LinkTest, PymDeclaredButNotRunningFailsAtOnce) {
    FakeTroxService service(FakeTroxService::Start::kDeclaredOnly);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(pym_get_trox_hal_and_link_to_death(), -1);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    EXPECT_EQ(logs.linesWithTag(kPymTag),
              (std::vector<LogLine>{{ANDROID_LOG_ERROR, kPymTag, "Trox HAL Service not found"}}));

    service.start();
    EXPECT_EQ(pym_get_trox_hal_and_link_to_death(), 0);
}

TEST_F(LinkTest, PymLinkFailureDropsTheFreshConnection) {
    FakeTroxService service;
    binder_host::failNextLinkToDeath(STATUS_DEAD_OBJECT);
    EXPECT_EQ(pym_get_trox_hal_and_link_to_death(), -1);
    EXPECT_FALSE(pymConnected());
    EXPECT_EQ(logs.linesWithTag(kPymTag),
              (std::vector<LogLine>{{ANDROID_LOG_ERROR, kPymTag,
                                     "Unable to link to g_pym_hal death notifications!"}}));
    EXPECT_EQ(pym_get_trox_hal_and_link_to_death(), 0);
}

TEST_F(LinkTest, DeathEmptiesBothConnectionsAndEachReconnects) {
    FakeTroxService service;
    ASSERT_EQ(troxInit(), CallResult::kOk);
    ASSERT_TRUE(pym::connectPymHal());

    service.restart();
    EXPECT_FALSE(troxConnected());
    EXPECT_FALSE(pymConnected());
    EXPECT_EQ(logs.linesWithTag(kTroxTag),
              (std::vector<LogLine>{{ANDROID_LOG_ERROR, kTroxTag, "Trox HAL Service died"}}));
    EXPECT_EQ(logs.linesWithTag(kPymTag),
              (std::vector<LogLine>{{ANDROID_LOG_ERROR, kPymTag, "Trox HAL Service died"}}));

    ASSERT_TRUE(pym::connectPymHal());
    EXPECT_EQ(pymInitCall(), CallResult::kOk);
    EXPECT_EQ(troxInit(), CallResult::kOk);
    EXPECT_EQ(service.fake().callCount(), 2u);
}

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
              (std::vector<LogLine>{{ANDROID_LOG_ERROR, kPymTag, "Trox HAL Service died"}}));
}

}  // namespace
}  // namespace vexal::testing
