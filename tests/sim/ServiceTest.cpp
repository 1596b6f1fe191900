#include <android/log.h>
#include <gmock/gmock.h>

#include <future>
#include <thread>

#include "LogCapture.h"
#include "SimTestSupport.h"

namespace sim::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using vexal::testing::LogCapture;
using vexal::testing::LogLine;

bool logged(const LogCapture& logs, const std::string& part) {
    for (const auto& line : logs.linesWithTag("troxd")) {
        if (line.text.find(part) != std::string::npos) return true;
    }
    return false;
}

TEST_F(ServiceTest, AcquisitionsApplyTheirMergedSettingsUntilReleased) {
    struct Case {
        TroxRequestParcel request;
        int64_t big, little, cap;
    };
    const Case cases[] = {
            Case{parcel(kEvent, {entry(0)}), 800, 300, 900},
            Case{parcel(kEvent, {entry(6)}), 400, 50, 900},
            Case{parcel(kEvent, {entry(124)}), 100, 50, 900},  // not configured
            Case{parcel(kScenario, {entry(1)}), 100, 50, 500},
            Case{parcel(kResourceControl, {pathEntry(kCapPath, "450")}), 100, 50, 450},
            Case{parcel(kPlatformResource, {entry(kCap, "10")}), 100, 50, 300},
            Case{parcel(kResourceControl, {entry(kBig, "5000")}), 1000, 50, 900}};
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        const int32_t handle = request(c.request);
        ASSERT_GT(handle, 0);
        EXPECT_THAT(state(parcel(0, {})),
                    ElementsAre(idRecord(kBig, c.big), idRecord(kLittle, c.little),
                                idRecord(kCap, c.cap)));
        EXPECT_EQ(release(handle), 0);
        EXPECT_THAT(state(parcel(0, {})),
                    ElementsAre(idRecord(kBig, 100), idRecord(kLittle, 50), idRecord(kCap, 900)));
        EXPECT_EQ(release(handle), -1) << "a handle ends once";
    }
    EXPECT_THAT(state(parcel(0, {pathEntry(kCapPath), pathEntry("/no/such")})),
                ElementsAre(pathEntry(kCapPath, "900")));
}

TEST_F(ServiceTest, ExpiryOfOneHolderLeavesTheOthers) {
    const int32_t h = request(parcel(kResourceControl, {entry(kBig, "900")}, 50));
    request(parcel(kResourceControl, {entry(kBig, "400")}, 200));
    const int32_t forever = request(parcel(kResourceControl, {entry(kBig, "200")}));
    EXPECT_EQ(valueText(kBig), "900");
    clock->advance(50);
    EXPECT_EQ(valueText(kBig), "400");
    EXPECT_EQ(release(h), -1) << "an expired request is gone";
    clock->advance(150);
    EXPECT_EQ(valueText(kBig), "200");
    EXPECT_EQ(service().activeRequests(), 1u);
    release(forever);
    EXPECT_EQ(valueText(kBig), "100");
}

TEST_F(ServiceTest, ListenersGetRecordsOfWhatChangedForTheirResourcesOnly) {
    LogCapture logs;
    auto both = listen({entry(kBig), entry(kLittle)});
    auto little = listen({entry(kLittle)});
    auto byPath = listen({pathEntry(kBigPath)});
    EXPECT_THAT(logs.linesWithTag("troxd"),
                Contains(LogLine{ANDROID_LOG_INFO, "troxd",
                                 "listener 1 registered for 2 resources (id form)"}));
    request(parcel(kEvent, {entry(0)}, 30));
    const int32_t a = request(parcel(kResourceControl, {entry(kLittle, "400")}));
    request(parcel(kResourceControl, {entry(kLittle, "200")}));  // below 400: no change
    release(a);
    clock->advance(30);
    auto b1 = both->waitForCall(1), b2 = both->waitForCall(2), b3 = both->waitForCall(3);
    ASSERT_TRUE(b1 && b2 && b3);
    EXPECT_THAT(*b1, ElementsAre(idRecord(kBig, 800), idRecord(kLittle, 300)));
    EXPECT_THAT(*b2, ElementsAre(idRecord(kLittle, 400)));
    EXPECT_THAT(*b3, ElementsAre(idRecord(kLittle, 300)));
    auto b4 = both->waitForCall(4);
    ASSERT_TRUE(b4);
    EXPECT_THAT(*b4, ElementsAre(idRecord(kBig, 100), idRecord(kLittle, 200)));
    auto path = byPath->waitForCall(2);
    ASSERT_TRUE(path);
    EXPECT_THAT(*path, ElementsAre(pathEntry(kBigPath, "100")));
    ASSERT_TRUE(little->waitForCall(4));
    EXPECT_EQ(byPath->count(), 2u);
    EXPECT_EQ(both->count(), 4u);
}

