#include <gmock/gmock.h>

#include <chrono>
#include <set>
#include <thread>

#include "LogCapture.h"
#include "SimTestSupport.h"

namespace sim::testing {
namespace {

using ::testing::ElementsAre;

TEST_F(ServiceTest, EventAcquisitionAppliesTheActionAndReleaseRestores) {
    TroxRequestParcel p = parcel(kEvent, {entry(0)}, 0);
    p.pkg = "com.example.app";
    p.identity = "launch";
    const int32_t handle = request(p);
    ASSERT_GT(handle, 0);
    EXPECT_EQ(valueText(kBig), "800");
    EXPECT_EQ(valueText(kLittle), "300");
    EXPECT_EQ(release(handle), 0);
    EXPECT_EQ(valueText(kBig), "100");
    EXPECT_EQ(valueText(kLittle), "50");
    EXPECT_EQ(release(handle), -1) << "a handle ends once";
}

TEST_F(ServiceTest, BoostsMergeHighestWinsUntilTheLastHolderEnds) {
    const int32_t low = request(parcel(kResourceControl, {entry(kBig, "300")}));
    const int32_t high = request(parcel(kResourceControl, {entry(kBig, "700")}));
    ASSERT_GT(low, 0);
    ASSERT_GT(high, 0);
    EXPECT_NE(low, high);
    EXPECT_EQ(valueText(kBig), "700");
    release(high);
    EXPECT_EQ(valueText(kBig), "300");
    release(low);
    EXPECT_EQ(valueText(kBig), "100");
}

TEST_F(ServiceTest, LimitsMergeLowestWinsAndValuesAreClamped) {
    const int32_t a = request(parcel(kResourceControl, {entry(kCap, "600")}));
    const int32_t b = request(parcel(kPlatformResource, {entry(kCap, "10")}));
    EXPECT_EQ(valueText(kCap), "300") << "10 is below the minimum";
    release(b);
    EXPECT_EQ(valueText(kCap), "600");
    release(a);
    EXPECT_EQ(valueText(kCap), "900");
}

TEST_F(ServiceTest, DurationExpiresOnTheClockAndRestoresTheValue) {
    const int32_t h = request(parcel(kResourceControl, {entry(kBig, "500")}, 100));
    ASSERT_GT(h, 0);
    clock->advance(99);
    EXPECT_EQ(valueText(kBig), "500");
    EXPECT_EQ(service().activeRequests(), 1u);
    clock->advance(1);
    EXPECT_EQ(valueText(kBig), "100");
    EXPECT_EQ(service().activeRequests(), 0u);
    EXPECT_EQ(release(h), -1) << "an expired request is gone";
}

TEST_F(ServiceTest, ExpiryOfOneHolderLeavesTheOthers) {
    request(parcel(kResourceControl, {entry(kBig, "900")}, 50));
    request(parcel(kResourceControl, {entry(kBig, "400")}, 200));
    const int32_t forever = request(parcel(kResourceControl, {entry(kBig, "200")}));
    EXPECT_EQ(valueText(kBig), "900");
    clock->advance(50);
    EXPECT_EQ(valueText(kBig), "400");
    clock->advance(150);
    EXPECT_EQ(valueText(kBig), "200");
    clock->advance(100000);
    EXPECT_EQ(valueText(kBig), "200");
    release(forever);
    EXPECT_EQ(valueText(kBig), "100");
}

TEST_F(ServiceTest, ListenerGetsRecordsOfWhatChangedOnAcquireExpiryAndRelease) {
    auto cb = listen({entry(kBig), entry(kLittle)});
    request(parcel(kEvent, {entry(0)}, 30));
    auto first = cb->waitForCall(1);
    ASSERT_TRUE(first);
    EXPECT_THAT(*first, ElementsAre(idRecord(kBig, 800), idRecord(kLittle, 300)));
    clock->advance(30);
    auto second = cb->waitForCall(2);
    ASSERT_TRUE(second);
    EXPECT_THAT(*second, ElementsAre(idRecord(kBig, 100), idRecord(kLittle, 50)));
}

TEST_F(ServiceTest, ListenerIsNotToldOfOtherResourcesOrOfMergesThatChangeNothing) {
    auto cb = listen({entry(kLittle)});
    request(parcel(kResourceControl, {entry(kBig, "700")}));
    const int32_t a = request(parcel(kResourceControl, {entry(kLittle, "400")}));
    request(parcel(kResourceControl, {entry(kLittle, "200")}));  // below 400: no change
    release(a);                                                  // 400 -> 200
    auto first = cb->waitForCall(1);
    auto second = cb->waitForCall(2);
    ASSERT_TRUE(first && second);
    EXPECT_THAT(*first, ElementsAre(idRecord(kLittle, 400)));
    EXPECT_THAT(*second, ElementsAre(idRecord(kLittle, 200)));
    EXPECT_EQ(cb->count(), 2u);
}

TEST_F(ServiceTest, PathListenerGetsPathRecords) {
    auto cb = listen({pathEntry(kBigPath)});
    request(parcel(kResourceControl, {pathEntry(kBigPath, "650")}));
    auto call = cb->waitForCall(1);
    ASSERT_TRUE(call);
    ASSERT_EQ(call->size(), 1u);
    EXPECT_EQ((*call)[0].res_Path, kBigPath);
    EXPECT_EQ((*call)[0].res_Value, "650");
}

TEST_F(ServiceTest, UnregisteredListenerHearsNothingMore) {
    int32_t gone = 0;
    auto goneCb = listen({entry(kBig)}, &gone);
    auto stayCb = listen({entry(kBig)});
    int32_t out = -7;
    ASSERT_TRUE(trox->troxResListeningUnRegister(gone, &out).isOk());
    EXPECT_EQ(out, 0);
    ASSERT_TRUE(trox->troxResListeningUnRegister(gone, &out).isOk());
    EXPECT_EQ(out, -1);
    request(parcel(kResourceControl, {entry(kBig, "300")}));
    ASSERT_TRUE(stayCb->waitForCall(1));
    // One-way calls are delivered in order, so the other one would have arrived by now.
    EXPECT_EQ(goneCb->count(), 0u);
}

TEST_F(ServiceTest, ListeningToAnUnknownResourceOrWithoutCallbackIsRefused) {
    int32_t out = 0;
    auto cb = ndk::SharedRefBase::make<RecordingCallback>();
    ASSERT_TRUE(trox->troxResListeningRegister(parcel(0, {entry(0x999)}), cb, &out).isOk());
    EXPECT_EQ(out, -1);
    // As on a device, a null callback reaches the service (the generated proxy sends it), which
    // refuses the registration.
    out = 0;
    ASSERT_TRUE(trox->troxResListeningRegister(parcel(0, {entry(kBig)}), nullptr, &out).isOk());
    EXPECT_EQ(out, -1);
    EXPECT_EQ(service().listenerCount(), 0u);
}

TEST_F(ServiceTest, RequestWithCallbackGetsOneReplyWithTheResultingValues) {
    auto cb = ndk::SharedRefBase::make<RecordingCallback>();
    request(parcel(kResourceControl, {entry(kBig, "900")}));
    TroxRequestParcel p = parcel(kResourceControl, {entry(kBig, "500"), entry(kCap, "700")});
    p.callback = cb;
    ASSERT_GT(request(p), 0);
    auto reply = cb->waitForCall(1);
    ASSERT_TRUE(reply);
    EXPECT_THAT(*reply, ElementsAre(idRecord(kBig, 900), idRecord(kCap, 700)))
            << "merged values, not the requested ones";
    auto sentinel = listen({entry(kLittle)});
    request(parcel(kResourceControl, {entry(kLittle, "60")}));
    ASSERT_TRUE(sentinel->waitForCall(1));
    EXPECT_EQ(cb->count(), 1u) << "one-shot";
}

TEST_F(ServiceTest, OneWayRequestIsKeptUnderTheCallersHandle) {
    TroxRequestParcel p = parcel(kEvent, {entry(6)});
    p.handle = 123456;
    auto cb = listen({entry(kBig)});
    ASSERT_TRUE(trox->troxResCtlRequestOneWay(p).isOk());
    ASSERT_TRUE(cb->waitForCall(1)) << "the one-way request was served";
    EXPECT_EQ(valueText(kBig), "400");
    EXPECT_EQ(release(123456), 0);
    EXPECT_EQ(valueText(kBig), "100");
}

TEST_F(ServiceTest, PathRequestsAndPathStateQueries) {
    const int32_t h = request(parcel(kResourceControl, {pathEntry(kCapPath, "450")}));
    ASSERT_GT(h, 0);
    auto reply = state(parcel(0, {pathEntry(kCapPath), pathEntry("/no/such")}));
    ASSERT_EQ(reply.size(), 1u);
    EXPECT_EQ(reply[0].res_Path, kCapPath);
    EXPECT_EQ(reply[0].res_Value, "450");
}

TEST_F(ServiceTest, RequestsWithUnknownResourcesOrBadValuesChangeNothing) {
    EXPECT_EQ(request(parcel(kResourceControl, {entry(kBig, "500"), entry(0x999, "1")})), -1);
    EXPECT_EQ(request(parcel(kResourceControl, {entry(kBig, "fast")})), -1);
    EXPECT_EQ(request(parcel(kResourceControl, {entry(kBig, "")})), -1);
    EXPECT_EQ(request(parcel(kEvent, {})), -1);
    EXPECT_EQ(request(parcel(42, {entry(kBig, "500")})), -1);
    EXPECT_EQ(valueText(kBig), "100");
    EXPECT_EQ(service().activeRequests(), 0u);
}

TEST_F(ServiceTest, ChangingAnExistingRequestByHandleKeepsItsHandle) {
    const int32_t h = request(parcel(kResourceControl, {entry(kBig, "500")}));
    TroxRequestParcel change = parcel(kResourceControl, {entry(kLittle, "70")});
    change.handle = h;
    EXPECT_EQ(request(change), h);
    EXPECT_EQ(valueText(kBig), "100");
    EXPECT_EQ(valueText(kLittle), "70");
    change.handle = h + 1000;
    EXPECT_EQ(request(change), -1);
}

TEST_F(ServiceTest, ScenarioRequestsApplyTheScenarioUntilReleased) {
    const int32_t h = request(parcel(kScenario, {entry(1)}));
    ASSERT_GT(h, 0);
    EXPECT_EQ(valueText(kCap), "500");
    EXPECT_EQ(release(h), 0);
    EXPECT_EQ(valueText(kCap), "900");
    EXPECT_EQ(request(parcel(kScenario, {entry(77)})), -1);
}

TEST_F(ServiceTest, UnconfiguredActionIsGrantedWithoutChangingAnything) {
    const int32_t h = request(parcel(kEvent, {entry(124)}));
    EXPECT_GT(h, 0);
    EXPECT_EQ(valueText(kBig), "100");
    EXPECT_EQ(release(h), 0);
}

TEST_F(ServiceTest, RuleSetsByStatusAddsNumericDataAndStatusZeroRestores) {
    int32_t out = -7;
    ASSERT_TRUE(
            trox->troxRuleCtl(102, 1, {entry(kLittle, "90"), entry(0x01010FB0, "enable 0")}, &out)
                    .isOk());
    EXPECT_EQ(out, 0);
    EXPECT_EQ(valueText(kBig), "600");
    EXPECT_EQ(valueText(kLittle), "90");
    ASSERT_TRUE(trox->troxRuleCtl(102, 0, {}, &out).isOk());
    EXPECT_EQ(out, 0);
    EXPECT_EQ(valueText(kBig), "100");
    EXPECT_EQ(valueText(kLittle), "50");
}

TEST_F(ServiceTest, StateQueryWithoutEntriesListsEveryResource) {
    auto reply = state(parcel(0, {}));
    EXPECT_THAT(reply,
                ElementsAre(idRecord(kBig, 100), idRecord(kLittle, 50), idRecord(kCap, 900)));
}

TEST_F(ServiceTest, StatusDatasetAndPowerConsistencyComeFromTheConfiguration) {
    EXPECT_THAT(state(parcel(kPowerModeStatus, {entry(0)})), ElementsAre(idRecord(0, 1)));
    EXPECT_TRUE(state(parcel(kPowerModeStatus, {entry(5)})).empty());
    EXPECT_THAT(state(parcel(kFeatureStatus, {entry(7)})), ElementsAre(idRecord(7, 1)));
    EXPECT_TRUE(state(parcel(kFeatureStatus, {entry(8)})).empty());
    EXPECT_THAT(state(parcel(kDataset, {})),
                ElementsAre(entry(1, "soc:test"), entry(2, "clusters:2")));
    const TroxRequestData consis = entry(kPowerConsistencyId, "87");
    EXPECT_THAT(state(parcel(kPowerConsistency, {entry(kPowerConsistencyId, "0 1 35")})),
                ElementsAre(consis));
    EXPECT_THAT(state(parcel(0, {entry(kPowerConsistencyId)})), ElementsAre(consis));
}

TEST_F(ServiceTest, HistoryKeepsOneReadableRecordPerRequestUpToItsSize) {
    EXPECT_TRUE(state(parcel(kHistory, {})).empty());
    TroxRequestParcel p = parcel(kEvent, {entry(0)});
    p.pkg = "com.example.app";
    const int32_t h = request(p);
    release(h);
    auto history = state(parcel(kHistory, {}));
    ASSERT_EQ(history.size(), 2u);
    ASSERT_TRUE(history[0].res_Extra);
    EXPECT_NE(history[0].res_Extra->find("event(8) pkg=com.example.app"), std::string::npos)
            << *history[0].res_Extra;
    EXPECT_NE(history[0].res_Extra->find("-> " + std::to_string(h)), std::string::npos);
    EXPECT_NE(history[1].res_Extra->find("release handle=" + std::to_string(h) + " -> 0"),
              std::string::npos)
            << *history[1].res_Extra;
    for (int i = 0; i < 5; ++i) request(parcel(kNotification, {entry(i)}));
    EXPECT_EQ(state(parcel(kHistory, {})).size(), 4u) << "the configured size bounds it";
}

TEST_F(ServiceTest, DiagnosticsDumpToTheLogAndSwitchHistory) {
    vexal::testing::LogCapture logs;
    request(parcel(kResourceControl, {entry(kBig, "700")}));
    TroxRequestParcel dump = parcel(kDiagnostics, {entry(kDumpActiveResMap)});
    dump.param = 1;
    EXPECT_EQ(request(dump), 1);
    bool sawBig = false;
    for (const auto& line : logs.linesWithTag("troxd")) {
        sawBig |= line.text.find("0x00000100 big.min = 700") != std::string::npos;
    }
    EXPECT_TRUE(sawBig);
    for (int32_t selector : {0, 1, 3, 4, 5, 6, 7, 8}) {
        EXPECT_EQ(request(parcel(kDiagnostics, {entry(selector)})), 1) << selector;
    }
    EXPECT_EQ(request(parcel(kDiagnostics, {entry(9)})), 0) << "selector 9 is not used";
    EXPECT_EQ(request(parcel(kDiagnostics, {entry(kHistoryOff)})), 1);
    EXPECT_FALSE(service().historyEnabled());
    const size_t before = service().historySize();
    request(parcel(kNotification, {entry(1)}));
    EXPECT_EQ(service().historySize(), before);
    EXPECT_EQ(request(parcel(kDiagnostics, {entry(kHistoryOn)})), 1);
    EXPECT_TRUE(service().historyEnabled());
}

TEST_F(ServiceTest, ThermalNotificationReachesMatchingThermalListeners) {
    auto cpu = ndk::SharedRefBase::make<RecordingCallback>();
    auto all = ndk::SharedRefBase::make<RecordingCallback>();
    int32_t h1 = 0;
    int32_t h2 = 0;
    ASSERT_TRUE(trox->troxThermalListeningRegister({1}, cpu, &h1).isOk());
    ASSERT_TRUE(trox->troxThermalListeningRegister({}, all, &h2).isOk());
    EXPECT_GT(h1, 0);
    EXPECT_NE(h1, h2);
    EXPECT_EQ(request(parcel(kThermalNotify, {entry(2, "3")})), 1);
    EXPECT_EQ(request(parcel(kThermalNotify, {entry(1, "5")})), 1);
    auto a1 = all->waitForCall(1);
    auto a2 = all->waitForCall(2);
    auto c1 = cpu->waitForCall(1);
    ASSERT_TRUE(a1 && a2 && c1);
    EXPECT_THAT(*a1, ElementsAre(entry(2, "3")));
    EXPECT_THAT(*c1, ElementsAre(entry(1, "5")));
    EXPECT_EQ(cpu->count(), 1u);
    int32_t out = -7;
    ASSERT_TRUE(trox->troxThermalListeningUnregister(h1, &out).isOk());
    EXPECT_EQ(out, 0);
    ASSERT_TRUE(trox->troxThermalListeningUnregister(h1, &out).isOk());
    EXPECT_EQ(out, -1);
    EXPECT_EQ(request(parcel(kThermalNotify, {})), 0);
}

TEST_F(ServiceTest, PropertiesAndSystemInfo) {
    std::string value;
    ASSERT_TRUE(trox->troxPropertyGet("ro.test.name", &value).isOk());
    EXPECT_EQ(value, "sim");
    ASSERT_TRUE(trox->troxPropertyGet("missing", &value).isOk());
    EXPECT_EQ(value, "");
    int32_t out = -7;
    ASSERT_TRUE(trox->troxPropertySet("vendor.x", "on", &out).isOk());
    EXPECT_EQ(out, 0);
    ASSERT_TRUE(trox->troxPropertyGet("vendor.x", &value).isOk());
    EXPECT_EQ(value, "on");
    ASSERT_TRUE(trox->troxPropertySet("vendor.x", std::string(256, 'a'), &out).isOk());
    EXPECT_EQ(out, -1) << "clients cannot hold 256 characters";
    ASSERT_TRUE(trox->troxPropertySet("", "v", &out).isOk());
    EXPECT_EQ(out, -1);
    ASSERT_TRUE(trox->setRelatedSysInfo(3, 4, &out).isOk());
    EXPECT_EQ(out, 0);
    EXPECT_TRUE(trox->trox_init().isOk());
    EXPECT_TRUE(trox->reservedSlot1().isOk());
    EXPECT_TRUE(trox->reservedSlot12().isOk());
}

TEST_F(ServiceTest, HandlesStayUniqueAcrossRequestsAndListeners) {
    std::set<int32_t> seen;
    for (int i = 0; i < 20; ++i) {
        const int32_t h = request(parcel(kResourceControl, {entry(kBig, "200")}));
        EXPECT_GT(h, 0);
        EXPECT_TRUE(seen.insert(h).second);
        int32_t lh = 0;
        listen({entry(kBig)}, &lh);
        EXPECT_TRUE(seen.insert(lh).second);
    }
}

TEST_F(ServiceTest, InjectedFailuresFailExactlyTheNextCalls) {
    service().failNextCalls(2);
    int32_t out = -7;
    auto st = trox->troxResCtlRequest(parcel(kResourceControl, {entry(kBig, "500")}), &out);
    EXPECT_EQ(st.getExceptionCode(), EX_SERVICE_SPECIFIC);
    EXPECT_EQ(st.getServiceSpecificError(), kInjectedError);
    EXPECT_FALSE(trox->trox_init().isOk());
    EXPECT_TRUE(trox->trox_init().isOk());
    EXPECT_EQ(valueText(kBig), "100") << "a failed call changes nothing";
}

TEST_F(ServiceTest, FaultsCanBeSetThroughProperties) {
    int32_t out = -7;
    ASSERT_TRUE(trox->troxPropertySet(kFaultFailNextProperty, "1", &out).isOk());
    EXPECT_EQ(out, 0);
    EXPECT_FALSE(trox->trox_init().isOk());
    EXPECT_TRUE(trox->trox_init().isOk());
    ASSERT_TRUE(trox->troxPropertySet(kFaultDelayProperty, "x", &out).isOk());
    EXPECT_EQ(out, -1);
}

TEST_F(ServiceTest, DelayedCallsTakeAtLeastTheDelay) {
    service().setCallDelayMs(60);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(trox->trox_init().isOk());
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
}

TEST_F(ServiceTest, DyingUnpublishesAndRestartServesAgain) {
    service().die();
    EXPECT_EQ(AServiceManager_checkService(kTroxInstance), nullptr);
    EXPECT_EQ(trox->trox_init().getStatus(), STATUS_DEAD_OBJECT);
    embedded->restart();
    auto fresh = ITrox::fromBinder(ndk::SpAIBinder(AServiceManager_checkService(kTroxInstance)));
    ASSERT_NE(fresh, nullptr);
    EXPECT_TRUE(fresh->trox_init().isOk());
    EXPECT_EQ(embedded->service()->activeRequests(), 0u);
}

TEST_F(ServiceTest, ConcurrentClientsKeepTheModelConsistent) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([this, t] {
            for (int i = 0; i < 50; ++i) {
                int32_t h = -1;
                trox->troxResCtlRequest(
                        parcel(kResourceControl, {entry(kBig, std::to_string(200 + t * 100))}), &h);
                int32_t out = 0;
                trox->troxResCtlRelease(h, &out);
            }
        });
    }
    for (auto& th : threads) th.join();
    EXPECT_EQ(valueText(kBig), "100");
    EXPECT_EQ(service().activeRequests(), 0u);
}

