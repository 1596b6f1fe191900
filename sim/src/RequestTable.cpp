#include "trox_sim/RequestTable.h"

#include <algorithm>
#include <limits>

namespace sim {

bool RequestTable::inUse(int32_t handle) const {
    return requests_.count(handle) != 0 || reserved_.count(handle) != 0;
}

int32_t RequestTable::newHandle() {
    for (;;) {
        const int32_t h = next_;
        next_ = next_ == std::numeric_limits<int32_t>::max() ? 1 : next_ + 1;
        if (!inUse(h)) return h;
    }
}

bool RequestTable::add(Request request) {
    if (request.handle <= 0 || inUse(request.handle)) return false;
    const int32_t handle = request.handle;
    requests_.emplace(handle, std::move(request));
    return true;
}

Request* RequestTable::find(int32_t handle) {
    auto it = requests_.find(handle);
    return it == requests_.end() ? nullptr : &it->second;
}

std::optional<Request> RequestTable::remove(int32_t handle) {
    auto it = requests_.find(handle);
    if (it == requests_.end()) return std::nullopt;
    Request r = std::move(it->second);
    requests_.erase(it);
    return r;
}

std::vector<Request> RequestTable::takeExpired(int64_t nowMs) {
    std::vector<Request> expired;
    for (auto it = requests_.begin(); it != requests_.end();) {
        if (it->second.deadlineMs && *it->second.deadlineMs <= nowMs) {
            expired.push_back(std::move(it->second));
            it = requests_.erase(it);
        } else {
            ++it;
        }
    }
    std::stable_sort(expired.begin(), expired.end(), [](const Request& a, const Request& b) {
        return *a.deadlineMs < *b.deadlineMs;
    });
    return expired;
}

std::optional<int64_t> RequestTable::nextDeadline() const {
    std::optional<int64_t> next;
    for (const auto& [handle, r] : requests_) {
        if (r.deadlineMs && (!next || *r.deadlineMs < *next)) next = r.deadlineMs;
    }
    return next;
}

std::vector<const Request*> RequestTable::all() const {
    std::vector<const Request*> out;
    for (const auto& [handle, r] : requests_) out.push_back(&r);
    return out;
}

}  // namespace sim
