// What every Event API function does around its one service call: without a connection, after a
// failed status, and on the call after that.
#include "PymTestSupport.h"

#include <binder_host/service_control.h>

#include <atomic>
#include <thread>

namespace vexal::testing {
namespace {

struct FrameCase {
    const char* name;
    Lines entry;  // written before connecting
    std::string noConnection;
    // The failed-status path; absent where a failed status cannot be had or is not a failure.
    std::optional<Lines> failure;  // after the entry lines
    std::string failed;
    std::function<std::string()> call;  // outputs must come back untouched when it fails
};

// Names the case in test listings, which would otherwise show its bytes.
void PrintTo(const FrameCase& c, std::ostream* os) {
    *os << c.name;
}

FrameCase frame(const char* name, Lines entry, std::string noConnection,
                std::optional<Lines> failure, std::string failed,
                std::function<std::string()> call) {
    return {name,   std::move(entry), std::move(noConnection), std::move(failure),
            failed, std::move(call)};
}

std::vector<FrameCase> frameCases() {
    const Lines ctlFailed{failedLine("PymEventAcquire"), logError("troxResCtlRequest error:-1")};
    const auto failing = [](const std::string& name, const std::string& what) {
        return Lines{logInfo("pym client hal " + name), failedLine(name), logError(what)};
    };
    return {
            frame("Init", {logError("pymInit enter")}, "-1", Lines{failedLine("trox_init")}, "-2",
                  [] { return str(pymInit()); }),
            frame("EventAcquire", {logInfo("PymEventAcquire, cmdid:4, pkg:p, identity:i")}, "-1",
                  ctlFailed, "-1",
                  [] { return str(PymEventAcquire(4, "p", "i", 1, list(r(1, "x")))); }),
            // Resource lines come after connecting, so none here.
            frame("EventAcquireOneWay",
                  {logInfo("PymEventAcquireOneWay, cmdid:4, pkg:p, identity:i")}, "-1",
                  std::nullopt, "",
                  [] { return str(PymEventAcquireOneWay(4, "p", "i", 1, list(r(1, "x")))); }),
            frame("Release", {logInfo("PymRelease, handle:7")}, "",
                  Lines{failedLine("troxResCtlRelease")}, "", [] { return PymRelease(7), ""; }),
            frame("Notify", {logInfo("PymNotify enter")}, "-1", Lines{failedLine("PymNotify")},
                  "-1", [] { return str(PymNotify(1, 2, {3})); }),
            frame("RelatedSysInfo", {}, "-1", Lines{failedLine("setRelatedSysInfo")}, "-1",
                  [] { return str(setRelatedSysInfo(1, 2)); }),
            frame("RuleCtl", {logInfo("pymRuleCtl, ruleId:3, status:4")}, "-1",
                  Lines{failedLine("pymRuleCtl")}, "-1",
                  [] { return str(pymRuleCtl(3, 4, list(r(1, "x")))); }),
            frame("MultiState", {logInfo("PymMutiResStateRequest enter")}, "-1 1=x",
                  Lines{failedLine("PymMutiResStateRequest")}, "-1 1=x",
                  [] { return multi(list(r(1, "x"))); }),
            // A failed power-consistency call throws instead; see FailedPowerConsis below.
            frame("PowerConsis", {logInfo("pym client PymGetPowerConsis")}, "-1", std::nullopt, "",
                  [] { return str(PymGetPowerConsis()); }),
            frame("History", {logInfo("pym client PymGetHistory")}, "-1 old",
                  failing("PymGetHistory",
                          "failed to get history or return vector empty, data vector size 0"),
                  "-1 old", history),
            frame("PMStatus", {logInfo("pym client PymGetPMStatus")}, "-1 ",
                  failing("PymGetPMStatus",
                          "failed to get power mode status, mode -5, data vector size 0"),
                  "-1 ", pmStatus),
            frame("FetchDataset", {logInfo("Pym_fetch_dataset enter")}, "0 1=x 2=- -1",
                  Lines{failedLine("Pym_fetch_dataset")}, "0 1=x 2=- -1", dataset),
            frame("FeatureStatus", {logInfo("PymGetFeatureStatus enter")}, "-1",
                  Lines{failedLine("PymGetFeatureStatus")}, "-1",
                  [] { return str(PymGetFeatureStatus(5)); }),
    };
}

using Start = FakeTroxService::Start;

class FrameTest : public ::testing::TestWithParam<FrameCase> {
  protected:
    LogCapture logs;  // outlives each service, whose death empties the connection
};

TEST_P(FrameTest, FailsWithoutAServiceOrOnAFailedStatusAndTheNextCallConnectsAgain) {
    const FrameCase& c = GetParam();
    for (Start start : {Start::kNotDeclared, Start::kDeclaredOnly}) {
        const bool declared = start == Start::kDeclaredOnly;
        SCOPED_TRACE(declared ? "not running" : "not declared");
        FakeTroxService service(start);
        logs.clear();
        EXPECT_EQ(c.call(), c.noConnection);
        EXPECT_EQ(
                logs.linesWithTag(kPymTag),
                c.entry + connectFailedLines(
                                  declared ? "Trox HAL Service not found"
                                           : "Trox is not declared, AServiceManager_isDeclared:0"));
        // Nothing of the failed attempt sticks: the next call connects and reaches the service.
        service.start();
        service.fake().setStateReply({entry(kPowerConsistencyOpcode, "1")});
        c.call();
        EXPECT_TRUE(service.fake().waitForCalls(1));
        EXPECT_EQ(service.fake().callCount(), 1u);
    }
    // A failed status comes either from the service or from the transport before the service.
    for (bool byService : {true, false}) {
        if (!c.failure) break;
        SCOPED_TRACE(byService ? "failed by the service" : "failed by the transport");
        FakeTroxService service;
        FakeTrox& fake = service.fake();
        logs.clear();
        if (byService) {
            fake.failNextCalls(1);
        } else {
            binder_host::failNextTransactions(STATUS_FAILED_TRANSACTION);
        }
        EXPECT_EQ(c.call(), c.failed);
        const size_t reached = byService ? 1 : 0;
        EXPECT_EQ(fake.callCount(), reached);
        EXPECT_EQ(logs.linesWithTag(kPymTag), c.entry + *c.failure);

        // The connection was dropped: the next call connects again, and a failing link shows it.
        logs.clear();
        binder_host::failNextLinkToDeath(STATUS_DEAD_OBJECT);
        EXPECT_EQ(c.call(), c.noConnection);
        EXPECT_EQ(logs.linesWithTag(kPymTag),
                  c.entry + connectFailedLines("Unable to link to g_pym_hal death notifications!"));
        EXPECT_EQ(fake.callCount(), reached);
        c.call();
        EXPECT_EQ(fake.callCount(), reached + 1) << "the call reaches the service again";
    }
}

INSTANTIATE_TEST_SUITE_P(Functions, FrameTest, ::testing::ValuesIn(frameCases()),
                         [](const auto& p) { return std::string(p.param.name); });

TEST_F(PymTest, FailedPowerConsisThrowsAndKeepsTheConnection) {
    fake().setStateReply({entry(kPowerConsistencyOpcode, "5")});
    fake().failNextCalls(1);
    EXPECT_THROW(PymGetPowerConsis(), std::bad_optional_access);
    EXPECT_EQ(pymLines(), (Lines{logInfo("pym client PymGetPowerConsis")}));

    // A reconnect would fail here; the kept connection does not need one.
    binder_host::failNextLinkToDeath(STATUS_DEAD_OBJECT);
    EXPECT_EQ(PymGetPowerConsis(), 5);
    EXPECT_EQ(fake().callCount(), 2u);
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
                const int32_t result = (i % 2 == 0) ? PymEventAcquire(t, "p", "i", i, {r(i, "v")})
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
