// The service's timeline: what a scripted session leaves in its trace, and the ring's bound.
#include <unistd.h>
#include <nlohmann/json.hpp>

#include "SimTestSupport.h"
#include "TraceCheck.h"
#include "trox_sim/TraceJson.h"

namespace sim::testing {
namespace {

using json = nlohmann::json;

TEST_F(ServiceTest, TimelineHoldsTheSessionsRequestsValuesAndInstants) {
    const int32_t a = getpid() + 1;
    const int32_t b = getpid() + 2;
    auto from = [](int32_t pid, const char* pkg, TroxRequestParcel p) {
        p.pid = pid;
        p.pkg = pkg;
        p.identity = "id-" + std::string(pkg);
        return p;
    };
    clock->advance(10);
    ASSERT_EQ(request(from(a, "com.a", parcel(kEvent, {entry(0)}, 100))), 1);
    clock->advance(20);
    ASSERT_EQ(request(from(b, "com.b", parcel(kResourceControl, {entry(kCap, "400")}))), 2);
    clock->advance(10);
    ASSERT_EQ(request(from(a, "com.a", parcel(kNotification, {entry(0x55), entry(1, "on")}))), 0);
    clock->advance(10);
    // Not in this configuration's actions: named from the wrapper's catalogue.
    ASSERT_EQ(request(from(a, "com.a", parcel(kEvent, {entry(7)}))), 3);
    clock->advance(100);  // request 1 expires on the way, at 110
    ASSERT_EQ(release(2), 0);
    clock->advance(10);
    int32_t ok = -1;
    ASSERT_TRUE(trox->troxRuleCtl(102, 1, {}, &ok).isOk());
    ASSERT_TRUE(trox->setRelatedSysInfo(4, 2, &ok).isOk());
    ASSERT_EQ(request(parcel(kThermalNotify, {entry(5, "hot")})), 1);
    clock->advance(40);

    const json trace = json::parse(traceJson(embedded->timeline()->snapshot()));
    ASSERT_EQ(vexal::testing::traceProblem(trace), "");
    auto track = [&](const json& pid) {
        return pid == a ? "a" : pid == b ? "b" : pid == getpid() ? "service" : "other";
    };
    json got = {{"slices", json::array()},
                {"counters", json::array()},
                {"instants", json::array()},
                {"processes", json::object()}};
    for (const json& e : trace["traceEvents"]) {
        if (e["ph"] == "X") {
            // Lane 1 is the caller's first track, a request overlapping it goes on lane 2.
            got["slices"].push_back({e["name"], track(e["pid"]), e["tid"] == e["pid"] ? 1 : 2,
                                     e["ts"], e["ts"].get<int64_t>() + e["dur"].get<int64_t>(),
                                     e["args"]});
        } else if (e["ph"] == "C") {
            got["counters"].push_back({e["name"], track(e["pid"]), e["ts"], e["args"]["value"]});
        } else if (e["ph"] == "i") {
            got["instants"].push_back({e["name"], track(e["pid"]), e["ts"]});
        } else if (e["name"] == "process_name") {
            got["processes"][track(e["pid"])] = e["args"]["name"];
        }
    }
    EXPECT_EQ(got, json::parse(R"({
      "slices": [
        ["ACTION_LAUNCH", "a", 1, 10000, 110000, {"handle": 1, "identity": "id-com.a",
         "package": "com.a", "duration": "100 ms", "resources": {"big.min": 800, "little.min": 300},
         "ended": "expired"}],
        ["resctl cap", "b", 1, 30000, 150000, {"handle": 2, "identity": "id-com.b", "package": "com.b",
         "duration": "until release", "resources": {"cap": 400}, "ended": "released"}],
        ["ACTION_SWIPE_H", "a", 2, 50000, 200000, {"handle": 3, "identity": "id-com.a",
         "package": "com.a", "duration": "until release", "resources": {}, "ended": "live"}]],
      "counters": [
        ["big.min", "service", 0, 100], ["little.min", "service", 0, 50], ["cap", "service", 0, 900],
        ["big.min", "service", 10000, 800], ["little.min", "service", 10000, 300],
        ["cap", "service", 30000, 400],
        ["big.min", "service", 110000, 100], ["little.min", "service", 110000, 50],
        ["cap", "service", 150000, 900], ["big.min", "service", 160000, 600]],
      "instants": [["troxd started", "service", 0], ["notification 0x00000055", "a", 40000],
                   ["rule touch status 1", "service", 160000], ["system info 4 = 2", "service", 160000],
                   ["thermal 5 level hot", "service", 160000]],
      "processes": {"service": "troxd", "a": "com.a", "b": "com.b"}})"));
}

TEST(Timeline, AFullRingDropsItsOldestEventsAndSaysHowMany) {
    const Config config = parseConfig(R"({"timeline": {"size": 16}, "resources": [{"id": 7,
        "name": "gpu", "kind": "boost", "default": 1, "min": 1, "max": 9}]})");
    Timeline timeline(config.timelineSize);
    const uint64_t g = timeline.attach(std::make_shared<ManualClock>(), "troxd",
                                       {{7, "gpu"}, {8, "bus"}}, {{7, 1}, {8, 2}});
    for (int64_t ms = 1; ms <= 100; ++ms) timeline.add(g, TimelineCounter{7, ms * 1000, ms * 10});
    const TimelineSnapshot s = timeline.snapshot();
    EXPECT_EQ(s.events.size(), 16u);
    EXPECT_EQ(s.dropped, 103u - 16u);
    const json trace = json::parse(traceJson(s));
    EXPECT_EQ(trace["otherData"]["dropped_events"], 87);
    // The newest dropped value of each resource still starts its track.
    std::vector<json> first;
    for (const json& e : trace["traceEvents"]) {
        if (e["ph"] == "C" && first.size() < 3)
            first.push_back({e["name"], e["ts"], e["args"]["value"]});
    }
    EXPECT_EQ(first, (std::vector<json>{{"bus", 0, 2}, {"gpu", 84000, 840}, {"gpu", 85000, 850}}));
}

}  // namespace
}  // namespace sim::testing
