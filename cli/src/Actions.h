#pragma once

// Looking names up in the wrapper's action catalogue.

#include <cstdint>
#include <optional>
#include <string>

namespace pymctl {

// The marker the wrapper expects in front of a catalogue name.
inline constexpr char kActionMarker[] = "QUARNE_";

// Position of name (with or without the marker) in the catalogue; the first one for repeats.
std::optional<int32_t> findAction(const std::string& name);
// The name without the marker.
std::string bareActionName(const std::string& name);

}  // namespace pymctl