// The test device with limits of its own; replaces the fixture's service.
class LimitedServiceTest : public ServiceTest {
  protected:
    void SetUp() override {
        ServiceTest::SetUp();
        std::string json = testConfigJson();
        const std::string history = R"("history": {"size": 4})";
        json.replace(json.find(history), history.size(),
                     history + R"(, "limits": {"max_requests": 3, "max_text": 32})");
        trox.reset();
        embedded.reset();
        binder_host::resetServiceManager();
        embedded = startEmbeddedService(parseConfig(json), clock);
        trox = ITrox::fromBinder(ndk::SpAIBinder(AServiceManager_checkService(kTroxInstance)));
        ASSERT_NE(trox, nullptr);
    }

    bool logged(const vexal::testing::LogCapture& logs, const std::string& part) {
        for (const auto& line : logs.linesWithTag("troxd")) {
            if (line.text.find(part) != std::string::npos) return true;
        }
        return false;
    }
};

TEST_F(LimitedServiceTest, TextsOverTheLimitAreRefusedAndNothingIsKept) {
    struct Case {
        const char* what;
        size_t length;
        bool accepted;
    };
    for (const Case& c : {Case{"package name", 32, true}, Case{"package name", 33, false},
                          Case{"identity", 33, false}, Case{"package name", 100000, false},
                          Case{"property key", 32, true}, Case{"property key", 33, false},
                          Case{"thermal level", 32, true}, Case{"thermal level", 33, false}}) {
        SCOPED_TRACE(std::string(c.what) + " of " + std::to_string(c.length));
        vexal::testing::LogCapture logs;
        const std::string text(c.length, 'p');
        const std::string what = c.what;
        int32_t result = -7;
        if (what == "property key") {
            ASSERT_TRUE(trox->troxPropertySet(text, "v", &result).isOk());
            EXPECT_EQ(result == 0, c.accepted);
            EXPECT_EQ(service().property(text) == "v", c.accepted);
        } else if (what == "thermal level") {
            result = request(parcel(kThermalNotify, {entry(9, text)}));
            EXPECT_EQ(result == 1, c.accepted);
        } else {
            TroxRequestParcel p = parcel(kResourceControl, {entry(kBig, "300")});
            (what == "identity" ? p.identity : p.pkg) = text;
            result = request(p);
            EXPECT_EQ(result > 0, c.accepted);
            EXPECT_EQ(service().activeRequests(), c.accepted ? 1u : 0u);
            if (result > 0) release(result);
        }
        EXPECT_EQ(logged(logs,
                         what + " of " + std::to_string(c.length) + " characters, the limit is 32"),
                  !c.accepted);
    }
}