TEST_F(ServiceTest, UnregisteredOrRefusedListenersHearNothing) {
    int32_t gone = 0;
    auto goneCb = listen({entry(kBig)}, &gone);
    auto stayCb = listen({entry(kBig)});
    int32_t out = -7;
    ASSERT_TRUE(trox->troxResListeningUnRegister(gone, &out).isOk());
    EXPECT_EQ(out, 0);
    ASSERT_TRUE(trox->troxResListeningUnRegister(gone, &out).isOk());
    EXPECT_EQ(out, -1);
    // An unknown resource, and a null callback (the generated proxy sends it), are refused.
    auto cb = ndk::SharedRefBase::make<RecordingCallback>();
    ASSERT_TRUE(trox->troxResListeningRegister(parcel(0, {entry(0x999)}), cb, &out).isOk());
    EXPECT_EQ(out, -1);
    ASSERT_TRUE(trox->troxResListeningRegister(parcel(0, {entry(kBig)}), nullptr, &out).isOk());
    EXPECT_EQ(out, -1);
    EXPECT_EQ(service().listenerCount(), 1u);
    request(parcel(kResourceControl, {entry(kBig, "300")}));
    ASSERT_TRUE(stayCb->waitForCall(1));
    // One-way calls are delivered in order, so the other one would have arrived by now.
    EXPECT_EQ(goneCb->count(), 0u);
}

