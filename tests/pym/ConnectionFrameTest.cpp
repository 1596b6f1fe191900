// What every Event API function does around its one service call: without a connection, after a
// failed status, and on the call after that.
#include "PymTestSupport.h"

#include <binder_host/service_control.h>

#include <atomic>
#include <functional>
#include <thread>
#include <tuple>

namespace vexal::testing {
namespace {

struct FrameCase {
    const char* name;
    // Void functions give 0. With `failing`, outputs must come back as they went in.
    std::function<int32_t(bool failing)> call;
    std::vector<LogLine> entry;  // written before connecting
    int32_t noConnection;
    // The failed-status path; absent where a failed status cannot be had or is not a failure.
    std::optional<std::vector<LogLine>> failure;  // after the entry lines
    int32_t failed = -1;
};

std::vector<FrameCase> frameCases() {
    return {
            {"Init",
             [](bool) { return pymInit(); },
             {logError("pymInit enter")},
             -1,
             std::vector<LogLine>{failedLine("trox_init")},
             -2},
            {"EventAcquire",
             [](bool) {
                 return PymEventAcquire(4, "p", "i", 1, {{1, "x"}});
             },
             {logInfo("PymEventAcquire, cmdid:4, pkg:p, identity:i")},
             -1,
             std::vector<LogLine>{failedLine("PymEventAcquire"),
                                  logError("troxResCtlRequest error:-1")}},
            {"ResAcquire",
             [](bool) { return PymResAcquire({}, 0, "i", 1); },
             {logInfo("PymResAcquire"), logInfo("PymEventAcquire, cmdid:-2, pkg:none, identity:i")},
             -1,
             std::vector<LogLine>{failedLine("PymEventAcquire"),
                                  logError("troxResCtlRequest error:-1")}},
            {"PlatformResAcquire",
             [](bool) { return PymPlatformResAcquire({}, 0, "i", "p", 1); },
             {logInfo("PymPlatformResAcquire"),
              logInfo("PymEventAcquire, cmdid:-3, pkg:p, identity:i")},
             -1,
             std::vector<LogLine>{failedLine("PymEventAcquire"),
                                  logError("troxResCtlRequest error:-1")}},
            // Resource lines come after connecting, so none here.
            {"EventAcquireOneWay",
             [](bool) {
                 return PymEventAcquireOneWay(4, "p", "i", 1, {{1, "x"}});
             },
             {logInfo("PymEventAcquireOneWay, cmdid:4, pkg:p, identity:i")},
             -1,
             std::nullopt},
            {"Release",
             [](bool) { return PymRelease(7), 0; },
             {logInfo("PymRelease, handle:7")},
             0,
             std::vector<LogLine>{failedLine("troxResCtlRelease")},
             0},
            {"Notify",
             [](bool) { return PymNotify(1, 2, {3}); },
             {logInfo("PymNotify enter")},
             -1,
             std::vector<LogLine>{failedLine("PymNotify")}},
            {"RelatedSysInfo",
             [](bool) { return setRelatedSysInfo(1, 2); },
             {},
             -1,
             std::vector<LogLine>{failedLine("setRelatedSysInfo")}},
            {"RuleCtl",
             [](bool) {
                 return pymRuleCtl(3, 4, {{1, "x"}});
             },
             {logInfo("pymRuleCtl, ruleId:3, status:4")},
             -1,
             std::vector<LogLine>{failedLine("pymRuleCtl")}},
            {"MultiState",
             [](bool failing) {
                 std::vector<Resource> resources{{1, "x"}};
                 const int32_t result = PymMutiResStateRequest(resources);
                 if (failing) {
                     EXPECT_EQ(resources.front().value, "x");
                 }
                 return result;
             },
             {logInfo("PymMutiResStateRequest enter")},
             -1,
             std::vector<LogLine>{failedLine("PymMutiResStateRequest")}},
            {"ResState",
             [](bool failing) {
                 std::string value = "kept";
                 PymResStateRequest(0x0101, value);
                 if (failing) {
                     EXPECT_EQ(value, "kept");
                 }
                 return 0;
             },
             {logInfo("PymResStateRequest enter"), logInfo("PymMutiResStateRequest enter")},
             0,
             std::vector<LogLine>{failedLine("PymMutiResStateRequest")},
             0},
            // A failed power-consistency call throws instead; see the state query tests.
            {"PowerConsis",
             [](bool) { return PymGetPowerConsis(); },
             {logInfo("pym client PymGetPowerConsis")},
             -1,
             std::nullopt},
            {"ResStatePowerConsistency",
             [](bool) {
                 std::string value = "kept";
                 PymResStateRequest(kPowerConsistencyOpcode, value);
                 return value == "kept" ? 0 : std::stoi(value);
             },
             {logInfo("pym client PymGetPowerConsis")},
             -1,
             std::nullopt},
            {"History",
             [](bool failing) {
                 std::string history = "kept";
                 const int32_t result = PymGetHistory(history);
                 if (failing) {
                     EXPECT_EQ(history, "kept");
                 }
                 return result;
             },
             {logInfo("pym client PymGetHistory")},
             -1,
             std::vector<LogLine>{
                     logInfo("pym client hal PymGetHistory"), failedLine("PymGetHistory"),
                     logError("failed to get history or return vector empty, data vector size 0")}},
            {"PMStatus",
             [](bool) { return PymGetPMStatus(3); },
             {logInfo("pym client PymGetPMStatus")},
             -1,
             std::vector<LogLine>{
                     logInfo("pym client hal PymGetPMStatus"), failedLine("PymGetPMStatus"),
                     logError("failed to get power mode status, mode 3, data vector size 0")}},
            {"FetchDataset",
             [](bool failing) {
                 std::vector<Resource> dataset{{1, "x"}};
                 const int32_t result = Pym_fetch_dataset(dataset);
                 if (failing) {
                     EXPECT_EQ(dataset.size(), 1u);
                 }
                 return result;
             },
             {logInfo("Pym_fetch_dataset enter")},
             -1,
             std::vector<LogLine>{failedLine("Pym_fetch_dataset")}},
            {"FeatureStatus",
             [](bool) { return PymGetFeatureStatus(5); },
             {logInfo("PymGetFeatureStatus enter")},
             -1,
             std::vector<LogLine>{failedLine("PymGetFeatureStatus")}},
    };
}

using Start = FakeTroxService::Start;

class NoConnectionTest : public ::testing::TestWithParam<std::tuple<FrameCase, Start>> {
  protected:
    const FrameCase& frame() const { return std::get<0>(GetParam()); }

