#pragma once

#include <aidl/vendor/vexal/hardware/trox/TroxRequestData.h>
#include <aidl/vendor/vexal/hardware/trox/TroxRequestParcel.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "trox_sim/Clock.h"
#include "trox_sim/Config.h"
#include "trox_sim/RequestTable.h"
#include "trox_sim/ResourceModel.h"
#include "trox_sim/Timeline.h"

namespace sim {

// One service's side of its timeline: names what the service does, after its configuration and
// the wrapper's action catalogue, and records it on the service's clock. Called under the
// service's state lock.
class TimelineRecorder {
  public:
    // No timeline: a fresh one sized by the configuration.
    TimelineRecorder(const Config& config, std::shared_ptr<Clock> clock, std::string serviceName,
                     std::shared_ptr<Timeline> timeline);

    void granted(const Request& request);
    // The holder of an existing handle asked for something else: its slice ends, a new begins.
    void changed(const Request& request);
    void ended(int32_t handle, const char* why);
    void values(const std::vector<Change>& changes);
    void notified(const aidl::vendor::vexal::hardware::trox::TroxRequestParcel& request,
                  int32_t callerPid);
    void rule(int32_t ruleId, int32_t status, const std::vector<Setting>& sets, int32_t pid);
    void sysInfo(int32_t info, int32_t value, int32_t pid);
    void thermal(const std::vector<aidl::vendor::vexal::hardware::trox::TroxRequestData>& levels,
                 int32_t pid);

    const std::shared_ptr<Timeline>& timeline() const { return timeline_; }
    // The slice name of a request: its action's catalogue name, else what it is and its id.
    std::string sliceName(const Request& request) const;

  private:
    std::string resourceName(int32_t id) const;
    void instant(int32_t pid, std::string name,
                 std::vector<std::pair<std::string, std::string>> args);

    const Config& config_;
    const std::shared_ptr<Clock> clock_;
    const std::shared_ptr<Timeline> timeline_;
    uint64_t generation_ = 0;
};

}  // namespace sim
