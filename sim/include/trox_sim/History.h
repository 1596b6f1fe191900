#pragma once

#include <aidl/vendor/vexal/hardware/trox/TroxRequestData.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "trox_sim/Clock.h"

namespace sim {

using aidl::vendor::vexal::hardware::trox::TroxRequestData;

// What the service was asked, newest last, up to a configured number of records, each in the
// form a history query answers with. Not thread-safe: the service serialises access.
class RequestHistory {
  public:
    RequestHistory(std::shared_ptr<Clock> clock, size_t capacity, bool enabled);

    // Keeps "<wall-clock stamp> pid=<pid> <op> <line>" while recording is on.
    void record(const std::string& op, int32_t pid, const std::string& line);
    void setEnabled(bool on) { enabled_ = on; }
    bool enabled() const { return enabled_; }
    size_t size() const { return records_.size(); }
    const std::deque<TroxRequestData>& records() const { return records_; }

  private:
    const std::shared_ptr<Clock> clock_;
    const size_t capacity_;
    bool enabled_;
    int32_t seq_ = 0;
    std::deque<TroxRequestData> records_;
};

}  // namespace sim
