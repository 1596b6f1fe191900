#pragma once

namespace vexal::link {

// Name under which the resource-control service registers with the service manager.
inline constexpr char kTroxInstance[] = "vendor.vexal.hardware.trox.ITrox/default";

}  // namespace vexal::link
