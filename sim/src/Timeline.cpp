#include "trox_sim/Timeline.h"

#include <unistd.h>

#include <algorithm>

namespace sim {

Timeline::Timeline(size_t capacity) : capacity_(std::max<size_t>(capacity, 1)) {}

uint64_t Timeline::attach(std::shared_ptr<Clock> clock, std::string serviceName,
                          std::map<int32_t, std::string> resourceNames,
                          const std::vector<std::pair<int32_t, int64_t>>& values) {
    const int64_t now = clock->nowUs();
    std::lock_guard<std::mutex> lock(mutex_);
    // What an earlier service held died with it.
    std::vector<int32_t> handles;
    for (const auto& [handle, slice] : open_) handles.push_back(handle);
    for (int32_t handle : handles) closeLocked(handle, now, "service restarted");
    clock_ = std::move(clock);
    serviceName_ = std::move(serviceName);
    servicePid_ = static_cast<int32_t>(getpid());
    resourceNames_ = std::move(resourceNames);
    for (const auto& [id, value] : values) push(TimelineCounter{id, now, value});
    push(TimelineInstant{now, 0, {}, serviceName_ + " started", {}});
    return ++generation_;
}

void Timeline::open(uint64_t generation, TimelineSlice slice) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (generation != generation_) return;
    std::set<int32_t>& lanes = busy_[slice.pid];
    int32_t lane = 0;
    while (lanes.count(lane) != 0) ++lane;
    lanes.insert(lane);
    slice.lane = lane;
    const int32_t handle = slice.handle;
    open_[handle] = std::move(slice);
}

void Timeline::close(uint64_t generation, int32_t handle, int64_t atUs, const std::string& why) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (generation == generation_) closeLocked(handle, atUs, why);
}

void Timeline::add(uint64_t generation, TimelineEvent event) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (generation == generation_) push(std::move(event));
}

void Timeline::closeLocked(int32_t handle, int64_t atUs, const std::string& why) {
    auto it = open_.find(handle);
    if (it == open_.end()) return;
    TimelineSlice slice = std::move(it->second);
    open_.erase(it);
    auto lanes = busy_.find(slice.pid);
    lanes->second.erase(slice.lane);
    if (lanes->second.empty()) busy_.erase(lanes);
    slice.endUs = std::max(atUs, slice.startUs);
    slice.end = why;
    push(std::move(slice));
}

void Timeline::push(TimelineEvent event) {
    if (ring_.size() < capacity_) {
        ring_.push_back(std::move(event));
        return;
    }
    if (const auto* c = std::get_if<TimelineCounter>(&ring_[head_])) carried_[c->resource] = *c;
    ring_[head_] = std::move(event);
    head_ = (head_ + 1) % capacity_;
    ++dropped_;
}

TimelineSnapshot Timeline::snapshot() {
    std::shared_ptr<Clock> clock;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        clock = clock_;
    }
    // Read before the lock: a manual clock runs alarms that record into this timeline.
    const int64_t now = clock ? clock->nowUs() : 0;
    std::lock_guard<std::mutex> lock(mutex_);
    TimelineSnapshot s;
    s.events.reserve(ring_.size() + open_.size());
    for (size_t i = 0; i < ring_.size(); ++i) s.events.push_back(ring_[(head_ + i) % ring_.size()]);
    for (const auto& [handle, open] : open_) {
        TimelineSlice slice = open;
        slice.endUs = std::max(now, slice.startUs);
        slice.end = "live";
        s.events.push_back(std::move(slice));
    }
    for (const auto& [id, c] : carried_) s.carried.push_back(c);
    s.resourceNames = resourceNames_;
    s.serviceName = serviceName_;
    s.servicePid = servicePid_;
    s.dropped = dropped_;
    s.capacity = capacity_;
    s.takenUs = now;
    return s;
}

}  // namespace sim
