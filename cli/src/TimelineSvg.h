#pragma once

// A picture of a trace in the Trace Event Format, laid out as trace viewers do: a time axis, a
// group per process, a row per thread with its slices as labelled bars, counters as step lines,
// instants as markers. Hovering shows each item's arguments.

#include <nlohmann/json.hpp>

#include <string>

namespace pymctl {

// Throws std::runtime_error when trace is not an object with a "traceEvents" array.
std::string renderTimelineSvg(const nlohmann::json& trace);

}  // namespace pymctl