TEST_F(LimitedServiceTest, TheTableHoldsRequestsAndListenersUpToTheLimit) {
    vexal::testing::LogCapture logs;
    const int32_t a = request(parcel(kResourceControl, {entry(kBig, "300")}));
    const int32_t b = request(parcel(kResourceControl, {entry(kLittle, "60")}, 10000));
    listen({entry(kBig)});
    ASSERT_GT(a, 0);
    ASSERT_GT(b, 0);
    EXPECT_EQ(request(parcel(kResourceControl, {entry(kCap, "500")})), -1);
    EXPECT_EQ(valueText(kCap), "900") << "a refused request changes nothing";
    int32_t handle = -7;
    ASSERT_TRUE(trox->troxResListeningRegister(parcel(0, {entry(kCap)}),
                                               ndk::SharedRefBase::make<RecordingCallback>(),
                                               &handle)
                        .isOk());
    EXPECT_EQ(handle, -1);
    EXPECT_TRUE(logged(logs, "3 requests and listeners live, the limit")) << "the refusal is told";
    // Changing a live request needs no room.
    TroxRequestParcel change = parcel(kResourceControl, {entry(kBig, "400")});
    change.handle = a;
    EXPECT_EQ(request(change), a);
    EXPECT_EQ(release(a), 0);
    EXPECT_GT(request(parcel(kResourceControl, {entry(kCap, "500")})), 0);
    EXPECT_EQ(valueText(kCap), "500");
}

