#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "trox_sim/ResourceModel.h"

namespace sim {

struct Request {
    int32_t handle = -1;
    int32_t requestType = 0;
    int32_t pid = 0;
    // The process that sent the request, as the transport saw it; pid above is what it claims.
    int32_t callerPid = 0;
    std::string pkg;
    std::string identity;
    // Action id for event requests, scenario id for scenario requests, else -1.
    int32_t source = -1;
    bool byPath = false;
    std::vector<Setting> settings;
    int64_t startMs = 0;
    std::optional<int64_t> deadlineMs;  // none: held until released
};

// Live requests by handle, with their expiry times. Not thread-safe: the service serialises
// access.
class RequestTable {
  public:
    // A fresh positive handle that no live request or reserved handle uses.
    int32_t newHandle();
    // Keeps handle out of newHandle()'s answers (listener registrations share the space).
    void reserve(int32_t handle) { reserved_.insert(handle); }
    void unreserve(int32_t handle) { reserved_.erase(handle); }
    bool inUse(int32_t handle) const;

    // Stores request under its handle, which must be positive and unused.
    bool add(Request request);
    Request* find(int32_t handle);
    std::optional<Request> remove(int32_t handle);
    // Removes and returns every request whose deadline is at or before nowMs, earliest first.
    std::vector<Request> takeExpired(int64_t nowMs);
    std::optional<int64_t> nextDeadline() const;
    std::vector<const Request*> all() const;
    size_t size() const { return requests_.size(); }

  private:
    int32_t next_ = 1;
    std::map<int32_t, Request> requests_;
    std::set<int32_t> reserved_;
};

}  // namespace sim
