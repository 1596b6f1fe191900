#pragma once

#include <cstddef>
#include <string>

#include "trox_sim/Timeline.h"

namespace sim {

// The snapshot in the Trace Event Format (the JSON object form), as trace viewers open it: the
// service's track with a counter per resource and its instants, a track per caller with its
// requests as slices, one lane per overlapping request.
std::string traceJson(const TimelineSnapshot& snapshot);

// Writes the timeline's trace to path, through a temporary file beside it so that a reader never
// sees half a trace. Empty on success, else why not; *events says how many it holds.
std::string writeTraceFile(Timeline& timeline, const std::string& path, size_t* events = nullptr);

}  // namespace sim
