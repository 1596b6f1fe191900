#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "trox_sim/Clock.h"

namespace sim {

// A request from its grant to its end, on one lane of its caller's track. Lanes keep the
// requests of one caller that overlap in time apart, so that slices on a lane never overlap.
struct TimelineSlice {
    int32_t pid = 0;
    int32_t lane = 0;
    std::string pkg;
    std::string name;
    int32_t handle = 0;
    std::string identity;
    std::optional<int64_t> durationMs;                       // none: held until release
    std::vector<std::pair<std::string, int64_t>> resources;  // asked for, by name
    int64_t startUs = 0;
    int64_t endUs = 0;
    std::string end;  // why it ended; "live" when it still ran as the snapshot was taken
};

// The effective value of a resource from atUs on.
struct TimelineCounter {
    int32_t resource = 0;
    int64_t atUs = 0;
    int64_t value = 0;
};

// Something that happened at one moment: on a caller's track, or the service's (pid 0).
struct TimelineInstant {
    int64_t atUs = 0;
    int32_t pid = 0;
    std::string pkg;
    std::string name;
    std::vector<std::pair<std::string, std::string>> args;
};

using TimelineEvent = std::variant<TimelineSlice, TimelineCounter, TimelineInstant>;

struct TimelineSnapshot {
    std::vector<TimelineEvent> events;  // in the order they were recorded, live slices last
    // The newest dropped value of each resource, so counter tracks stay exact after drops.
    std::vector<TimelineCounter> carried;
    std::map<int32_t, std::string> resourceNames;
    std::string serviceName;
    int32_t servicePid = 0;
    uint64_t dropped = 0;
    size_t capacity = 0;
    int64_t takenUs = 0;
};

// What a service did, in a bounded ring on the service's clock (in microseconds): once it is
// full the oldest events make room. It may outlive a service (an embedded one restarts onto the
// same ring); each service records under the generation attach() gave it, and only the newest
// one counts.
class Timeline {
  public:
    explicit Timeline(size_t capacity);

    // A service starts recording: requests of earlier services end now, values restart.
    uint64_t attach(std::shared_ptr<Clock> clock, std::string serviceName,
                    std::map<int32_t, std::string> resourceNames,
                    const std::vector<std::pair<int32_t, int64_t>>& values);
    // A request began; its lane is chosen here.
    void open(uint64_t generation, TimelineSlice slice);
    // The request with handle ended at atUs, for the reason why.
    void close(uint64_t generation, int32_t handle, int64_t atUs, const std::string& why);
    void add(uint64_t generation, TimelineEvent event);

    // Everything kept, with requests still live ended at the clock's now.
    TimelineSnapshot snapshot();
    size_t capacity() const { return capacity_; }

  private:
    void push(TimelineEvent event);
    void closeLocked(int32_t handle, int64_t atUs, const std::string& why);

    const size_t capacity_;
    std::mutex mutex_;
    std::vector<TimelineEvent> ring_;  // grows to capacity_, then wraps at head_
    size_t head_ = 0;                  // the oldest event once the ring is full
    uint64_t dropped_ = 0;
    std::map<int32_t, TimelineCounter> carried_;
    std::map<int32_t, TimelineSlice> open_;      // by handle
    std::map<int32_t, std::set<int32_t>> busy_;  // pid -> lanes with an open slice
    uint64_t generation_ = 0;
    std::shared_ptr<Clock> clock_;
    std::string serviceName_;
    int32_t servicePid_ = 0;
    std::map<int32_t, std::string> resourceNames_;
};

}  // namespace sim