TEST_F(ServiceTest, ListenerWhoseClientIsGoneIsDroppedAndTheServiceStillServes) {
    auto cb = listen({entry(kBig)});
    request(parcel(kResourceControl, {entry(kBig, "500")}, 10));
    ASSERT_TRUE(cb->waitForCall(1));
    LogCapture logs;
    binder_host::failNextTransactions(STATUS_DEAD_OBJECT);  // the expiry's delivery
    auto expiry = std::async(std::launch::async, [this] { clock->advance(10); });
    if (expiry.wait_for(std::chrono::seconds(10)) != std::future_status::ready) {
        ADD_FAILURE() << "a failed delivery wedged the service";
        std::abort();  // its lock is held for good: nothing after this could end
    }
    EXPECT_TRUE(logged(logs, "listener 1 dropped: its client is gone"));
    EXPECT_EQ(service().listenerCount(), 0u);
    EXPECT_EQ(valueText(kBig), "100");
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

TEST_F(ServiceTest, BadRequestsChangeNothingAndAHandleChangesItsOwnRequest) {
    EXPECT_EQ(request(parcel(kResourceControl, {entry(kBig, "500"), entry(0x999, "1")})), -1);
    EXPECT_EQ(request(parcel(kResourceControl, {entry(kBig, "fast")})), -1);
    EXPECT_EQ(request(parcel(kResourceControl, {entry(kBig, "")})), -1);
    EXPECT_EQ(request(parcel(kEvent, {})), -1);
    EXPECT_EQ(request(parcel(kScenario, {entry(77)})), -1);
    EXPECT_EQ(request(parcel(42, {entry(kBig, "500")})), -1);
    EXPECT_EQ(valueText(kBig), "100");
    EXPECT_EQ(service().activeRequests(), 0u);
    const int32_t h = request(parcel(kResourceControl, {entry(kBig, "500")}));
    TroxRequestParcel change = parcel(kResourceControl, {entry(kLittle, "70")});
    change.handle = h;
    EXPECT_EQ(request(change), h);
    EXPECT_EQ(valueText(kBig), "100");
    EXPECT_EQ(valueText(kLittle), "70");
    change.handle = h + 1000;
    EXPECT_EQ(request(change), -1);
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

TEST_F(ServiceTest, HistoryRecordsRequestsUpToItsSizeAndDiagnosticsSwitchIt) {
    LogCapture logs;
    EXPECT_TRUE(state(parcel(kHistory, {})).empty());
    TroxRequestParcel p = parcel(kEvent, {entry(0)});
    p.pkg = "com.example.app";
    const int32_t h = request(p);
    release(h);
    auto history = state(parcel(kHistory, {}));
    ASSERT_EQ(history.size(), 2u);
    const std::string first = history[0].res_Extra.value_or("");
    EXPECT_NE(first.find("event(8) pkg=com.example.app"), std::string::npos) << first;
    EXPECT_NE(first.find("-> " + std::to_string(h)), std::string::npos) << first;
    EXPECT_NE(
            history[1].res_Extra.value_or("").find("release handle=" + std::to_string(h) + " -> 0"),
            std::string::npos);
    for (int i = 0; i < 5; ++i) request(parcel(kNotification, {entry(i)}));
    EXPECT_EQ(state(parcel(kHistory, {})).size(), 4u) << "the configured size bounds it";

    request(parcel(kResourceControl, {entry(kBig, "700")}));
    EXPECT_EQ(request(parcel(kDiagnostics, {entry(kDumpActiveResMap)})), 1);
    EXPECT_TRUE(logged(logs, "0x00000100 big.min = 700"));
    EXPECT_EQ(request(parcel(kDiagnostics, {entry(9)})), 0) << "selector 9 is not used";
    EXPECT_EQ(request(parcel(kDiagnostics, {entry(kHistoryOff)})), 1);
    EXPECT_FALSE(service().historyEnabled());
}

TEST_F(ServiceTest, ThermalNotificationReachesMatchingThermalListeners) {
    auto cpu = ndk::SharedRefBase::make<RecordingCallback>();
    auto all = ndk::SharedRefBase::make<RecordingCallback>();
    int32_t h1 = 0;
    int32_t h2 = 0;
    ASSERT_TRUE(trox->troxThermalListeningRegister({1}, cpu, &h1).isOk());
    ASSERT_TRUE(trox->troxThermalListeningRegister({}, all, &h2).isOk());
    EXPECT_NE(h1, h2);
    EXPECT_EQ(request(parcel(kThermalNotify, {entry(2, "3")})), 1);
    EXPECT_EQ(request(parcel(kThermalNotify, {entry(1, "5")})), 1);
    auto a1 = all->waitForCall(1), a2 = all->waitForCall(2), c1 = cpu->waitForCall(1);
    ASSERT_TRUE(a1 && a2 && c1);
    EXPECT_THAT(*a1, ElementsAre(entry(2, "3")));
    EXPECT_THAT(*c1, ElementsAre(entry(1, "5")));
    EXPECT_EQ(cpu->count(), 1u);
    int32_t out = -7;
    ASSERT_TRUE(trox->troxThermalListeningUnregister(h1, &out).isOk());
    EXPECT_EQ(out, 0);
    EXPECT_EQ(request(parcel(kThermalNotify, {})), 0);
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
        std::string json = testConfigJson();
        json.insert(json.rfind('}'), R"(, "limits": {"max_requests": 3, "max_text": 32})");
        start(json);
    }
};

TEST_F(LimitedServiceTest, TextsOverTheLimitAreRefusedAndNothingIsKept) {
    for (size_t length : {32, 33, 100000}) {
        LogCapture logs;
        const std::string text(length, 'p');
        const bool fits = length <= 32;
        TroxRequestParcel p = parcel(kResourceControl, {entry(kBig, "300")});
        p.identity = text;
        const int32_t handle = request(p);
        EXPECT_EQ(handle > 0, fits);
        EXPECT_EQ(service().activeRequests(), fits ? 1u : 0u);
        release(handle);
        int32_t result = -7;
        ASSERT_TRUE(trox->troxPropertySet(text, "v", &result).isOk());
        EXPECT_EQ(service().property(text) == "v", fits);
        EXPECT_EQ(request(parcel(kThermalNotify, {entry(9, text)})) == 1, fits);
        for (const std::string what : {"identity", "property key", "thermal level"}) {
            EXPECT_EQ(logged(logs, what + " of " + std::to_string(length) +
                                           " characters, the limit is 32"),
                      !fits)
                    << what << " of " << length;
        }
    }
}

TEST_F(LimitedServiceTest, TheTableHoldsRequestsAndListenersUpToTheLimit) {
    LogCapture logs;
    const int32_t a = request(parcel(kResourceControl, {entry(kBig, "300")}));
    ASSERT_GT(a, 0);
    ASSERT_GT(request(parcel(kResourceControl, {entry(kLittle, "60")}, 10000)), 0);
    listen({entry(kBig)});
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

}  // namespace
}  // namespace sim::testing
