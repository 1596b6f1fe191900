#pragma once

#include <cstdint>
#include <string_view>

namespace vexal::wrapper {

inline constexpr std::string_view kEventMarker = "QUARNE_";

// The event id of `eventName`: when the name carries the marker anywhere, the first catalogue
// position whose name equals the name without its first seven characters; otherwise -1.
int32_t findActionId(std::string_view eventName);

// Builds the name index from gActionList if it is not built yet. Always true.
bool buildActionIndex();

}  // namespace vexal::wrapper
