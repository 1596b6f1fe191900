#include <FakeTroxService.h>
#include <binder_host/service_control.h>
#include <gtest/gtest.h>
#include <pym.h>
#include <stdlib.h>

#include <filesystem>

#include <ChildProcess.h>
#include <trox_sim/Embedded.h>

#include "GameLoader.h"

namespace {

using Values = std::vector<std::string>;

TEST(GameLoaderTest, SendsTheLoadingActionAndReleasesItsHandle) {
    vexal::testing::FakeTroxService service;
    service.fake().setIntResult("troxResCtlRequest", 41);
    size_t callsDuringWork = 0;
    EXPECT_TRUE(game::GameLoader("com.example.game", 5000).load([&] {
        callsDuringWork = service.fake().callCount();
    }));
    const auto calls = service.fake().calls();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(callsDuringWork, 1u);
    ASSERT_EQ(calls[0].method, "troxResCtlRequest");
    const auto& request = *calls[0].parcel;
    EXPECT_EQ(request.pkg, "com.example.game");
    EXPECT_EQ(request.identity, "loading");
    EXPECT_EQ(request.duration, 5000);
    ASSERT_EQ(request.requestData.size(), 1u);
    EXPECT_EQ(request.requestData[0].res_Id, 28);  // ACTION_ZEPHON_GAME_LOADING in the catalogue
    EXPECT_EQ(calls[1].method, "troxResCtlRelease");
    EXPECT_EQ(calls[1].ints, std::vector<int32_t>{41});
}

// The reference configuration's game-loading action: big cores' floor, their count, GPU floor.
Values readBoosted() {
    std::vector<PymClient::Resource> ids{{0x01010030, {}}, {0x01010B30, {}}, {0x01020050, {}}};
    if (PymMutiResStateRequest(ids) <= 0) return {};
    Values values;
    for (const auto& r : ids) values.push_back(r.value.value_or("<none>"));
    return values;
}

void expectBoostedOnlyWhileLoading() {
    const Values before = readBoosted();
    Values during;
    EXPECT_TRUE(game::GameLoader("com.example.game").load([&] { during = readBoosted(); }));
    EXPECT_EQ(during, (Values{"2841600", "1", "600000"}));
    EXPECT_NE(before, during);
    EXPECT_EQ(readBoosted(), before);
}

TEST(GameLoaderTest, BoostsTheEmbeddedReferenceService) {
    const auto service = sim::startEmbeddedService();
    expectBoostedOnlyWhileLoading();
}

TEST(GameLoaderTest, BoostsASpawnedTroxd) {
    char dir[] = "/tmp/game-loader-XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    {
        vexal::testing::ChildProcess troxd({TROXD, "--dir", dir});
        ASSERT_TRUE(troxd.waitForOutput("serving")) << troxd.output();
        ASSERT_TRUE(binder_host::setHostDirectory(dir));
        expectBoostedOnlyWhileLoading();
    }
    std::filesystem::remove_all(dir);
}

}  // namespace