    LogCapture logs;
    FakeTroxService service{std::get<1>(GetParam())};
};

TEST_P(NoConnectionTest, FailsWithTheConnectLinesThenConnectsOnceTheServiceRuns) {
    EXPECT_EQ(frame().call(true), frame().noConnection);
    const auto connectLines =
            std::get<1>(GetParam()) == Start::kNotDeclared ? notDeclaredLines() : notRunningLines();
    EXPECT_EQ(logs.linesWithTag(kPymTag), frame().entry + connectLines);

    // Nothing of the failed attempt sticks: the next call connects and reaches the service.
    service.start();
    service.fake().setStateReply({entry(kPowerConsistencyOpcode, "1")});
    frame().call(false);
    EXPECT_TRUE(service.fake().waitForCalls(1));
    EXPECT_EQ(service.fake().callCount(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Functions, NoConnectionTest,
                         ::testing::Combine(::testing::ValuesIn(frameCases()),
                                            ::testing::Values(Start::kNotDeclared,
                                                              Start::kDeclaredOnly)),
                         [](const auto& p) {
                             return std::string(std::get<0>(p.param).name) +
                                    (std::get<1>(p.param) == Start::kNotDeclared ? "NotDeclared"
                                                                                 : "NotRunning");
                         });

std::vector<FrameCase> failingCases() {
    std::vector<FrameCase> cases;
    for (auto& c : frameCases()) {
        if (c.failure) cases.push_back(std::move(c));
    }
    return cases;
}

// A failed status comes either from the service or from the transport before the service.
enum class FailedBy { kService, kTransport };

class FailedStatusTest : public PymTest,
                         public ::testing::WithParamInterface<std::tuple<FrameCase, FailedBy>> {};

TEST_P(FailedStatusTest, LogsResetsAndTheNextCallReconnects) {
    const FrameCase& c = std::get<0>(GetParam());
    const bool byService = std::get<1>(GetParam()) == FailedBy::kService;
    if (byService) {
        fake().failNextCalls(1);
    } else {
        binder_host::failNextTransactions(STATUS_FAILED_TRANSACTION);
    }
    EXPECT_EQ(c.call(true), c.failed);
    const size_t reached = byService ? 1 : 0;
    EXPECT_EQ(fake().callCount(), reached);
    EXPECT_EQ(pymLines(), c.entry + *c.failure);

    // The connection was dropped: the next call connects again, and a failing link shows it.
    logs.clear();
    binder_host::failNextLinkToDeath(STATUS_DEAD_OBJECT);
    EXPECT_EQ(c.call(true), c.noConnection);
    EXPECT_EQ(pymLines(),
              (c.entry +
               std::vector<LogLine>{logError("Unable to link to g_pym_hal death notifications!"),
                                    logError("pym_get_trox_hal_and_link_to_death error:-1")}));
    EXPECT_EQ(fake().callCount(), reached);

    c.call(false);
    EXPECT_EQ(fake().callCount(), reached + 1) << "the call reaches the service again";
}

INSTANTIATE_TEST_SUITE_P(Functions, FailedStatusTest,
                         ::testing::Combine(::testing::ValuesIn(failingCases()),
                                            ::testing::Values(FailedBy::kService,
                                                              FailedBy::kTransport)),
                         [](const auto& p) {
                             return std::string(std::get<0>(p.param).name) +
                                    (std::get<1>(p.param) == FailedBy::kService ? "ByService"
                                                                                : "ByTransport");
                         });

TEST_F(PymTest, AfterTheServiceDiesTheNextCallReachesTheNewOne) {
    ASSERT_EQ(pymInit(), 0);
    service.restart();
    EXPECT_EQ(pymInit(), 0);
    EXPECT_EQ(fake().callCount(), 1u) << "the restarted service got the second call";
    EXPECT_EQ(pymLines(),
              (std::vector<LogLine>{logError("pymInit enter"), logError("Trox HAL Service died"),
                                    logError("pymInit enter")}));
}

// Calls, failures and reconnects from several threads at once; sanitizer builds watch for races.
TEST_F(PymTest, ConcurrentCallsWithFailures) {
    fake().setIntResult("troxResCtlRequest", 9);
    fake().setIntResult("troxRuleCtl", 9);
    std::atomic<int> unexpected{0};
    std::atomic<size_t> answered{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 40; ++i) {
                if (i % 10 == t) fake().failNextCalls(1);
                const int32_t result = (i % 2 == 0) ? PymEventAcquire(t, "p", "i", i, {{i, "v"}})
                                                    : pymRuleCtl(t, i, {});
                if (result == 9) ++answered;
                if (result != 9 && result != -1) ++unexpected;
                if (i % 8 == 0) PymEventAcquireOneWay(t, "p", "i", i, {});
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(unexpected.load(), 0);
    EXPECT_GT(answered.load(), 0u);
    EXPECT_GE(fake().callCount(), answered.load());
}

}  // namespace
}  // namespace vexal::testing