TEST(ConfigLimitsTest, LimitsAreReadAndChecked) {
    std::string json = testConfigJson();
    json.insert(json.rfind('}'), R"(, "limits": {"max_requests": 5, "max_text": 100,
        "max_connections": 7, "reply_timeout_ms": 250})");
    const Config config = parseConfig(json);
    EXPECT_EQ(config.maxRequests, 5u);
    EXPECT_EQ(config.maxText, 100u);
    EXPECT_EQ(config.transportLimits,
              (std::map<std::string, uint64_t>{{"BINDER_HOST_MAX_CONNECTIONS", 7},
                                               {"BINDER_HOST_REPLY_TIMEOUT_MS", 250}}));
    const Config defaults = parseConfig(testConfigJson());
    EXPECT_EQ(defaults.maxRequests, 1024u);
    EXPECT_EQ(defaults.maxText, 256u);
    EXPECT_TRUE(defaults.transportLimits.empty());
    for (const char* bad : {R"({"max_requests": 0})", R"({"max_text": 8})", R"({"max_pid": 3})",
                            R"({"max_connections": 0})", R"([1])"}) {
        std::string j = testConfigJson();
        j.insert(j.rfind('}'), std::string(R"(, "limits": )") + bad);
        EXPECT_THROW(parseConfig(j), ConfigError) << bad;
    }
}

}  // namespace
}  // namespace sim::testing
