#include "ActionLookup.h"
#include "PymWrapper.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

const std::string kEarly = "QUARNE_ACTION_LAUNCH";
const std::string kLate = "QUARNE_ACTION_CAMERA_APS_INNER_THDR_CAPTURE_L1";
const std::string kMiss = "QUARNE_ACTION_CAMERA_APS_INNER_THDR_CAPTURE_L9";
const std::string kNoMarker = "ACTION_CAMERA_APS_INNER_THDR_CAPTURE_L1";

// The walk the index replaces, kept here as the baseline to beat.
int32_t linearFind(const std::string& eventName) {
    for (size_t position = 0; position < gActionList.size(); ++position) {
        if (eventName.find("QUARNE_") == std::string::npos) continue;
        if (eventName.substr(7) == gActionList[position]) return static_cast<int32_t>(position);
    }
    return -1;
}

void lookup(benchmark::State& state, const std::string& name, int32_t expected) {
    if (vexal::wrapper::findActionId(name) != expected) state.SkipWithError("wrong id");
    for (auto _ : state) benchmark::DoNotOptimize(vexal::wrapper::findActionId(name));
}

void walk(benchmark::State& state, const std::string& name, int32_t expected) {
    if (linearFind(name) != expected) state.SkipWithError("wrong id");
    for (auto _ : state) benchmark::DoNotOptimize(linearFind(name));
}

}  // namespace

BENCHMARK_CAPTURE(lookup, hit_early, kEarly, 0);
BENCHMARK_CAPTURE(lookup, hit_late, kLate, 198);
BENCHMARK_CAPTURE(lookup, miss, kMiss, -1);
BENCHMARK_CAPTURE(lookup, miss_no_marker, kNoMarker, -1);
BENCHMARK_CAPTURE(walk, hit_early, kEarly, 0);
BENCHMARK_CAPTURE(walk, hit_late, kLate, 198);
BENCHMARK_CAPTURE(walk, miss, kMiss, -1);

BENCHMARK_MAIN();
